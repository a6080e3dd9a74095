// The rewrite engine for the method "Memory Mapping".

#pragma once

#include <cstdint>
#include <string>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

enum RewrapMappedCode : std::int32_t {
  kRewrapNoPath = 2001,
  kRewrapUnfit = 2002,  // no tracks, or a value to be written is not proven to be one
  kRewrapNoRecords = 2003,
  kRewrapUnknownRate = 2004,
  kRewrapBadRange = 2005,
  kRewrapNoClip = 2006,
  kRewrapNoClipMapping = 2007,
  kRewrapNoWav = 2008,
  kRewrapNoWavMapping = 2009,
  kRewrapNoSilence = 2010,
  kRewrapNoTrackBuffer = 2011,
  kRewrapClipFault = 2012,
  kRewrapWavFault = 2013,
  kRewrapLongUmid = 2014,
};

// Overwrites, in the clip at `path`, the audio of the tracks that are ON from the IN to the OUT
// frame of `tracks` with the samples of their files, or silence, and gives the clip new UMIDs.
// `mxf` holds the analysis of that clip; the UMIDs and dates in it are renewed with those in the
// file.
//
// Before the first byte is written, every value that is going to be is proven to be the one of its
// track in its frame: the index ascends from frame to frame without a gap, and a walk over the
// frame's keys and lengths comes to the same audio elements. The sources must be the files that
// were added, and hold what they claim. Writes `totalFrames` and `currentFrame` for those who
// watch, and stops behind the frame during which `cancel` becomes 1, or before the first one.
//
// Returns 0; kCancelled, with the frames up to the stop rewritten, if any, and the old UMIDs; or a
// RewrapMappedCode: up to 2011 nothing was written, with 2012 and 2013 frames from IN on may be,
// with 2014 all audio is written and the UMIDs, which are not 32 bytes long, are the old ones.
std::int32_t RewrapMapped(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
