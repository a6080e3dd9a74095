// The texts that both logs share. Functions that return a std::string throw std::bad_alloc when
// memory is out.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "mxf/records.h"
#include "platform/clock.h"
#include "platform/language.h"
#include "state/clip_text.h"

namespace quorvan {

// "DF" for a clip with drop frame and the edit rate 30000/1001 or 60000/1001, else "NDF".
std::string_view DropLabel(const MXF_TIMECODE_INFO& timecode);

// The time of day as "hh:mm:ss".
std::string TimeText(const platform::CalendarTime& time);

// Date and time as "yyyy/mm/dd  hh:mm:ss", the year with at least `yearDigits` digits.
std::string DateTimeText(const platform::CalendarTime& time, int yearDigits);

// The paragraph behind the message that a log could not be written for the system's reason `error`.
// It says that another file has the log's name when `error` is NameTakenError(), and is empty for
// any other reason.
std::string LogRefusal(std::uint32_t error, platform::Language language);

}  // namespace quorvan
