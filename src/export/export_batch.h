// The walk through the frames that an export writes at one go.

#pragma once

#include <cstdint>

#include "export/export_files.h"
#include "mxf/analysis.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Calls `take` with the numbers of the `frames` frames from `first` on, counted from 0 in the
// export, and keeps `currentFrame`. Returns 0; what `take` gave when that was not 0, without going
// on; or kCancelled behind the frame during which `cancel` became 1.
template <typename Take>
std::int32_t TakeFrames(AUDIOTRACK_IO_INFO* tracks, std::uint32_t first, std::uint32_t frames,
                        Take take) {
  for (std::uint32_t frame = first; frame < first + frames; ++frame) {
    if (const std::int32_t failed = take(frame)) return failed;
    if (tracks->cancel == 1) {
      tracks->cancel = 0;
      return kCancelled;
    }
    tracks->currentFrame = frame;
  }
  return kSuccess;
}

}  // namespace quorvan
