#include "view/timecode_entry.h"

#include <array>

#include "state/clip_state.h"
#include "timecode/timecode.h"

namespace quorvan {
namespace {

constexpr std::size_t kMostChars = 9;
constexpr std::size_t kDigits = 8;

// Largest valid hours, minutes, seconds and frames, indexed by fpsIndex.
constexpr std::array<TimeFields, kTimecodeBases> kFieldLimits = {{
    {23, 59, 59, 23},
    {23, 59, 59, 24},
    {23, 59, 59, 29},
    {47, 59, 59, 49},
    {23, 59, 59, 59},
}};

// The fields of the last eight digits among the first nine characters.
TimeFields FieldsOf(std::u16string_view text) {
  text = text.substr(0, kMostChars);
  TimeFields fields{};
  std::size_t taken = 0;
  for (std::size_t i = text.size(); i-- > 0 && taken < kDigits;) {
    if (text[i] < u'0' || text[i] > u'9') continue;
    const auto digit = static_cast<std::uint32_t>(text[i] - u'0');
    fields[fields.size() - 1 - taken / 2] += taken % 2 == 0 ? digit : 10 * digit;
    ++taken;
  }
  return fields;
}

bool IsWithin(const TimeFields& fields, const TimeFields& limits) {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (fields[i] > limits[i]) return false;
  }
  return true;
}

}  // namespace

std::u16string DigitsIn(std::u16string_view text) {
  std::u16string digits;
  for (const char16_t c : text) {
    if (c >= u'0' && c <= u'9') digits += c;
    if (c >= u'０' && c <= u'９') digits += static_cast<char16_t>(u'0' + (c - u'０'));
  }
  return digits;
}

EntryResult ApplyTimecodeEntry(APP_STATE_INFO* app, TimecodeTarget target,
                               const RangeFields& fields, PointSet* pointSet,
                               std::u16string_view text) {
  const MXF_TIMECODE_INFO& timecode = *app->mxf->timecode;
  if (target == kNoTarget || timecode.fpsIndex >= kTimecodeBases) return EntryResult::kMissing;
  const TimeFields typed = FieldsOf(text);
  if (!IsWithin(typed, kFieldLimits[timecode.fpsIndex])) return EntryResult::kFieldTooLarge;
  const std::int32_t frames = TimecodeToFrames(timecode.fpsIndex, timecode.dropFrame, typed);
  const FramePoint point = MakeFramePoint(timecode, frames);
  const std::size_t slot = CountedSlot(timecode);
  std::uint32_t& isSet = (*pointSet)[static_cast<std::size_t>(target)];
  if (point[slot] < static_cast<std::int32_t>(WorkingStart(timecode))) {
    isSet = 0;
    return EntryResult::kBeforeStart;
  }
  if (point[slot] > static_cast<std::int32_t>(WorkingLast(timecode))) {
    isSet = 0;
    return EntryResult::kBehindEnd;
  }
  isSet = 1;
  app->enteredTimecode = {static_cast<std::uint32_t>(point[0]),
                          static_cast<std::uint32_t>(point[1])};
  FramePoint& in = app->tracks->*fields.in;
  FramePoint& out = app->tracks->*fields.out;
  (target == kInTarget ? in : out) = point;
  FramePoint& other = target == kInTarget ? out : in;
  const bool otherSet = (*pointSet)[target == kInTarget ? 1 : 0] == 1;
  if (otherSet && in[slot] > out[slot]) other = point;
  return EntryResult::kAccepted;
}

std::u16string_view EntryRefusal(EntryResult result) {
  switch (result) {
    case EntryResult::kFieldTooLarge:
      return u"不適切な値が入力されています。";
    case EntryResult::kBeforeStart:
      return u"メディアの開始タイムより前になっています。";
    case EntryResult::kBehindEnd:
      return u"メディアの終了タイムを越えています。";
    case EntryResult::kAccepted:
    case EntryResult::kMissing:
      break;
  }
  return {};
}

TimecodeTarget NextTarget(TimecodeTarget target) {
  return target == kInTarget ? kOutTarget : kNoTarget;
}

}  // namespace quorvan
