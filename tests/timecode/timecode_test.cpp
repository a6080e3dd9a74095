#include "timecode/timecode.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace quorvan {
namespace {

constexpr std::uint32_t kHighest = std::numeric_limits<std::uint32_t>::max();

TIMECODE_CALC Calc(std::uint32_t fpsIndex, std::uint32_t dropFrame, TimeFields a, TimeFields b) {
  return {fpsIndex, dropFrame, a, b, 0, 0, 0};
}

std::u16string Text(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::uint32_t count, int mode,
                    std::size_t size = 32) {
  char16_t buffer[32] = u"untouched";
  FormatTimecode(buffer, size, fpsIndex, dropFrame, count, mode);
  return buffer;
}

TEST(TimecodeToFrames, CountsFieldsByBaseAndDropFrame) {
  const struct {
    std::uint32_t fpsIndex;
    std::uint32_t dropFrame;
    TimeFields fields;
    std::int32_t count;
  } kCases[] = {
      {2, 1, {1, 0, 0, 0}, 107892},
      {2, 1, {0, 1, 0, 2}, 1800},
      {2, 1, {0, 1, 0, 0}, 1800},
      {2, 1, {0, 10, 0, 0}, 17982},
      {2, 1, {23, 59, 59, 29}, 2589407},
      {4, 1, {0, 1, 0, 4}, 3600},
      {4, 1, {0, 1, 0, 3}, 3600},
      {4, 1, {0, 10, 0, 0}, 35964},
      {4, 1, {23, 59, 59, 59}, 5178815},
      {2, 255, {1, 0, 0, 0}, 108000},  // only 1 counts as drop frame
      {1, 1, {0, 1, 0, 0}, 1500},      // nothing drops at base 25
      {0, 0, {23, 59, 59, 23}, 2073599},
      {1, 0, {23, 59, 59, 24}, 2159999},
      {3, 0, {25, 0, 0, 49}, 4500049},  // hours run on past a day
      {1, 0, {0, 60, 0, 0}, kInvalidTimecode},
      {1, 0, {0, 0, 60, 0}, kInvalidTimecode},
      {0, 0, {0, 0, 0, 24}, kInvalidTimecode},
      {1, 0, {0, 0, 0, 25}, kInvalidTimecode},
      {2, 0, {0, 0, 0, 30}, kInvalidTimecode},
      {3, 0, {0, 0, 0, 50}, kInvalidTimecode},
      {4, 0, {0, 0, 0, 60}, kInvalidTimecode},
      {5, 0, {0, 0, 0, 0}, kInvalidTimecode},
      {1, 0, {23860, 0, 0, 0}, 2147400000},  // the last hour whose count fits, and the next
      {1, 0, {23861, 0, 0, 0}, kInvalidTimecode},
      {4, 1, {kHighest, 59, 59, 59}, kInvalidTimecode},
      {4, 1, {kHighest, kHighest, kHighest, kHighest}, kInvalidTimecode},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(TimecodeToFrames(c.fpsIndex, c.dropFrame, c.fields), c.count)
        << c.fpsIndex << " " << c.dropFrame << " " << c.fields[0] << ":" << c.fields[1] << ":"
        << c.fields[2] << ":" << c.fields[3];
  }
}

// Counts the labels one by one, skipping the dropped ones, so that nothing of the formulas is used.
TEST(FramesToLabelCount, NamesEveryFrameOfADayAndBackUnderDropFrame) {
  for (const std::uint32_t fpsIndex : {2U, 4U}) {
    const std::uint32_t dropped = fpsIndex == 2 ? 2 : 4;
    const std::uint32_t day = FramesPerDay(fpsIndex, 1);
    TimeFields written{};
    for (std::uint32_t count = 0; count < day; ++count) {
      TimeFields fields{};
      FramesToTimecode(FramesToLabelCount(fpsIndex, 1, count), fpsIndex, &fields);
      ASSERT_EQ(fields, written) << count;
      ASSERT_EQ(TimecodeToFrames(fpsIndex, 1, fields), static_cast<std::int32_t>(count));
      if (++written[3] < FramesPerSecond(fpsIndex)) continue;
      written[3] = 0;
      if (++written[2] == 60) {
        written[2] = 0;
        if (++written[1] == 60) {
          written[1] = 0;
          ++written[0];
        }
        if (written[1] % 10 != 0) written[3] = dropped;
      }
    }
    EXPECT_EQ(written, (TimeFields{24, 0, 0, 0}));
  }
}

TEST(FramesToLabelCount, StaysInRangeForAnyCount) {
  EXPECT_EQ(FramesToLabelCount(2, 1, kHighest), kHighest);
  EXPECT_EQ(FramesToLabelCount(2, 255, 1800), 1800U);
  EXPECT_EQ(FramesToLabelCount(9, 1, 1800), 1800U);
  EXPECT_EQ(DropCount(4, 1, 216000), 216U);
  EXPECT_EQ(DropCount(1, 1, 216000), 0U);
  EXPECT_EQ(DropCount(9, 1, 216000), 0U);
  EXPECT_EQ(FramesPerSecond(5) + FramesPerHour(5) + FramesPerDay(5, 1), 0U);
}

TEST(FramesToTimecode, LeavesTheFieldsAloneForAnUnknownBase) {
  TimeFields fields{1, 2, 3, 4};
  EXPECT_EQ(FramesToTimecode(1000, 5, &fields), 0);
  EXPECT_EQ(fields, (TimeFields{1, 2, 3, 4}));
  EXPECT_EQ(FramesToTimecode(90000 * 25 + 1500 + 26, 1, &fields), 1);
  EXPECT_EQ(fields, (TimeFields{25, 1, 1, 1}));
}

TEST(TextToFrames, TakesTheLastEightDigits) {
  const struct {
    const char* text;
    std::int32_t count;
  } kCases[] = {
      {"01:00:00:00", 90000},
      {"01000000", 90000},
      {"1000000", 90000},
      {"9901000000", 90000},
      {"TC 01;00,00.00 \xFF", 90000},
      {"", 0},
      {"24", 24},
      {"25", kInvalidTimecode},
      {"47595924", 4319999},
      {"48000000", kInvalidTimecode},
      {"00600000", kInvalidTimecode},
      {"00006000", kInvalidTimecode},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(TextToFrames(1, 0, c.text), c.count) << c.text;
  EXPECT_EQ(TextToFrames(2, 1, "00:01:00.00"), 1800);
  EXPECT_EQ(TextToFrames(5, 0, "00000000"), kInvalidTimecode);
}

TEST(TimecodeAddSub, WrapsAtADay) {
  const struct {
    std::uint32_t fpsIndex;
    std::uint32_t dropFrame;
    TimeFields a;
    char operation;
    TimeFields b;
    std::int32_t count;
  } kCases[] = {
      {2, 0, {23, 59, 59, 29}, '+', {0, 0, 0, 1}, 0},
      {2, 1, {23, 59, 59, 29}, '+', {0, 0, 0, 1}, 0},
      {4, 1, {23, 59, 59, 59}, '+', {0, 0, 0, 2}, 1},
      {1, 0, {25, 0, 0, 0}, '+', {25, 0, 0, 0}, 26 * 90000},  // only one day comes off
      {1, 0, {1, 0, 0, 0}, '?', {1, 0, 0, 0}, 180000},        // all but '-' adds
      {1, 0, {0, 30, 0, 0}, '-', {1, 0, 0, 0}, 23 * 90000 + 30 * 1500},
      {2, 1, {0, 0, 0, 0}, '-', {0, 0, 0, 1}, 2589407},
      {1, 0, {26, 0, 0, 0}, '-', {1, 0, 0, 0}, 25 * 90000},
      {1, 0, {1, 0, 0, 0}, '-', {1, 0, 0, 0}, 0},
      {1, 0, {0, 0, 0, 0}, '-', {25, 0, 0, 0}, -90000},
  };
  for (const auto& c : kCases) {
    TIMECODE_CALC calc = Calc(c.fpsIndex, c.dropFrame, c.a, c.b);
    EXPECT_EQ(TimecodeAddSub(&calc, c.operation), 1);
    EXPECT_EQ(calc.resultFrames, c.count) << c.a[0] << c.operation << c.b[0];
  }
}

TEST(TimecodeAddSub, LeavesTheResultAloneWhenThereIsNone) {
  const struct {
    std::uint32_t fpsIndex;
    TimeFields a;
    char operation;
    TimeFields b;
  } kCases[] = {
      {1, {0, 60, 0, 0}, '+', {0, 0, 0, 0}},        {1, {0, 0, 0, 0}, '-', {0, 0, 0, 25}},
      {5, {0, 0, 0, 0}, '+', {0, 0, 0, 0}},         {5, {0, 0, 0, 0}, '-', {0, 0, 0, 0}},
      {1, {23860, 0, 0, 0}, '+', {23860, 0, 0, 0}},  // the sum does not fit
      {1, {23859, 0, 0, 0}, '-', {23860, 0, 0, 0}},  // nor does the day added to the first
  };
  for (const auto& c : kCases) {
    TIMECODE_CALC calc = Calc(c.fpsIndex, 0, c.a, c.b);
    calc.resultFrames = 77;
    EXPECT_EQ(TimecodeAddSub(&calc, c.operation), 0) << c.a[0] << c.operation << c.b[0];
    EXPECT_EQ(calc.resultFrames, 77);
  }
}

TEST(ShiftHours, MovesByWrittenHours) {
  const struct {
    std::uint32_t fpsIndex;
    std::uint32_t dropFrame;
    std::uint32_t count;
    std::uint32_t hours;
    char operation;
    std::int32_t shifted;
  } kCases[] = {
      {1, 0, 2115000, 1, '+', 45000},    // 23:30:00:00 to 00:30:00:00
      {1, 0, 134999, 1, '-', 44999},     // 01:29:59:24 to 00:29:59:24
      {1, 0, 2339999, 1, '-', 2249999},  // 25:59:59:24 to 24:59:59:24
      {2, 1, 0, 1, '+', 107892},
      {4, 1, 0, 1, '+', 215784},
      {2, 1, 1800, 1, '+', 109692},
      {2, 1, 2589407, 1, '+', 107891},
      {2, 1, 107891, 1, '-', 2589407},
      {1, 0, 12345, 1, 'x', 1},
      {9, 0, 12345, 1, 'x', 1},
      {9, 0, 12345, 1, '+', kInvalidTimecode},
      {1, 0, 0, kHighest, '+', kInvalidTimecode},
      {1, 0, kHighest - 1, 1, '+', kInvalidTimecode},  // an invalid count stays one
      {4, 1, kHighest, kHighest, '-', kInvalidTimecode},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(ShiftHours(c.fpsIndex, c.dropFrame, c.count, c.hours, c.operation), c.shifted)
        << c.count << c.operation << c.hours;
  }
}

TEST(FormatTimecode, WritesBothFormsWithinTheDestination) {
  EXPECT_EQ(Text(2, 1, 1800, kSeparated), u"00:01:00.02");
  EXPECT_EQ(Text(2, 1, 1799, kSeparated), u"00:00:59.29");
  EXPECT_EQ(Text(2, 255, 1800, kSeparated), u"00:01:00.00");
  EXPECT_EQ(Text(1, 0, 900001, kSeparated), u"10:00:00:01");
  EXPECT_EQ(Text(4, 1, 3600, kEightDigits), u"00010004");
  EXPECT_EQ(Text(1, 0, kHighest, kSeparated), u"47721:51:31:20");
  EXPECT_EQ(Text(1, 0, 900001, 2), u"untouched");
  EXPECT_EQ(Text(5, 0, 900001, kSeparated), u"untouched");
  EXPECT_EQ(Text(1, 0, 900001, kSeparated, 0), u"untouched");
  EXPECT_EQ(Text(1, 0, 900001, kSeparated, 6), u"10:00");
}

}  // namespace
}  // namespace quorvan
