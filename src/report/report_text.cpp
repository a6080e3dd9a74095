#include "report/report_text.h"

#include <fmt/format.h>

#include "mxf/sample_pattern.h"
#include "platform/file.h"
#include "state/wording.h"

namespace quorvan {
namespace {

constexpr std::uint32_t kFirstDropFrameRate = 6;

}  // namespace

std::string_view DropLabel(const MXF_TIMECODE_INFO& timecode) {
  const bool drops = timecode.dropFrame != 0 && timecode.rateIndex >= kFirstDropFrameRate &&
                     timecode.rateIndex < kRateCount;
  return drops ? "DF" : "NDF";
}

std::string TimeText(const platform::CalendarTime& time) {
  return fmt::format("{:02}:{:02}:{:02}", time.hour, time.minute, time.second);
}

std::string DateTimeText(const platform::CalendarTime& time, int yearDigits) {
  return fmt::format("{:0{}}/{:02}/{:02}  {}", time.year, yearDigits, time.month, time.day,
                     TimeText(time));
}

std::string LogRefusal(std::uint32_t error, platform::Language language) {
  if (error != platform::NameTakenError()) return {};
  return Worded(
      language,
      {"\n\n同じ名前の別のファイル(映像・音声など)があるため、置き換えません。",
       "\n\nAnother file (picture, sound or the like) has this name and is not replaced."});
}

}  // namespace quorvan
