// What the logs say in the same words.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "mxf/records.h"
#include "platform/clock.h"
#include "state/clip_text.h"

namespace quorvan {

// "DF" or "NDF".
std::string_view DropLabel(const MXF_TIMECODE_INFO& timecode);

// "hh:mm:ss".
std::string TimeText(const platform::CalendarTime& time);

// "yyyy/mm/dd  hh:mm:ss", the year with at least `yearDigits` digits.
std::string DateTimeText(const platform::CalendarTime& time, int yearDigits);

// What stands behind the message of a log that could not be written for the system's reason
// `error`: empty, or that another file has the log's name.
std::string_view LogRefusal(std::uint32_t error);

}  // namespace quorvan
