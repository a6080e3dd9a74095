#include "timecode/timecode.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quorvan {
namespace {

// One row of the base table. Counts are labels, but for dropFramesPerDay.
struct TimecodeBase {
  std::uint32_t highestFrame;  // of a second, from 0
  std::uint32_t framesPerHour;
  std::uint32_t framesPerMinute;
  std::uint32_t framesPerSecond;
  std::uint32_t framesPerDay;
  std::uint32_t dropFramesPerDay;  // real frames of a day with drop frame
  std::uint32_t droppedPerMinute;  // labels, in each minute but every tenth; 0: no drop frame
};

constexpr std::array<TimecodeBase, kTimecodeBases> kBases = {{
    {23, 86400, 1440, 24, 2073600, 2073600, 0},
    {24, 90000, 1500, 25, 2160000, 2160000, 0},
    {29, 108000, 1800, 30, 2592000, 2589408, 2},
    {49, 180000, 3000, 50, 4320000, 4320000, 0},
    {59, 216000, 3600, 60, 5184000, 5178816, 4},
}};

constexpr std::uint32_t kMinutesPerHour = 60;
constexpr std::uint32_t kSecondsPerMinute = 60;
constexpr std::uint32_t kHoursPerDay = 24;
constexpr std::uint32_t kHighestTextHour = 47;
constexpr std::uint32_t kDroppingMinutesPerHour = 54;
constexpr int kLabelRounds = 3;

const TimecodeBase* FindBase(std::uint32_t fpsIndex) {
  return fpsIndex < kTimecodeBases ? &kBases[fpsIndex] : nullptr;
}

std::uint32_t DroppedPerMinute(const TimecodeBase& base, std::uint32_t dropFrame) {
  return dropFrame == 1 ? base.droppedPerMinute : 0;
}

// Number of labels that drop frame skips from 00:00:00:00 to the end of minute `minutes` of hour
// `hours`. `perMinute` is the number of labels that each dropping minute skips.
std::uint64_t DroppedBy(std::uint32_t perMinute, std::uint64_t hours, std::uint64_t minutes) {
  return perMinute * (hours * kDroppingMinutesPerHour + minutes - minutes / 10);
}

std::uint64_t DroppedUpTo(const TimecodeBase& base, std::uint32_t dropFrame, std::uint64_t count) {
  const std::uint64_t hours = count / base.framesPerHour;
  const std::uint64_t minutes = count % base.framesPerHour / base.framesPerMinute;
  return DroppedBy(DroppedPerMinute(base, dropFrame), hours, minutes);
}

std::uint32_t Saturated(std::uint64_t count) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::uint32_t>(std::min(count, kMost));
}

bool FitsCount(std::int64_t count) {
  return std::in_range<std::int32_t>(count);
}

void ComputeOperands(TIMECODE_CALC* calc) {
  calc->aFrames = TimecodeToFrames(calc->fpsIndex, calc->dropFrame, calc->a);
  calc->bFrames = TimecodeToFrames(calc->fpsIndex, calc->dropFrame, calc->b);
}

bool OperandsValid(const TIMECODE_CALC& calc) {
  return calc.aFrames != kInvalidTimecode && calc.bFrames != kInvalidTimecode;
}

int Subtract(TIMECODE_CALC* calc) {
  if (calc->aFrames < calc->bFrames) {
    calc->a[0] += kHoursPerDay;
    ComputeOperands(calc);
    if (!OperandsValid(*calc)) return 0;
  }
  calc->resultFrames = calc->aFrames - calc->bFrames;
  return 1;
}

int Add(TIMECODE_CALC* calc) {
  const std::int64_t day = FramesPerDay(calc->fpsIndex, calc->dropFrame);
  std::int64_t sum = std::int64_t{calc->aFrames} + calc->bFrames;
  if (sum >= day) sum -= day;
  if (!FitsCount(sum)) return 0;
  calc->resultFrames = static_cast<std::int32_t>(sum);
  return 1;
}

// Appends characters to a text as far as they fit, and always keeps room for the terminating zero.
class TextWriter {
 public:
  TextWriter(char16_t* destination, std::size_t size) : next_(destination), room_(size - 1) {}

  void Put(char16_t character) {
    if (room_ == 0) return;
    *next_++ = character;
    --room_;
  }

  void PutNumber(std::uint32_t number) {
    if (number >= 100) PutLeadingDigits(number / 100);
    Put(static_cast<char16_t>(u'0' + number / 10 % 10));
    Put(static_cast<char16_t>(u'0' + number % 10));
  }

  void Terminate() { *next_ = u'\0'; }

 private:
  void PutLeadingDigits(std::uint32_t number) {
    if (number >= 10) PutLeadingDigits(number / 10);
    Put(static_cast<char16_t>(u'0' + number % 10));
  }

  char16_t* next_;
  std::size_t room_;
};

}  // namespace

std::uint32_t FramesPerHour(std::uint32_t fpsIndex) {
  const TimecodeBase* base = FindBase(fpsIndex);
  return base == nullptr ? 0 : base->framesPerHour;
}

std::uint32_t FramesPerSecond(std::uint32_t fpsIndex) {
  const TimecodeBase* base = FindBase(fpsIndex);
  return base == nullptr ? 0 : base->framesPerSecond;
}

