// The wall clock as calendar time and as file time, and a clock for durations.

#pragma once

#include <cstdint>

#include "platform/file.h"

namespace quorvan::platform {

// A point in time in the local time zone.
struct CalendarTime {
  std::uint16_t year;      // of the Gregorian calendar
  std::uint8_t month;      // 1 to 12
  std::uint8_t day;        // 1 to 31
  std::uint8_t hour;       // 0 to 23
  std::uint8_t minute;     // 0 to 59
  std::uint8_t second;     // 0 to 59
  std::uint8_t dayOfWeek;  // 0 is Sunday
};

// The present time in the local time zone; all fields zero when the system cannot convert it.
CalendarTime LocalTimeNow();

// Converts `time` into the local time zone. All fields are zero when the system cannot convert it.
CalendarTime ToLocalTime(FileTime time);

// The present time as a file time (units of 100 ns since 1601), cut to whole seconds.
FileTime FileTimeNow();

// Seconds since an arbitrary start, with a fraction. Never runs backwards, so that the difference
// of two calls is a duration.
double MonotonicSeconds();

}  // namespace quorvan::platform
