// Audio samples per video frame. At 30000/1001 and 60000/1001 frames a second a frame does not last
// a whole number of samples, so the number of samples changes in a pattern of five frames.

#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace quorvan {

inline constexpr std::uint32_t kSampleRate = 48000;  // Hz
inline constexpr std::uint32_t kRateCount = 8;       // rows of the table
inline constexpr std::uint32_t kPatternFrames = 5;   // frames after which the pattern repeats

// Samples of one track at 48 kHz. The row is rateIndex, the column is the frame number modulo 5.
inline constexpr std::uint32_t kSamplePattern[kRateCount][kPatternFrames] = {
    {2000, 2000, 2000, 2000, 2000},  // 24
    {1920, 1920, 1920, 1920, 1920},  // 25
    {1600, 1600, 1600, 1600, 1600},  // 30
    {960, 960, 960, 960, 960},       // 50
    {800, 800, 800, 800, 800},       // 60
    {2002, 2002, 2002, 2002, 2002},  // 24000/1001
    {1602, 1601, 1602, 1601, 1602},  // 30000/1001
    {801, 801, 800, 801, 801},       // 60000/1001
};

// Largest number of samples of one track in a frame.
inline constexpr std::uint32_t kLargestFrameSamples = [] {
  std::uint32_t largest = 0;
  for (const auto& row : kSamplePattern) {
    for (const std::uint32_t samples : row)
      largest = std::max(largest, samples);
  }
  return largest;
}();

// True when at one of the rates the first frame of a clip holds `samples` samples of one track.
constexpr bool CanBeFirstFrame(std::uint64_t samples) {
  return std::any_of(std::begin(kSamplePattern), std::end(kSamplePattern),
                     [=](const auto& row) { return row[0] == samples; });
}

// Number of samples of one track in the frame with the zero-based number `frame`. `rateIndex` must
// be below kRateCount.
constexpr std::uint32_t SamplesInFrame(std::uint32_t rateIndex, std::uint64_t frame) {
  return kSamplePattern[rateIndex][frame % kPatternFrames];
}

}  // namespace quorvan
