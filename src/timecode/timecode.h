// Timecode arithmetic: frame counts to and from hours, minutes, seconds and frames, with and
// without drop frame (SMPTE 12M). Pure integer arithmetic, no state.
//
// A real count is the number of frames from 00:00:00:00. A label count is the real count plus the
// labels that drop frame has skipped up to there. Drop frame applies only when `fpsIndex` is 2 or 4
// and `dropFrame` is exactly 1.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quorvan {

// Result of a conversion whose time fields are out of range.
inline constexpr std::int32_t kInvalidTimecode = -2;

// Rows of the timecode base table: 24, 25, 30, 50, 60.
inline constexpr std::uint32_t kTimecodeBases = 5;

// Hours, minutes, seconds, frames. Hours may stand above 23 in intermediate values.
using TimeFields = std::array<std::uint32_t, 4>;

struct TIMECODE_CALC {
  std::uint32_t fpsIndex;
  std::uint32_t dropFrame;
  TimeFields a;  // first operand
  TimeFields b;  // second operand
  std::int32_t aFrames;
  std::int32_t bFrames;
  std::int32_t resultFrames;
};

// Nominal frames of an hour, a second and a day at `fpsIndex`; 0 for an `fpsIndex` above 4. The day
// is counted in real frames, so `dropFrame` matters for it.
std::uint32_t FramesPerHour(std::uint32_t fpsIndex);
std::uint32_t FramesPerSecond(std::uint32_t fpsIndex);
std::uint32_t FramesPerDay(std::uint32_t fpsIndex, std::uint32_t dropFrame);

// Real count of the time fields, or kInvalidTimecode when minutes or seconds are 60 or more, frames
// are above the base, `fpsIndex` is above 4, or the count does not fit 31 bits. Hours are not
// limited. A dropped label reads as the first valid frame of its minute.
std::int32_t TimecodeToFrames(std::uint32_t fpsIndex, std::uint32_t dropFrame,
                              const TimeFields& fields);

// Real count of a timecode text: the last eight decimal digits count, whatever stands between them,
// missing ones on the left as 0. kInvalidTimecode when hours are above 47 or another pair is out of
// its range.
std::int32_t TextToFrames(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::string_view text);

// Splits a label count into time fields. Returns 1, or 0 for an `fpsIndex` above 4, and then leaves
// `fields` alone.
int FramesToTimecode(std::uint32_t labelCount, std::uint32_t fpsIndex, TimeFields* fields);

// Labels that drop frame skips up to `count`.
std::uint32_t DropCount(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::uint32_t count);

// Label count of a real count; exact for every count within 24 hours.
std::uint32_t FramesToLabelCount(std::uint32_t fpsIndex, std::uint32_t dropFrame,
                                 std::uint32_t count);

// Adds `calc->b` to `calc->a`, or subtracts it for the operator '-', and wraps at 24 hours. A
// subtraction that would go below zero adds 24 to a's hours in the record. Returns 1 with
// `resultFrames` filled, or 0 when an operand is invalid, and then leaves `resultFrames` alone.
int TimecodeAddSub(TIMECODE_CALC* calc, char operation);

// The real count moved by whole written hours, '+' or '-', wrapped at 24 hours; 1 for any other
// operator.
std::int32_t ShiftHours(std::uint32_t fpsIndex, std::uint32_t dropFrame, std::uint32_t count,
                        std::uint32_t hours, char operation);

enum TimecodeTextMode : int {
  kSeparated = 0,    // 01:02:03:04, with "." before the frames when dropFrame is not 0
  kEightDigits = 1,  // 01020304
};

// Writes the timecode of a real count into `destination`, zero terminated and within `size`
// characters. Another mode or an `fpsIndex` above 4 writes nothing.
void FormatTimecode(char16_t* destination, std::size_t size, std::uint32_t fpsIndex,
                    std::uint32_t dropFrame, std::uint32_t count, int mode);

}  // namespace quorvan
