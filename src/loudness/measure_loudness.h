// Loudness of a stretch of a clip's audio (EBU R128, ITU-R BS.1770).

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Besides the code of the export through views plus a JobFault.
enum LoudnessCode : std::int32_t {
  kLoudnessNoMemory = 4006,
  kLoudnessNoClip = 4007,
  kLoudnessEmptyClip = 4008,
};

// True peak, in dBTP, of a stretch of digital silence.
inline constexpr double kSilentTruePeak = -99.9;

// Measures the clip at `path` from the loudnessIn to the loudnessOut frame of `tracks`, both
// included, with five seconds of silence in front and behind. Of the kMaxTracks flags at
// `trackSelected` the first that is 1 names the left channel and the second the right one; a
// channel that none names is silent. The clip is only read. Writes `totalFrames` and
// `currentFrame` for those who watch, and stops at the frame during which `cancel` becomes 1.
//
// Returns 0, with integratedLoudness (LUFS), truePeak (dBTP) and loudnessRange (LU) in the audio
// record of `mxf`; kCancelled; or a failure: `fault` tells which frame was at fault. Without
// success the results stay what they were. Throws nothing.
std::int32_t MeasureLoudness(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf,
                             const std::uint8_t* trackSelected);

}  // namespace quorvan
