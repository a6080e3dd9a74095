// The one way into the essence of a clip: the value of an audio element, found through the index
// and proven by a walk over the frame's own keys and lengths. Nothing else of a clip can be written
// through here.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "mxf/records.h"
#include "platform/mapping.h"

namespace quorvan {

// Place of the audio of one track in one frame. Only LocateElementValue makes one.
class ElementValue {
 public:
  std::uint64_t fileOffset() const { return fileOffset_; }
  std::uint32_t bytes() const { return bytes_; }

  // File offset of the element's key.
  std::uint64_t keyOffset() const { return fileOffset_ - kElementHeaderBytes; }

 private:
  friend std::optional<ElementValue> LocateElementValue(const MXF_BASE_INFO& mxf,
                                                        const INDEX_ENTRY_ARRAY& entry,
                                                        std::uint32_t track);
  ElementValue(std::uint64_t fileOffset, std::uint32_t bytes)
      : fileOffset_(fileOffset), bytes_(bytes) {}

  std::uint64_t fileOffset_;
  std::uint32_t bytes_;
};

// Where the audio of `track` (from 0) lies in the frame of `entry`: blockAlign x audioSamples
// bytes. Nothing when the index has no element for the track or the value would reach behind the
// file.
std::optional<ElementValue> LocateElementValue(const MXF_BASE_INFO& mxf,
                                               const INDEX_ENTRY_ARRAY& entry, std::uint32_t track);

enum class GateResult { kDone, kRefused, kClipFault, kSourceFault };

// An audio element as the frame itself shows it.
struct AudioElement {
  std::uint64_t keyOffset;   // in the file
  std::uint64_t valueBytes;  // 0 unless its length field has four bytes
  AudioElementKind kind;
};

// The first audio elements of a frame, in the order in which they stand in it: the n-th belongs to
// track n.
struct FrameElements {
  std::uint32_t count;
  std::array<AudioElement, kMaxTracks> element;
};

// Goes from key to key through the frame in [start, end) of the file and collects its first
// `wanted` audio elements. kRefused when `view` does not cover the frame that far, or what stands
// there is no row of KLVs with so many; kClipFault when the storage fails.
GateResult WalkFrame(const platform::MappedView& view, std::uint64_t start, std::uint64_t end,
                     std::uint32_t wanted, FrameElements* elements);

// True when `element` is of the kind that the analysis found, starts where the index says, and its
// value holds the bytes of `value` and at most one sample of `blockAlign` bytes more.
bool IsElementOf(const AudioElement& element, const ElementValue& value, AudioElementKind kind,
                 std::uint32_t blockAlign);

// Writes `samples`, exactly value.bytes() of them, over the value through `view`. A kSourceFault is
// one of the storage behind `samples`. After a fault part of the value may be written.
GateResult WriteElement(const platform::MappedView& view, const ElementValue& value,
                        std::span<const std::uint8_t> samples);

}  // namespace quorvan
