// Compares the audio of a clip with the samples that a rewrite would write.

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"
#include "state/job_progress.h"

namespace quorvan {

// The first sample that differs, in the order of frames, tracks and samples.
struct SampleDifference {
  std::uint32_t track;       // zero-based
  std::uint32_t entry;       // frame, as index in the INDEX_ENTRY_ARRAY
  std::uint32_t sample;      // within the frame, zero-based
  std::uint64_t fileOffset;  // of the sample's first byte in the clip
  std::int32_t wanted;       // value that a rewrite would write, signed
  std::int32_t found;        // value in the clip, signed
};

enum class VerifyState {
  kSame,     // all samples of the range are the same
  kDiffers,  // the comparison ended at the first difference
  kStopped,  // the comparison ended at a request to stop, without a difference up to there
  kFailed    // the comparison was not possible
};

struct VerifyResult {
  VerifyState state;
  SampleDifference difference;  // valid for kDiffers
  std::int32_t code;            // for kFailed, a result of RewrapFileIo
};

// Compares the clip at `path`, frame by frame, with the samples that RewrapFileIo would write with
// the same arguments, and changes nothing in the clip. Proves each frame as a rewrite does before
// it compares the frame, and checks the source files, but not the UMIDs. `fault` of `tracks` names
// the frame or source file of a failure. `progress` counts frames, and its `cancel` stops the
// comparison behind the frame at work; it must not be null. Throws nothing.
VerifyResult VerifyRewrap(const char16_t* path, AUDIOTRACK_IO_INFO* tracks,
                          const MXF_BASE_INFO* mxf, JobProgress* progress);

}  // namespace quorvan
