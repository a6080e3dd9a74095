#include "platform/clock.h"

#include <windows.h>

#include "platform/windows/file_time.h"

namespace quorvan::platform {
namespace {

constexpr FileTime kTicksPerSecond = 10000000;

CalendarTime ToCalendarTime(const SYSTEMTIME& fields) {
  CalendarTime time{};
  time.year = fields.wYear;
  time.month = static_cast<std::uint8_t>(fields.wMonth);
  time.day = static_cast<std::uint8_t>(fields.wDay);
  time.hour = static_cast<std::uint8_t>(fields.wHour);
  time.minute = static_cast<std::uint8_t>(fields.wMinute);
  time.second = static_cast<std::uint8_t>(fields.wSecond);
  time.dayOfWeek = static_cast<std::uint8_t>(fields.wDayOfWeek);
  return time;
}

}  // namespace

CalendarTime LocalTimeNow() {
  SYSTEMTIME fields{};
  GetLocalTime(&fields);
  return ToCalendarTime(fields);
}

CalendarTime ToLocalTime(FileTime time) {
  const FILETIME utc = ToSystem(time);
  SYSTEMTIME utcFields{};
  SYSTEMTIME fields{};
  if (!FileTimeToSystemTime(&utc, &utcFields) ||
      !SystemTimeToTzSpecificLocalTime(nullptr, &utcFields, &fields)) {
    return {};
  }
  return ToCalendarTime(fields);
}

FileTime FileTimeNow() {
  FILETIME now{};
  GetSystemTimeAsFileTime(&now);
  const FileTime ticks = FromSystem(now);
  return ticks - ticks % kTicksPerSecond;
}

double MonotonicSeconds() {
  LARGE_INTEGER frequency{};
  LARGE_INTEGER count{};
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&count);
  return static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

}  // namespace quorvan::platform
