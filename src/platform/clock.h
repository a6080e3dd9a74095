// Wall clock time, local and as file times.

#pragma once

#include <cstdint>

#include "platform/file.h"

namespace quorvan::platform {

struct CalendarTime {
  std::uint16_t year;
  std::uint8_t month;      // 1 to 12
  std::uint8_t day;        // 1 to 31
  std::uint8_t hour;       // 0 to 23
  std::uint8_t minute;     // 0 to 59
  std::uint8_t second;     // 0 to 59
  std::uint8_t dayOfWeek;  // 0 is Sunday
};

// Now, in the local time zone.
CalendarTime LocalTimeNow();

// `time` in the local time zone; all fields zero when it has no calendar form.
CalendarTime ToLocalTime(FileTime time);

// Now, cut to whole seconds.
FileTime FileTimeNow();

// Seconds from an arbitrary start, never running backwards.
double MonotonicSeconds();

}  // namespace quorvan::platform
