#include "rewrite/element_gate.h"

#include <algorithm>
#include <cstring>

#include "mxf/klv.h"
#include "platform/fault_guard.h"

namespace quorvan {
namespace {

constexpr std::size_t kKeyBytes = 16;
constexpr std::uint8_t kLongForm = 0x80;
constexpr std::size_t kMostLengthBytes = 8;

bool LiesIn(const platform::MappedView& view, const void* address) {
  const auto* p = static_cast<const std::uint8_t*>(address);
  return p >= view.data() && p < view.data() + view.size();
}

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

// The walk itself, over the `size` bytes at `frame`, which lie at `start` in the file. It runs
// inside a guard, so it owns nothing.
bool CollectElements(const std::uint8_t* frame, std::uint64_t size, std::uint64_t start,
                     std::uint32_t wanted, FrameElements* elements) {
  std::uint64_t at = 0;
  while (elements->count < wanted) {
    std::uint64_t length = 0;
    if (at >= size) return false;
    const std::uint8_t* key = frame + at;
    const std::size_t header = ReadHeader(key, size - at, &length);
    if (header == 0 || length > size - at - header) return false;
    const AudioElementKind kind = KindOf(key);
    if (kind != kNoAudioElement) {
      const bool followed = key[kKeyBytes] == kFourByteLength;
      elements->element[elements->count++] = {start + at, followed ? length : 0, kind};
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

GateResult WalkFrame(const platform::MappedView& view, std::uint64_t start, std::uint64_t end,
                     std::uint32_t wanted, FrameElements* elements) {
  elements->count = 0;
  if (wanted > kMaxTracks || end < start || !view.Covers(start, 1)) return GateResult::kRefused;
  const std::uint64_t offset = start - view.fileOffset();
  const std::uint8_t* frame = view.data() + offset;
  const std::uint64_t size = std::min(end - start, view.size() - offset);
  bool complete = false;
  auto walk = [&] { complete = CollectElements(frame, size, start, wanted, elements); };
  if (!platform::RunGuarded(walk).completed) return GateResult::kClipFault;
  return complete ? GateResult::kDone : GateResult::kRefused;
}

bool IsElementOf(const AudioElement& element, const ElementValue& value, AudioElementKind kind,
                 std::uint32_t blockAlign) {
  return element.kind == kind && element.keyOffset == value.keyOffset() &&
         element.valueBytes >= value.bytes() && element.valueBytes - value.bytes() <= blockAlign;
}

GateResult WriteElement(const platform::MappedView& view, const ElementValue& value,
                        std::span<const std::uint8_t> samples) {
  if (samples.size() != value.bytes() || !view.Covers(value.fileOffset(), value.bytes())) {
    return GateResult::kRefused;
  }
  std::uint8_t* target = view.data() + (value.fileOffset() - view.fileOffset());
  auto copy = [&] { std::memcpy(target, samples.data(), samples.size()); };
  const platform::GuardResult guarded = platform::RunGuarded(copy);
  if (guarded.completed) return GateResult::kDone;
  return LiesIn(view, guarded.address) ? GateResult::kClipFault : GateResult::kSourceFault;
}

}  // namespace quorvan
