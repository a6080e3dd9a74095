// The rewrite engine for the method "Generic File I/O".

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

enum RewrapFileIoCode : std::int32_t {
  kFileRewrapNoPath = 3001,
  kFileRewrapUnfit = 3002,  // no tracks, or a value to be written is not proven to be one
  kFileRewrapNoRecords = 3003,
  kFileRewrapUnknownRate = 3004,
  kFileRewrapBadRange = 3005,
  kFileRewrapNoBlock = 3006,
  kFileRewrapNoClip = 3007,
  kFileRewrapNoWav = 3008,  // missing, changed, or without the audio that it claims
  kFileRewrapNoTrackBuffer = 3011,
  kFileRewrapClipFault = 3012,
  kFileRewrapWavFault = 3013,
};

// The twin of RewrapMapped, by plain reads and writes: it writes the same bytes under the same
// proof. It reads each source in runs of at most the buffer duration that wavBufferIndex picks, and
// leaves the clip's times to the system.
//
// Returns 0; kCancelled, with the frames up to the stop rewritten, if any, and the old UMIDs; or a
// RewrapFileIoCode: up to 3011 nothing was written, with 3012 and 3013 frames from IN on may be; or
// kRewrapLongUmid of the twin, with all audio written and the UMIDs, which are not 32 bytes long,
// the old ones.
std::int32_t RewrapFileIo(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
