#include "mxf/essence/audio_element.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "mxf/metadata/klv.h"
#include "platform/fault_guard.h"

namespace quorvan {
namespace {

AudioElement ElementAt(const std::uint8_t* key, std::uint64_t keyOffset, std::uint64_t length) {
  const bool followed = key[kKlvKeyBytes] == kFourByteLength;
  return {keyOffset, followed ? std::optional(length) : std::nullopt, KindOfElement(key)};
}

}  // namespace

AudioElementKind KindOfElement(const std::uint8_t* key) {
  if (KeyMatches(key, keys::kAes3Element)) return kAes3Element;
  if (KeyMatches(key, keys::kWaveElement)) return kWaveElement;
  return kNoAudioElement;
}

std::optional<std::uint64_t> TakeElement(const std::uint8_t* key, std::uint64_t keyOffset,
                                         std::uint64_t rest, FrameElements* elements) {
  std::uint64_t length = 0;
  const auto held = static_cast<std::size_t>(std::min<std::uint64_t>(rest, kMostKlvHeaderBytes));
  const std::size_t header = ReadKlvHeader({key, held}, &length);
  if (header == 0 || length > rest - header) return std::nullopt;
  if (KindOfElement(key) != kNoAudioElement) {
    elements->element[elements->count++] = ElementAt(key, keyOffset, length);
  }
  return header + length;
}

ElementState CompareWithIndex(const FrameElements& elements, const MXF_BASE_INFO& mxf,
                              const INDEX_ENTRY_ARRAY& entry,
                              std::span<const std::uint32_t> tracks) {
  for (const std::uint32_t track : tracks) {
    const auto value = LocateElementValue(mxf, entry, track);
    if (!value || track >= elements.count) return ElementState::kMisplaced;
    const AudioElement& element = elements.element[track];
    if (element.kind != mxf.audio->elementKind || element.keyOffset != value->keyOffset() ||
        !element.valueBytes) {
      return ElementState::kMisplaced;
    }
    if (*element.valueBytes != value->bytes()) return ElementState::kOtherLength;
  }
  return ElementState::kProven;
}

std::uint32_t TracksUpToLast(std::span<const std::uint32_t> tracks) {
  return tracks.empty() ? 0 : tracks.back() + 1;
}

std::uint64_t FrameEnd(const MXF_BASE_INFO& mxf, std::uint32_t entryIndex) {
  const bool isLast = entryIndex + 1 == mxf.timecode->frameCount;
  return isLast ? mxf.fileSize : (*mxf.indexEntries)[entryIndex + 1].fileOffset;
}

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

ElementState ProveElements(const platform::MappedView& view, const MXF_BASE_INFO& mxf,
                           std::uint32_t entryIndex, std::span<const std::uint32_t> tracks) {
  const INDEX_ENTRY_ARRAY& entry = (*mxf.indexEntries)[entryIndex];
  const std::uint64_t start = entry.fileOffset;
  const std::uint64_t end = FrameEnd(mxf, entryIndex);
  const std::uint32_t wanted = TracksUpToLast(tracks);
  if (wanted > kMaxTracks || end < start || !view.Covers(start, 1)) {
    return ElementState::kMisplaced;
  }
  const std::uint64_t offset = start - view.fileOffset();
  const std::uint8_t* frame = view.data() + offset;
  const std::uint64_t size = std::min(end - start, view.size() - offset);
  FrameElements elements;
  bool complete = false;
  // A fault may end this walk at any instruction, so it must own nothing.
  auto walk = [&] {
    std::uint64_t at = 0;
    while (elements.count < wanted && at < size) {
      const auto step = TakeElement(frame + at, start + at, size - at, &elements);
      if (!step) return;
      at += *step;
    }
    complete = elements.count == wanted;
  };
  if (!platform::RunGuarded(walk).completed) return ElementState::kFault;
  return complete ? CompareWithIndex(elements, mxf, entry, tracks) : ElementState::kMisplaced;
}

}  // namespace quorvan
