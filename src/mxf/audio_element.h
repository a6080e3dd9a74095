// Where the audio of a clip lies: the value of an audio element in a frame, found through the index
// and proven by the frame's own keys and lengths.

#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "mxf/records.h"
#include "platform/mapping.h"

namespace quorvan {

// Largest number of samples of one track in a frame.
inline constexpr std::uint32_t kLargestFrameSamples = 2002;

// Place of the audio of one track in one frame. Only LocateElementValue makes one.
class ElementValue {
 public:
  std::uint64_t fileOffset() const { return fileOffset_; }
  std::uint32_t bytes() const { return bytes_; }

  // File offset of the element's key.
  std::uint64_t keyOffset() const { return fileOffset_ - kElementHeaderBytes; }

  // File offset behind the value.
  std::uint64_t end() const { return fileOffset_ + bytes_; }

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

enum class ElementState {
  kProven,
  kMisplaced,    // no such element where it was looked for
  kOtherLength,  // the element is there, but does not hold exactly the samples of its frame
  kFault,        // the storage failed
};

// Proves the values of `tracks`, from 0 and ascending, in the frame of entry `entryIndex`: goes
// from key to key through the frame, whose n-th audio element is that of track n, and compares what
// it finds with what the index says: the place, the kind that the analysis found, and a four-byte
// length that is the value's own. kMisplaced when place or kind differ, what stands there is no row
// of KLVs, or `view` does not cover the frame that far; kOtherLength when only the length differs.
// Without a view, RowReader does the same.
ElementState ProveElements(const platform::MappedView& view, const MXF_BASE_INFO& mxf,
                           std::uint32_t entryIndex, std::span<const std::uint32_t> tracks);

}  // namespace quorvan
