#include "timecode/timecode.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <sstream>
#include <string>

#include "support/golden.h"

namespace quorvan {
namespace {

constexpr std::uint32_t kHighest = std::numeric_limits<std::uint32_t>::max();

// Reads the fields of a timecode, which stand one behind the other in a file of cases.
std::istream& operator>>(std::istream& in, TimeFields& fields) {
  return in >> fields[0] >> fields[1] >> fields[2] >> fields[3];
}

std::u16string Text(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::uint32_t count, int mode,
                    std::size_t size = 32) {
  char16_t buffer[32] = u"untouched";
  FormatTimecode(buffer, size, fpsIndex, dropFrame, count, mode);
  return buffer;
}

TEST(TimecodeToFrames, CountsFieldsByBaseAndDropFrame) {
  test::ForEachGoldenLine("timecode/golden/frames.txt", [](auto& cells) {
    std::uint32_t fpsIndex = 0, dropFrame = 0;
    TimeFields fields{};
    std::int32_t count = 0;
    cells >> fpsIndex >> dropFrame >> fields >> count;
    EXPECT_EQ(TimecodeToFrames(fpsIndex, dropFrame, fields), count);
  });
}

// Counts the labels one by one, skipping the dropped ones, so that nothing of the formulas is used.
TEST(FramesToLabelCount, NamesEveryFrameOfADayAndBackUnderDropFrame) {
  for (const std::uint32_t fpsIndex : {2U, 4U}) {
    const std::uint32_t dropped = fpsIndex == 2 ? 2 : 4;
    std::uint32_t count = 0;
    TimeFields written{}, fields{};
    auto& [h, m, s, f] = written;
    for (h = 0; h < 24; ++h)
      for (m = 0; m < 60; ++m)
        for (s = 0; s < 60; ++s)
          for (f = s == 0 && m % 10 != 0 ? dropped : 0; f < FramesPerSecond(fpsIndex);
               ++f, ++count) {
            FramesToTimecode(FramesToLabelCount(fpsIndex, 1, count), fpsIndex, &fields);
            ASSERT_EQ(fields, written) << count;
            ASSERT_EQ(TimecodeToFrames(fpsIndex, 1, fields), static_cast<std::int32_t>(count));
          }
    EXPECT_EQ(count, FramesPerDay(fpsIndex, 1));
  }
}

TEST(FramesToLabelCount, StaysInRangeForAnyCount) {
  EXPECT_EQ(FramesToLabelCount(2, 1, kHighest), kHighest);
  EXPECT_EQ(FramesToLabelCount(2, 255, 1800), 1800U);
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
  test::ForEachGoldenLine("timecode/golden/texts.txt", [](auto& cells) {
    std::uint32_t fpsIndex = 0, dropFrame = 0;
    std::int32_t count = 0;
    std::string text;
    std::getline(cells >> fpsIndex >> dropFrame >> count >> std::ws, text);
    EXPECT_EQ(TextToFrames(fpsIndex, dropFrame, text.c_str()), count);
  });
}

// The last cell tells the frames of the result, or that there is none; it then stays as it was.
TEST(TimecodeAddSub, WrapsAtADayAndLeavesTheResultAloneWhenThereIsNone) {
  test::ForEachGoldenLine("timecode/golden/sums.txt", [](auto& cells) {
    TIMECODE_CALC calc{0, 0, {}, {}, 0, 0, 77};
    char operation = 0;
    std::int32_t count = 0;
    cells >> calc.fpsIndex >> calc.dropFrame >> calc.a >> operation >> calc.b >> count;
    const bool done = count != kInvalidTimecode;
    EXPECT_EQ(TimecodeAddSub(&calc, operation), done ? 1 : 0);
    EXPECT_EQ(calc.resultFrames, done ? count : 77);
  });
}

TEST(ShiftHours, MovesByWrittenHours) {
  test::ForEachGoldenLine("timecode/golden/shifts.txt", [](auto& cells) {
    std::uint32_t fpsIndex = 0, dropFrame = 0, count = 0, hours = 0;
    char operation = 0;
    std::int32_t shifted = 0;
    cells >> fpsIndex >> dropFrame >> count >> operation >> hours >> shifted;
    EXPECT_EQ(ShiftHours(fpsIndex, dropFrame, count, hours, operation), shifted);
  });
}

TEST(FormatTimecode, WritesBothFormsWithinTheDestination) {
  EXPECT_EQ(Text(2, 1, 1800, kSeparated), u"00:01:00.02");
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
