// Timecode arithmetic: frame counts to and from hours, minutes, seconds and frames, with and
// without drop frame (SMPTE 12M). Pure integer arithmetic, no state.
//
// A real count is the number of frames from 00:00:00:00. A label count is the number of labels from
// 00:00:00:00: the real count plus the labels that drop frame has skipped up to there. `fpsIndex`
// is the row of the base table, 0 to 4 for 24, 25, 30, 50 and 60 frames a second. Drop frame
// applies only when `fpsIndex` is 2 or 4 and `dropFrame` is exactly 1. No function throws.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quorvan {

// Returned by a conversion whose time fields or result are out of range.
inline constexpr std::int32_t kInvalidTimecode = -2;

// Number of rows of the base table.
inline constexpr std::uint32_t kTimecodeBases = 5;

// Hours, minutes, seconds and frames of a timecode, in this order. Hours may be above 23 in
// intermediate values.
using TimeFields = std::array<std::uint32_t, 4>;

// The operands and results of TimecodeAddSub.
struct TIMECODE_CALC {
  std::uint32_t fpsIndex;
  std::uint32_t dropFrame;
  TimeFields a;               // first operand
  TimeFields b;               // second operand
  std::int32_t aFrames;       // real count of a
  std::int32_t bFrames;       // real count of b
  std::int32_t resultFrames;  // real count of the result
};

// Labels in an hour without drop frame; 0 for an `fpsIndex` above 4.
std::uint32_t FramesPerHour(std::uint32_t fpsIndex);

// Labels in a second without drop frame; 0 for an `fpsIndex` above 4.
std::uint32_t FramesPerSecond(std::uint32_t fpsIndex);

// Real frames in a timecode day of 24 hours, fewer with drop frame; 0 for an `fpsIndex` above 4.
std::uint32_t FramesPerDay(std::uint32_t fpsIndex, std::uint32_t dropFrame);

// The real count of the timecode `fields`. kInvalidTimecode when minutes or seconds are 60 or more,
// frames are not below the base, `fpsIndex` is above 4, or the count does not fit 31 bits. Hours
// have no limit of their own. A dropped label counts as the first valid frame of its minute.
std::int32_t TimecodeToFrames(std::uint32_t fpsIndex, std::uint32_t dropFrame,
                              const TimeFields& fields);

// The real count of a timecode text. Its last eight decimal digits are the pairs of hours, minutes,
// seconds and frames; all other characters are ignored, and missing digits on the left count as 0.
// kInvalidTimecode when hours are above 47 or TimecodeToFrames refuses the fields.
std::int32_t TextToFrames(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::string_view text);

// Splits a label count into `*fields`. Returns 1; or 0, with `*fields` unchanged, when `fpsIndex`
// is above 4 or `fields` is null.
int FramesToTimecode(std::uint32_t labelCount, std::uint32_t fpsIndex, TimeFields* fields);

// Number of labels that drop frame skips from 00:00:00:00 up to the label count `count`; 0 for an
// `fpsIndex` above 4.
std::uint32_t DropCount(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::uint32_t count);

// The label count of the real count `count`: exact for every count within 24 hours, the largest
// 32-bit number when it does not fit, `count` itself for an `fpsIndex` above 4.
std::uint32_t FramesToLabelCount(std::uint32_t fpsIndex, std::uint32_t dropFrame,
                                 std::uint32_t count);

// Subtracts `calc->b` from `calc->a` for the operator '-', adds both for any other operator, and
// wraps once at 24 hours. A subtraction whose result would be negative first adds 24 to the hours
// of `calc->a`, also in the record. Returns 1 with aFrames, bFrames and resultFrames filled; or 0,
// with resultFrames unchanged, when `calc` is null, an operand is invalid or a sum does not fit 31
// bits.
int TimecodeAddSub(TIMECODE_CALC* calc, char operation);

// The real count of the timecode of `count` plus (operator '+') or minus (operator '-') the
// timecode `hours`:00:00:00, as TimecodeAddSub calculates it. kInvalidTimecode when TimecodeAddSub
// returns 0; 1 for any other operator.
std::int32_t ShiftHours(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::uint32_t count,
                        std::uint32_t hours, char operation);

// Forms of a timecode text. Hours of 100 and above have as many digits as they need.
enum TimecodeTextMode : int {
  kSeparated = 0,    // 01:02:03:04, with "." before the frames when dropFrame is not 0
  kEightDigits = 1,  // 01020304
};

// Writes the timecode of the real count `count` into `destination`, an array of `size` char16_t, in
// the form `mode` (a TimecodeTextMode). The text is cut to `size` - 1 characters and terminated
// with a zero. Writes nothing for another mode, an `fpsIndex` above 4, a null `destination` or a
// `size` of 0.
void FormatTimecode(char16_t* destination, std::size_t size, std::uint32_t fpsIndex,
                    std::uint32_t dropFrame, std::uint32_t count, int mode);

}  // namespace quorvan
