// What logs, window and console say of a clip in the same words, and what an operator should know
// of a clip before working with it. Texts are UTF-8.

#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "mxf/records.h"

namespace quorvan {

// "24" to "59.94" by rateIndex; empty for an unknown one.
std::string_view RateLabel(const MXF_TIMECODE_INFO& timecode);

// The timecode of a real count, with "." before the frames when dropFrame is not 0.
std::string TimecodeText(const MXF_TIMECODE_INFO& timecode, std::int64_t frames);

// FormatFileSize, at most 15 characters.
std::string FileSizeText(std::uint64_t bytes);

// 64 upper-case hexadecimal characters.
std::string UmidText(const std::array<std::uint8_t, kUmidBytes>& umid);

// Frames from the first to the last one of the clip, both included.
std::uint32_t LengthInFrames(const MXF_TIMECODE_INFO& timecode);

enum class ClipNotice {
  kNoRange,         // start, timecode base or duration are unknown: no job takes the clip
  kUnknownRate,     // the edit rate is none of the table: no job takes the clip
  kNoSampleFormat,  // sampling rate or sample width are unknown: no job takes the clip
  kOtherLength,     // the index does not hold as many frames as the duration says
  kHiddenTracks,    // the index holds more audio elements than tracks were counted
};

// All notices of the clip, in that order.
std::vector<ClipNotice> NoticesOf(const MXF_BASE_INFO& mxf);

// Audio elements of a frame, as the index has them.
std::uint32_t IndexedAudioElements(const MXF_BASE_INFO& mxf);

}  // namespace quorvan
