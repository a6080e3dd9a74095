// Stretches of frames that lie one behind the other, so that one view reaches them all.

#pragma once

#include <cstdint>

#include "mxf/records.h"

namespace quorvan {

struct SegmentRun {
  std::uint32_t firstEntry;  // of the INDEX_ENTRY_ARRAY
  std::uint32_t frames;
  std::uint64_t start;   // file offset of the first frame
  std::uint64_t length;  // bytes up to the end of the last frame, within the file
};

// The run that starts at `firstEntry`, an entry of the array: to the end of its index table
// segment or partition, to the first frame that does not lie behind the one before, to the last
// entry, or to `most` frames, at least 1, whatever comes first. It holds at least one frame.
SegmentRun NextRun(const MXF_BASE_INFO& mxf, std::uint32_t firstEntry, std::uint32_t most);

// True when the index counts its frames from 0 on without a gap and in ascending places. A table
// that ends before the clip does is sound when each segment holds all of its own frames.
bool CountsEveryFrame(const MXF_BASE_INFO& mxf);

}  // namespace quorvan
