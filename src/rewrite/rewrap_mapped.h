// The rewrite engine for the method "Memory Mapping".

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Besides the stage's code plus a JobFault.
enum RewrapMappedCode : std::int32_t {
  kRewrapNoClip = 2006,
  kRewrapNoClipMapping = 2007,
  kRewrapNoWav = 2008,
  kRewrapNoWavMapping = 2009,
  kRewrapNoSilence = 2010,
  kRewrapNoTrackBuffer = 2011,
  kRewrapNoView = 2012,
};

// Overwrites, in the clip at `path`, the audio of the tracks that are ON from the IN to the OUT
// frame of `tracks` with the samples of their files, or silence, and gives the clip new UMIDs.
// `mxf` holds the analysis of that clip; the UMIDs and dates in it are renewed with those in the
// file.
//
// Before the first byte is written, every value that is going to be is proven to be the one of its
// track in its frame: the index ascends from frame to frame without a gap, and a walk over the
// frame's keys and lengths comes to the same audio elements, each with exactly its frame's samples.
// The sources must be the files that were added, and hold what they claim. The audio is on the
// medium before the UMIDs are renewed, and the UMIDs before the job is done, unless `noFlush` is 1.
// Writes `totalFrames`, `currentFrame` and `phase` for those who watch, and stops behind the frame
// or the flush during which `cancel` becomes 1, or before the first frame.
//
// Returns 0; kDoneWithNotice, with what the clip's UMIDs are in `umidState`; kCancelled, with the
// frames up to the stop rewritten, if any, and the old UMIDs; or a failure: `fault` tells how many
// frames from IN on were written into by then, and which frame or file was at fault. kUmidTooLong
// refuses a clip whose UMIDs are not 32 bytes long unless `keepUmids` is 1. Throws nothing.
std::int32_t RewrapMapped(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
