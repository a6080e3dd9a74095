// Compares what stands in a clip with what a rewrite would write there.

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"
#include "state/job_progress.h"

namespace quorvan {

// The first sample that differs, in the order of frames, tracks and samples.
struct SampleDifference {
  std::uint32_t track;   // from 0
  std::uint32_t entry;   // of the INDEX_ENTRY_ARRAY
  std::uint32_t sample;  // within the frame, from 0
  std::uint64_t fileOffset;
  std::int32_t wanted;  // value of the sample, signed
  std::int32_t found;
};

enum class VerifyState { kSame, kDiffers, kStopped, kFailed };

struct VerifyResult {
  VerifyState state;
  SampleDifference difference;  // when it differs
  std::int32_t code;            // when it failed: a result of RewrapFileIo
};

// Takes the arguments of RewrapFileIo, only reads, and proves the same of each frame before it
// compares the frame. A failure names its frame or file in `fault` as a rewrite does. `progress`
// counts frames. Throws nothing.
VerifyResult VerifyRewrap(const char16_t* path, AUDIOTRACK_IO_INFO* tracks,
                          const MXF_BASE_INFO* mxf, JobProgress* progress);

}  // namespace quorvan