std::uint32_t FramesPerDay(std::uint32_t fpsIndex, std::uint32_t dropFrame) {
  const TimecodeBase* base = FindBase(fpsIndex);
  if (base == nullptr) return 0;
  return dropFrame == 1 ? base->dropFramesPerDay : base->framesPerDay;
}

std::int32_t TimecodeToFrames(std::uint32_t fpsIndex, std::uint32_t dropFrame,
                              const TimeFields& fields) {
  const TimecodeBase* base = FindBase(fpsIndex);
  if (base == nullptr) return kInvalidTimecode;
  const auto [hours, minutes, seconds, frames] = fields;
  if (minutes >= kMinutesPerHour || seconds >= kSecondsPerMinute || frames > base->highestFrame) {
    return kInvalidTimecode;
  }
  const std::uint32_t perMinute = DroppedPerMinute(*base, dropFrame);
  const bool labelsDropHere = minutes % 10 != 0 && seconds == 0;
  const std::uint32_t validFrames = labelsDropHere ? std::max(frames, perMinute) : frames;
  const std::int64_t labels = std::int64_t{hours} * base->framesPerHour +
                              std::int64_t{minutes} * base->framesPerMinute +
                              std::int64_t{seconds} * base->framesPerSecond + validFrames;
  const std::int64_t count =
      labels - static_cast<std::int64_t>(DroppedBy(perMinute, hours, minutes));
  return FitsCount(count) ? static_cast<std::int32_t>(count) : kInvalidTimecode;
}

std::int32_t TextToFrames(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::string_view text) {
  constexpr std::size_t kDigits = 8;
  TimeFields fields{};
  std::size_t digit = 0;
  for (auto at = text.rbegin(); at != text.rend() && digit < kDigits; ++at) {
    if (*at < '0' || *at > '9') continue;
    const auto value = static_cast<std::uint32_t>(*at - '0');
    fields[3 - digit / 2] += digit % 2 == 0 ? value : value * 10;
    ++digit;
  }
  if (fields[0] > kHighestTextHour) return kInvalidTimecode;
  return TimecodeToFrames(fpsIndex, dropFrame, fields);
}

int FramesToTimecode(std::uint32_t labelCount, std::uint32_t fpsIndex, TimeFields* fields) {
  const TimecodeBase* base = FindBase(fpsIndex);
  if (base == nullptr || fields == nullptr) return 0;
  const std::uint32_t inHour = labelCount % base->framesPerHour;
  const std::uint32_t inMinute = inHour % base->framesPerMinute;
  *fields = {labelCount / base->framesPerHour, inHour / base->framesPerMinute,
             inMinute / base->framesPerSecond, inMinute % base->framesPerSecond};
  return 1;
}

std::uint32_t DropCount(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::uint32_t count) {
  const TimecodeBase* base = FindBase(fpsIndex);
  if (base == nullptr) return 0;
  return static_cast<std::uint32_t>(DroppedUpTo(*base, dropFrame, count));
}

std::uint32_t FramesToLabelCount(std::uint32_t fpsIndex, std::uint32_t dropFrame,
                                 std::uint32_t count) {
  const TimecodeBase* base = FindBase(fpsIndex);
  if (base == nullptr) return count;
  std::uint64_t dropped = 0;
  for (int round = 0; round < kLabelRounds; ++round) {
    dropped = DroppedUpTo(*base, dropFrame, count + dropped);
  }
  return Saturated(count + dropped);
}

int TimecodeAddSub(TIMECODE_CALC* calc, char operation) {
  if (calc == nullptr) return 0;
  ComputeOperands(calc);
  if (!OperandsValid(*calc)) return 0;
  return operation == '-' ? Subtract(calc) : Add(calc);
}

std::int32_t ShiftHours(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::uint32_t count,
                        std::uint32_t hours, char operation) {
  constexpr std::int32_t kUnknownOperator = 1;
  if (operation != '+' && operation != '-') return kUnknownOperator;
  TIMECODE_CALC calc{};
  calc.fpsIndex = fpsIndex;
  calc.dropFrame = dropFrame;
  calc.b[0] = hours;
  calc.resultFrames = kInvalidTimecode;
  FramesToTimecode(FramesToLabelCount(fpsIndex, dropFrame, count), fpsIndex, &calc.a);
  TimecodeAddSub(&calc, operation);
  return calc.resultFrames;
}

void FormatTimecode(char16_t* destination, std::size_t size, std::uint32_t fpsIndex,
                    std::uint32_t dropFrame, std::uint32_t count, int mode) {
  if (destination == nullptr || size == 0) return;
  if (mode != kSeparated && mode != kEightDigits) return;
  TimeFields fields{};
  if (FramesToTimecode(FramesToLabelCount(fpsIndex, dropFrame, count), fpsIndex, &fields) == 0) {
    return;
  }
  const char16_t frameSeparator = dropFrame != 0 ? u'.' : u':';
  TextWriter writer(destination, size);
  for (std::size_t field = 0; field < fields.size(); ++field) {
    if (mode == kSeparated && field != 0) writer.Put(field == 3 ? frameSeparator : u':');
    writer.PutNumber(fields[field]);
  }
  writer.Terminate();
}

}  // namespace quorvan
