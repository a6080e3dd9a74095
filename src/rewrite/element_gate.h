// The one way into the essence of a clip: the value of an audio element, found through the index
// and proven by the key and length in front of it. Nothing else of a clip can be written through
// here.

#pragma once

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
// bytes. Nothing when the frame has no element for the track, the value would reach behind the file
// or into the element of a neighbouring track.
std::optional<ElementValue> LocateElementValue(const MXF_BASE_INFO& mxf,
                                               const INDEX_ENTRY_ARRAY& entry, std::uint32_t track);

// True when the 20 bytes at `header` are the key of an audio element of the kind that the analysis
// found and a four-byte length of at least `bytes`.
bool IsAudioElementHeader(std::span<const std::uint8_t, kElementHeaderBytes> header,
                          AudioElementKind kind, std::uint32_t bytes);

enum class GateResult { kDone, kOutsideView, kClipFault, kSourceFault };

// Checks, through `view`, the key and length in front of `value`: kDone when they are those of an
// audio element, kOutsideView when not or when they do not lie in the view, kClipFault when the
// storage of the clip fails.
GateResult CheckElement(const platform::MappedView& view, const ElementValue& value,
                        AudioElementKind kind);

// Writes `samples`, exactly value.bytes() of them, over the value through `view`. A kSourceFault is
// one of the storage behind `samples`. After a fault part of the value may be written.
GateResult WriteElement(const platform::MappedView& view, const ElementValue& value,
                        std::span<const std::uint8_t> samples);

}  // namespace quorvan
