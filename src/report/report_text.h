// What the logs say in the same words.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "mxf/records.h"
#include "platform/clock.h"

namespace quorvan {

inline constexpr std::string_view kProgramVersion = "MXF Quorvan 1.7.8.3";

// "24" to "59.94" by rateIndex; empty for an unknown one.
std::string_view RateLabel(const MXF_TIMECODE_INFO& timecode);

// "DF" or "NDF".
std::string_view DropLabel(const MXF_TIMECODE_INFO& timecode);

// The timecode of a real count, with "." before the frames when dropFrame is not 0.
std::string TimecodeText(const MXF_TIMECODE_INFO& timecode, std::uint32_t frames);

// FormatFileSize as the logs show it, at most 15 characters.
std::string FileSizeText(std::uint64_t bytes);

// Frames from the first to the last one of the clip, both included.
std::uint32_t LengthInFrames(const MXF_TIMECODE_INFO& timecode);

// "hh:mm:ss".
std::string TimeText(const platform::CalendarTime& time);

// "yyyy/mm/dd  hh:mm:ss", the year with at least `yearDigits` digits.
std::string DateTimeText(const platform::CalendarTime& time, int yearDigits);

}  // namespace quorvan
