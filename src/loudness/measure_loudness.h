// Measures the loudness of a range of a clip's audio (EBU R128, ITU-R BS.1770).

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Failures of the measurement alone. The other failures are kStageExportMapped plus a JobFault.
enum LoudnessCode : std::int32_t {
  kLoudnessNoMemory = 4006,   // memory is out, or libebur128 has failed
  kLoudnessNoClip = 4007,     // the clip cannot be opened
  kLoudnessEmptyClip = 4008,  // the clip has 0 bytes
};

// The true peak, in dBTP, that stands for digital silence.
inline constexpr double kSilentTruePeak = -99.9;

// Measures the clip at `path` (zero terminated) from frame loudnessIn to frame loudnessOut of
// `tracks`, both included, with five seconds of silence before and after the range. `mxf` holds the
// analysis of that clip. `trackSelected` points to kMaxTracks flags, one for each track: the first
// flag that is 1 selects the left channel and the second the right channel; further flags are
// ignored, and a channel without a track is silent. The clip is only read. While it works, the
// function writes totalFrames, currentFrame (frames done) and phase of `tracks`; it stops at the
// frame during which `cancel` of `tracks` becomes 1.
//
// Returns kSuccess, with integratedLoudness (LUFS), truePeak (dBTP) and loudnessRange (LU) in the
// audio record of `mxf`; kCancelled, with `cancel` and totalFrames of `tracks` set to 0; or a
// failure, with the frame at fault, if any, in `fault` of `tracks`. Without kSuccess the three
// values are unchanged. Throws nothing.
std::int32_t MeasureLoudness(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf,
                             const std::uint8_t* trackSelected);

}  // namespace quorvan
