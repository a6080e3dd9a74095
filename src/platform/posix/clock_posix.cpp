#include "platform/clock.h"

#include <ctime>

#include "platform/posix/file_time.h"

namespace quorvan::platform {
namespace {

CalendarTime LocalTimeOf(std::time_t seconds) {
  std::tm fields{};
  if (localtime_r(&seconds, &fields) == nullptr) return {};
  CalendarTime time{};
  time.year = static_cast<std::uint16_t>(fields.tm_year + 1900);
  time.month = static_cast<std::uint8_t>(fields.tm_mon + 1);
  time.day = static_cast<std::uint8_t>(fields.tm_mday);
  time.hour = static_cast<std::uint8_t>(fields.tm_hour);
  time.minute = static_cast<std::uint8_t>(fields.tm_min);
  time.second = static_cast<std::uint8_t>(fields.tm_sec);
  time.dayOfWeek = static_cast<std::uint8_t>(fields.tm_wday);
  return time;
}

}  // namespace

CalendarTime LocalTimeNow() {
  return LocalTimeOf(std::time(nullptr));
}

CalendarTime ToLocalTime(FileTime time) {
  const std::int64_t ticks = static_cast<std::int64_t>(time) - kUnixEpochAsFileTime;
  std::int64_t seconds = ticks / kTicksPerSecond;
  if (ticks % kTicksPerSecond < 0) --seconds;
  return LocalTimeOf(static_cast<std::time_t>(seconds));
}

FileTime FileTimeNow() {
  return static_cast<FileTime>(std::int64_t{std::time(nullptr)} * kTicksPerSecond +
                               kUnixEpochAsFileTime);
}

double MonotonicSeconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

}  // namespace quorvan::platform
