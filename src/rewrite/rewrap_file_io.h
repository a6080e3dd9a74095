// The rewrite engine for the method "Generic File I/O".

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Besides the stage's code plus a JobFault.
enum RewrapFileIoCode : std::int32_t {
  kFileRewrapNoBlock = 3006,
  kFileRewrapNoClip = 3007,
  kFileRewrapNoWav = 3008,
  kFileRewrapNoTrackBuffer = 3011,
};

// The twin of RewrapMapped, by plain reads and writes: it writes the same bytes under the same
// proof, and ends in the same ways. It reads each source in runs of at most the buffer duration
// that wavBufferIndex picks, and leaves the clip's times to the system.
std::int32_t RewrapFileIo(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
