#include "report/report_text.h"

#include <fmt/format.h>

#include <array>
#include <iterator>

#include "mxf/sample_pattern.h"
#include "platform/text.h"
#include "timecode/timecode.h"
#include "wav/size_text.h"

namespace quorvan {
namespace {

constexpr std::array<std::string_view, kRateCount> kRateLabels = {"24", "25",    "30",    "50",
                                                                  "60", "23.98", "29.97", "59.94"};
constexpr std::uint32_t kFirstDropFrameRate = 6;

}  // namespace

std::string_view RateLabel(const MXF_TIMECODE_INFO& timecode) {
  return timecode.rateIndex < kRateCount ? kRateLabels[timecode.rateIndex] : std::string_view();
}

std::string_view DropLabel(const MXF_TIMECODE_INFO& timecode) {
  const bool drops = timecode.dropFrame != 0 && timecode.rateIndex >= kFirstDropFrameRate &&
                     timecode.rateIndex < kRateCount;
  return drops ? "DF" : "NDF";
}

std::string TimecodeText(const MXF_TIMECODE_INFO& timecode, std::uint32_t frames) {
  char16_t text[32] = {};
  FormatTimecode(text, std::size(text), timecode.fpsIndex, timecode.dropFrame, frames, kSeparated);
  return platform::ToUtf8(text);
}

std::string FileSizeText(std::uint64_t bytes) {
  char16_t text[16] = {};
  FormatFileSize(bytes, text, std::size(text));
  return platform::ToUtf8(text);
}

std::uint32_t LengthInFrames(const MXF_TIMECODE_INFO& timecode) {
  return WorkingLast(timecode) - WorkingStart(timecode) + 1;
}

std::string TimeText(const platform::CalendarTime& time) {
  return fmt::format("{:02}:{:02}:{:02}", time.hour, time.minute, time.second);
}

std::string DateTimeText(const platform::CalendarTime& time, int yearDigits) {
  return fmt::format("{:0{}}/{:02}/{:02}  {}", time.year, yearDigits, time.month, time.day,
                     TimeText(time));
}

}  // namespace quorvan
