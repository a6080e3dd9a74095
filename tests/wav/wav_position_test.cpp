#include <gtest/gtest.h>

#include <random>

#include "mxf/sample_pattern.h"
#include "wav/wav_header.h"

namespace quorvan {
namespace {

// fpsIndex that goes with a rateIndex.
constexpr std::uint32_t kBaseOfRate[kRateCount] = {0, 1, 2, 3, 4, 0, 2, 4};

WAV_HEADER_INFO Positioned(std::uint64_t start, std::uint32_t samples, std::uint32_t rateIndex,
                           std::uint32_t dropFrame = 0) {
  WAV_HEADER_INFO header{};
  header.hasBext = 1;
  header.timeReferenceLow = static_cast<std::uint32_t>(start);
  header.timeReferenceHigh = static_cast<std::uint32_t>(start >> 32);
  header.blockAlign = 1;
  header.dataChunkSize = samples;
  EXPECT_EQ(ComputeWavPosition(&header, rateIndex, kBaseOfRate[rateIndex], dropFrame), 1);
  return header;
}

struct Place {
  std::uint32_t frame, remainder, next;
};

// Frame by frame, as one would count on paper.
Place CountedPlace(std::uint32_t rateIndex, std::uint64_t samples) {
  std::uint64_t reached = SamplesInFrame(rateIndex, 0);
  std::uint32_t frame = 0;
  for (; reached < samples; ++frame)
    reached += SamplesInFrame(rateIndex, frame);
  const std::uint32_t next = SamplesInFrame(rateIndex, frame);
  const auto remainder = static_cast<std::uint32_t>(samples - reached + next);
  const bool whole = (rateIndex == 6 && remainder >= 1600 && remainder <= 1602) ||
                     (rateIndex == 7 && remainder >= 800 && remainder <= 801);
  return whole ? Place{frame + 1, 0, next} : Place{frame, remainder, next};
}

TEST(WavPosition, AgreesWithCountingFrameByFrame) {
  std::mt19937 random(7);
  for (std::uint32_t rate = 0; rate < kRateCount; ++rate) {
    for (int round = 0; round < 3000; ++round) {
      const std::uint32_t start = round < 2000 ? static_cast<std::uint32_t>(round * 5) % 8100
                                               : static_cast<std::uint32_t>(random()) % 5'000'000;
      const std::uint32_t samples = static_cast<std::uint32_t>(random()) % 20'000;
      const WAV_HEADER_INFO header = Positioned(start, samples, rate);
      const Place first = CountedPlace(rate, start);
      Place last = CountedPlace(rate, std::uint64_t{start} + samples);
      if (first.remainder > last.remainder)
        last = {last.frame - 1, last.next - last.remainder, last.next};
      ASSERT_EQ(header.startFrame, first.frame) << rate << ' ' << start;
      ASSERT_EQ(header.sampleRemainder[0], first.remainder) << rate << ' ' << start;
      ASSERT_EQ(header.endFrame, last.frame) << rate << ' ' << start << ' ' << samples;
      ASSERT_EQ(header.sampleRemainder[1], last.remainder) << rate << ' ' << start;
      ASSERT_EQ(header.durationFrames, last.frame - first.frame);
    }
  }
}

TEST(WavPosition, WrapsAtMidnightAndKeepsTheTrueLength) {
  constexpr std::uint64_t kHour = 48000ull * 3600;
  const WAV_HEADER_INFO late = Positioned(23 * kHour + kHour / 2 + 1, kHour, 1);
  EXPECT_EQ(late.startsInLastHour, 1u);
  EXPECT_EQ(late.startFrame, 25u * 3600 * 23 + 25 * 1800);
  EXPECT_EQ(late.endFrame, 25u * 1800);
  EXPECT_EQ(late.durationFrames, 25u * 3600);
  const WAV_HEADER_INFO nextDay = Positioned(25 * kHour + 1, 1920, 1);
  EXPECT_EQ(nextDay.startsInLastHour, 0u);
  EXPECT_EQ(nextDay.startFrame, 25u * 3600);
  EXPECT_EQ(nextDay.samplePosition[0], 25 * kHour + 1);
  // The written hour 23 of drop frame begins 23 x 107892 frames after midnight, 8008 samples five.
  const std::uint64_t dropHour = 23ull * 107892 * 8008 / 5;
  for (const int samples : {-4000, 4000}) {
    const std::uint64_t start = dropHour + static_cast<std::uint64_t>(samples);
    EXPECT_EQ(Positioned(start, 0, 6, 1).startsInLastHour, samples > 0 ? 1u : 0u);
  }
  const WAV_HEADER_INFO drop = Positioned(24 * kHour + 4000, 0, 6, 1);
  EXPECT_LT(drop.startFrame, 10u);
}

TEST(WavPosition, RefusesWhatItCannotDivideBy) {
  WAV_HEADER_INFO header{};
  EXPECT_EQ(ComputeWavPosition(&header, 1, 1, 0), 0);
  header.blockAlign = 2;
  EXPECT_EQ(ComputeWavPosition(&header, kRateCount, 1, 0), 0);
}

}  // namespace
}  // namespace quorvan
