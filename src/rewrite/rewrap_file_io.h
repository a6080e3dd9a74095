// The rewrite engine for the method "Generic File I/O".

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Results of RewrapFileIo, besides kStageRewrapFileIo plus a JobFault.
enum RewrapFileIoCode : std::int32_t {
  kFileRewrapNoBlock = 3006,  // no memory for a block, or wavBufferIndex gives no valid block size
  kFileRewrapNoClip = 3007,   // the clip cannot be opened for a rewrite
  kFileRewrapNoWav = 3008,    // a source file cannot be opened
  kFileRewrapNoTrackBuffer = 3011,  // no memory for one frame of every track
};

// Rewrites a clip as RewrapMapped does, but reads the clip and the source files with plain file
// access. It takes the same arguments, proves and writes the same, and returns the same results,
// with the codes above and kStageRewrapFileIo in place of those of RewrapMapped. Throws nothing.
//
// `wavBufferIndex` of `tracks` picks the buffer duration, which says how far ahead the source files
// are prefetched: at most the frames of this duration, and at most kMostBlockBytes, but at least
// one frame. The job works on one block of frames at a time, small enough to stay in the
// processor's cache between being read and being written (state/wav_buffer.h). The clip
// keeps the times that the system sets when the clip is written.
std::int32_t RewrapFileIo(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
