#include "mxf/audio_element.h"

#include <algorithm>
#include <cstring>

#include "mxf/klv.h"
#include "platform/fault_guard.h"

namespace quorvan {
namespace {

constexpr std::size_t kKeyBytes = 16;
constexpr std::uint8_t kLongForm = 0x80;
constexpr std::size_t kMostLengthBytes = 8;
constexpr std::size_t kMostHeaderBytes = kKeyBytes + 1 + kMostLengthBytes;

AudioElementKind KindOf(const std::uint8_t* key) {
  if (KeyMatches(key, keys::kAes3Element)) return kAes3Element;
  if (KeyMatches(key, keys::kWaveElement)) return kWaveElement;
  return kNoAudioElement;
}

// A key with its length in any BER form, in the `rest` bytes at `p`. Bytes of key and length field,
// or 0 when there is none.
std::size_t ReadHeader(const std::uint8_t* p, std::uint64_t rest, std::uint64_t* length) {
  if (rest <= kKeyBytes || std::memcmp(p, kUlPrefix.data(), kUlPrefix.size()) != 0) return 0;
  const std::uint8_t first = p[kKeyBytes];
  *length = first;
  if (first < kLongForm) return kKeyBytes + 1;
  const std::size_t lengthBytes = first - kLongForm;
  const std::size_t header = kKeyBytes + 1 + lengthBytes;
  if (lengthBytes == 0 || lengthBytes > kMostLengthBytes || rest < header) return 0;
  *length = 0;
  for (std::size_t i = 0; i < lengthBytes; ++i)
    *length = *length << 8 | p[kKeyBytes + 1 + i];
  return header;
}

AudioElement ElementAt(const std::uint8_t* key, std::uint64_t keyOffset, std::uint64_t length) {
  const bool followed = key[kKeyBytes] == kFourByteLength;
  return {keyOffset, followed ? length : 0, KindOf(key)};
}

// The walk itself, over a frame of `size` bytes that lies at `start` in the file. `headerAt` gives
// the bytes at a place in the frame, kMostHeaderBytes or as many as the frame still holds there;
// null ends the walk. With views it runs inside a guard, so it owns nothing.
template <typename HeaderAt>
bool CollectElements(HeaderAt headerAt, std::uint64_t size, std::uint64_t start,
                     std::uint32_t wanted, FrameElements* elements) {
  std::uint64_t at = 0;
  while (elements->count < wanted) {
    if (at >= size) return false;
    const std::uint8_t* key = headerAt(at);
    if (key == nullptr) return false;
    std::uint64_t length = 0;
    const std::size_t header = ReadHeader(key, size - at, &length);
    if (header == 0 || length > size - at - header) return false;
    if (KindOf(key) != kNoAudioElement) {
      elements->element[elements->count++] = ElementAt(key, start + at, length);
    }
    at += header + length;
  }
  return true;
}

}  // namespace

std::optional<ElementValue> LocateElementValue(const MXF_BASE_INFO& mxf,
                                               const INDEX_ENTRY_ARRAY& entry,
                                               std::uint32_t track) {
  const std::uint32_t k = track + kDeltasBeforeAudio;
  if (track >= kMaxTracks || k >= entry.deltaCount) return std::nullopt;
  const std::uint64_t bytes = std::uint64_t{mxf.audio->blockAlign} * entry.audioSamples;
  const std::uint64_t inFrame = std::uint64_t{entry.sliceOffset} + entry.delta[k].elementDelta +
                                std::uint64_t{kElementHeaderBytes};
  if (entry.fileOffset >= mxf.fileSize || inFrame >= mxf.fileSize - entry.fileOffset ||
      bytes > mxf.fileSize - entry.fileOffset - inFrame) {
    return std::nullopt;
  }
  return ElementValue(entry.fileOffset + inFrame, static_cast<std::uint32_t>(bytes));
}

bool IsHeaderOf(const std::uint8_t* header, const ElementValue& value,
                const MXF_AUDIO_INFO& audio) {
  std::uint64_t length = 0;
  if (ReadHeader(header, kElementHeaderBytes, &length) != kElementHeaderBytes) return false;
  return IsElementOf(ElementAt(header, value.keyOffset(), length), value, audio);
}

ElementState CheckElement(const platform::MappedView& view, const ElementValue& value,
                          const MXF_AUDIO_INFO& audio) {
  if (!view.Covers(value.keyOffset(), value.end() - value.keyOffset())) {
    return ElementState::kMisplaced;
  }
  const std::uint8_t* header = view.data() + (value.keyOffset() - view.fileOffset());
  bool sound = false;
  auto check = [&] { sound = IsHeaderOf(header, value, audio); };
  if (!platform::RunGuarded(check).completed) return ElementState::kFault;
  return sound ? ElementState::kSound : ElementState::kMisplaced;
}

ElementState WalkFrame(const platform::MappedView& view, std::uint64_t start, std::uint64_t end,
                       std::uint32_t wanted, FrameElements* elements) {
  elements->count = 0;
  if (wanted > kMaxTracks || end < start || !view.Covers(start, 1)) {
    return ElementState::kMisplaced;
  }
  const std::uint64_t offset = start - view.fileOffset();
  const std::uint8_t* frame = view.data() + offset;
  const std::uint64_t size = std::min(end - start, view.size() - offset);
  bool complete = false;
  auto headerAt = [&](std::uint64_t at) { return frame + at; };
  auto walk = [&] { complete = CollectElements(headerAt, size, start, wanted, elements); };
  if (!platform::RunGuarded(walk).completed) return ElementState::kFault;
  return complete ? ElementState::kSound : ElementState::kMisplaced;
}

ElementState WalkFrame(const platform::File& file, std::uint64_t start, std::uint64_t end,
                       std::uint32_t wanted, FrameElements* elements) {
  elements->count = 0;
  if (wanted > kMaxTracks || end < start) return ElementState::kMisplaced;
  const std::uint64_t size = end - start;
  std::array<std::uint8_t, kMostHeaderBytes> bytes;
  bool failed = false;
  auto headerAt = [&](std::uint64_t at) -> const std::uint8_t* {
    const auto held = static_cast<std::size_t>(std::min<std::uint64_t>(size - at, bytes.size()));
    failed = file.ReadAt(start + at, bytes.data(), held) != held;
    return failed ? nullptr : bytes.data();
  };
  const bool complete = CollectElements(headerAt, size, start, wanted, elements);
  if (failed) return ElementState::kFault;
  return complete ? ElementState::kSound : ElementState::kMisplaced;
}

bool IsElementOf(const AudioElement& element, const ElementValue& value,
                 const MXF_AUDIO_INFO& audio) {
  return element.kind != kNoAudioElement && element.kind == audio.elementKind &&
         element.keyOffset == value.keyOffset() && element.valueBytes >= value.bytes() &&
         element.valueBytes - value.bytes() <= audio.blockAlign;
}

}  // namespace quorvan
