// Divides the frames of a clip into runs that one view can cover, and checks the index as a whole.

#pragma once

#include <cstdint>

#include "mxf/records.h"

namespace quorvan {

// Frames that lie one behind the other in the file, so that one view covers them.
struct SegmentRun {
  std::uint32_t firstEntry;  // number of the first frame, zero-based
  std::uint32_t frames;      // number of frames
  std::uint64_t start;       // file offset of the first frame
  std::uint64_t length;      // bytes up to the end of the last frame, within the file
};

// The run that starts with the frame `firstEntry` (zero-based), which must be in the index. The run
// has at least one frame and at most `most` frames, at least 1. It ends earlier at the end of its
// index table segment or partition, in front of a frame that does not lie behind the frame before
// in the file, or with the last frame of the index. Throws nothing.
SegmentRun NextRun(const MXF_BASE_INFO& mxf, std::uint32_t firstEntry, std::uint32_t most);

// True when the index counts its frames from 0 on without a gap, and each frame lies behind the
// frame before in the file. An index with fewer entries than the clip has frames is valid when each
// of its segments holds as many entries as the segment claims. Throws nothing.
bool CountsEveryFrame(const MXF_BASE_INFO& mxf);

}  // namespace quorvan
