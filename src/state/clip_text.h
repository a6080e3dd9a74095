// The texts about a clip that logs and front ends share, and the notices about a clip that an
// operator should read before working with it. Texts are UTF-8. Functions that return a std::string
// or a std::vector throw std::bad_alloc when memory is out.

#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "mxf/records.h"

namespace quorvan {

// The edit rate, "24" to "59.94", by rateIndex; empty for an unknown rate.
std::string_view RateLabel(const MXF_TIMECODE_INFO& timecode);

// The timecode of the real count `frames`, which must fit 32 bits, as "01:02:03:04", with "."
// before the frames when dropFrame is not 0. Empty when the timecode base is unknown.
std::string TimecodeText(const MXF_TIMECODE_INFO& timecode, std::int64_t frames);

// The size `bytes` as FormatFileSize writes it, at most 15 characters.
std::string FileSizeText(std::uint64_t bytes);

// The UMID as 64 upper-case hexadecimal characters.
std::string UmidText(const std::array<std::uint8_t, kUmidBytes>& umid);

// The number of frames from the first to the last frame of the clip, both included.
std::uint32_t LengthInFrames(const MXF_TIMECODE_INFO& timecode);

// What an operator should know of a clip.
enum class ClipNotice {
  kNoRange,            // start, timecode base or duration is unknown: no job takes the clip
  kUnknownRate,        // the edit rate is not in the table: no job takes the clip
  kNoSampleFormat,     // sampling rate or sample width is unknown: no job takes the clip
  kOtherLength,        // the index has more or fewer frames than the duration says
  kOtherPattern,       // the sample pattern does not start with the clip: no job takes the clip
  kIndexContradicted,  // the index misses the audio of some frames: jobs refuse these
  kHiddenTracks,       // the index leads to more or fewer audio elements than tracks were counted
};

// All notices that apply to the clip, in the order of ClipNotice. `mxf` must hold an accepted
// analysis.
std::vector<ClipNotice> NoticesOf(const MXF_BASE_INFO& mxf);

}  // namespace quorvan
