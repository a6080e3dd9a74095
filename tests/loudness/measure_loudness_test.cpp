#include "loudness/measure_loudness.h"

#include <ebur128.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>
#include <tuple>

#include "mxf/analysis.h"
#include "mxf/essence/audio_element.h"
#include "mxf/sample_pattern.h"
#include "platform/mapping.h"
#include "platform/text.h"
#include "support/loaded_clip.h"

namespace quorvan {
namespace {

using namespace test;

using Results = std::array<double, 3>;  // integrated, true peak, range

Results ResultsOf(const LoadedClip& clip) {
  const MXF_AUDIO_INFO& audio = clip.app.mxf.audio;
  return {audio.integratedLoudness, audio.truePeak, audio.loudnessRange};
}

std::int32_t Measure(LoadedClip& clip, std::initializer_list<std::uint32_t> tracks) {
  std::array<std::uint8_t, kMaxTracks> selected{};
  for (const std::uint32_t t : tracks)
    selected[t] = 1;
  return MeasureLoudness(clip.path.c_str(), &clip.app.tracks, clip.app.info.mxf, selected.data());
}

// A tone that swells from frame to frame, another one on each track; low byte first.
auto Swell(std::uint32_t width) {
  return [width](std::uint32_t track, std::uint32_t frame, std::uint32_t i) {
    const double phase = i / width * 0.05 * (track + 1);
    const double level = 0.02 + 0.9 * ((frame + 3 * track) % 40) / 40.0;
    const auto full = static_cast<double>(std::int64_t{1} << (8 * width - 1));
    const auto value = static_cast<std::int64_t>(std::sin(phase) * level * full);
    return static_cast<std::uint8_t>(value >> (8 * (i % width)));
  };
}

float SampleAt(const Bytes& bytes, std::uint64_t place, std::uint32_t width) {
  std::int64_t value = static_cast<std::int8_t>(bytes[place + width - 1]);
  for (std::uint32_t b = width - 1; b-- > 0;)
    value = value * 256 + bytes[place + b];
  return std::ldexp(static_cast<float>(value), 1 - 8 * static_cast<int>(width));
}

// The library fed in one go with two tracks of the range, kMaxTracks for silence, between five
// seconds of silence.
Results Reference(const LoadedClip& clip, std::uint32_t left, std::uint32_t right, std::uint32_t in,
                  std::uint32_t out) {
  std::vector<float> samples(5 * 48000 * 2);
  const std::uint32_t width = clip.spec.bits / 8;
  for (std::uint32_t f = in; f <= out; ++f) {
    const FramePlace& frame = clip.clip.layout.frames[f];
    for (std::uint32_t s = 0; s < frame.samples; ++s)
      for (const std::uint32_t track : {left, right})
        samples.push_back(
            track == kMaxTracks
                ? 0
                : SampleAt(clip.clip.bytes, frame.audio[track].value + s * width, width));
  }
  samples.resize(samples.size() + 5 * 48000 * 2);
  ebur128_state* state =
      ebur128_init(2, 48000, EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK);
  EXPECT_EQ(ebur128_add_frames_float(state, samples.data(), samples.size() / 2), 0);
  Results results{};
  double peaks[2] = {};
  EXPECT_EQ(ebur128_loudness_global(state, &results[0]), 0);
  EXPECT_EQ(ebur128_loudness_range(state, &results[2]), 0);
  EXPECT_EQ(ebur128_true_peak(state, 0, &peaks[0]) + ebur128_true_peak(state, 1, &peaks[1]), 0);
  const double peak = std::max(peaks[0], peaks[1]);
  results[1] = peak > 0 ? 20 * std::log10(peak) : -99.9;
  ebur128_destroy(&state);
  return results;
}

TEST(MeasureLoudness, FeedsTheLibraryTheSamplesOfTheRange) {
  using Case = std::tuple<Rate, std::uint32_t, std::uint32_t, std::uint32_t>;
  for (const auto& [rate, bits, in, out] :
       {Case{Rate::k25, 16, 7, 49}, {Rate::k29_97, 24, 3, 46}, {Rate::k59_94, 16, 9, 9}}) {
    ClipSpec spec{.rate = rate,
                  .frames = 50,
                  .framesPerPartition = 24,
                  .bits = bits,
                  .audio = Swell(bits / 8)};
    LoadedClip clip(spec);
    clip.SetRange(kLoudnessRange, in, out);
    SCOPED_TRACE(out);
    ASSERT_EQ(Measure(clip, {1, 3}), 0);
    EXPECT_EQ(ResultsOf(clip), Reference(clip, 1, 3, in, out));
    EXPECT_EQ(clip.app.tracks.currentFrame, out - in + 1);
    EXPECT_TRUE(clip.Now() == clip.clip.bytes);
  }
}

TEST(MeasureLoudness, MeasuresTheTwoLowestOfTheSelectedTracksOrSilence) {
  ClipSpec spec{.frames = 20, .audio = Swell(3)};
  LoadedClip clip(spec);
  ASSERT_EQ(Measure(clip, {0, 2, 3}), 0);
  EXPECT_EQ(ResultsOf(clip), Reference(clip, 0, 2, 0, 19));
  ASSERT_EQ(Measure(clip, {2}), 0);
  EXPECT_EQ(ResultsOf(clip), Reference(clip, 2, kMaxTracks, 0, 19));
  ASSERT_EQ(Measure(clip, {4, 23}), 0);  // tracks that the clip has not
  EXPECT_EQ(ResultsOf(clip), Reference(clip, kMaxTracks, kMaxTracks, 0, 19));
}

TEST(MeasureLoudness, LeavesTheResultsAloneWhenItFails) {
  LoadedClip clip{ClipSpec()};
  clip.app.mxf.audio.integratedLoudness = -23.5;
  const auto expect = [&](std::int32_t result, std::int32_t code) {
    EXPECT_EQ(result, code);
    EXPECT_EQ(clip.app.mxf.audio.integratedLoudness, -23.5);
    EXPECT_TRUE(platform::File::Open(clip.path, platform::OpenMode::kRewrite).IsOpen());
  };
  AUDIOTRACK_IO_INFO* tracks = &clip.app.tracks;
  MXF_BASE_INFO* mxf = &clip.app.mxf.base;
  const std::uint8_t none[kMaxTracks] = {};
  expect(MeasureLoudness(nullptr, tracks, mxf, none), 4001);
  expect(MeasureLoudness(clip.path.c_str(), nullptr, mxf, none), 4002);
  expect(MeasureLoudness(clip.path.c_str(), tracks, mxf, nullptr), 4002);
  expect(MeasureLoudness(clip.path.c_str(), tracks, nullptr, none), 4003);
  expect(MeasureLoudness(clip.folder.PathOf("none").c_str(), tracks, mxf, none), 4007);
  {
    const auto reader = platform::File::Open(clip.path, platform::OpenMode::kReadShared);
    EXPECT_EQ(Measure(clip, {0}), 4007);
  }
  for (const auto& [in, out] : {std::pair{5u, 4u}, {0u, 10u}, {~0u, 3u}}) {
    clip.SetRange(kLoudnessRange, in, out);
    expect(Measure(clip, {0}), 4005);
  }
  clip.SetRange(kLoudnessRange, 0, 9);
  INDEX_ENTRY_ARRAY& entry = (*clip.app.info.mxf->indexEntries)[6];
  const INDEX_ENTRY_ARRAY honest = entry;
  entry.audioSamples = kLargestFrameSamples + 1;
  expect(Measure(clip, {}), 4019);
  expect(Measure(clip, {0, 1}), 4019);
  entry = honest;
  entry.delta[kDeltasBeforeAudio + 1].elementDelta += 16;
  expect(Measure(clip, {1}), 4019);
  entry = honest;
  Bytes damaged = clip.clip.bytes;
  damaged[clip.clip.layout.frames[6].audio[1].key + 12] ^= 1;
  ASSERT_TRUE(WriteBytes(platform::ToUtf8(clip.path), damaged));
  expect(Measure(clip, {1}), 4019);
  std::filesystem::resize_file(platform::ToUtf8(clip.path), clip.clip.bytes.size() / 2);
  expect(Measure(clip, {0}), 4020);
  std::filesystem::resize_file(platform::ToUtf8(clip.path), 0);
  expect(Measure(clip, {0}), 4008);
  clip.app.mxf.timecode.rateIndex = 8;
  expect(Measure(clip, {0}), 4004);
}

TEST(MeasureLoudness, StopsWhenItIsCancelledAndSurvivesALostClip) {
  ClipSpec spec{.frames = 3000, .framesPerPartition = 1000, .tracks = 2};
  LoadedClip clip(spec);
  AUDIOTRACK_IO_INFO& tracks = clip.app.tracks;
  // Lost where the frame is walked, and where only the audio behind its key is gone.
  const std::uint64_t page = platform::MappingGranularity();
  std::uint64_t inside = 0;
  for (std::size_t frame = 900; inside == 0; ++frame) {
    const std::uint64_t value = clip.clip.layout.frames[frame].audio[1].value;
    const std::uint64_t next = (value / page + 1) * page;
    if (next < value + 1920 * 3) inside = next;
  }
  for (const std::uint64_t keep : {std::uint64_t{0}, inside, page}) {
    std::int32_t result = -1;
    tracks.currentFrame = 0;
    ASSERT_TRUE(WriteBytes(platform::ToUtf8(clip.path), clip.clip.bytes));
    std::thread worker([&] { result = Measure(clip, {0, 1}); });
    while (tracks.currentFrame < 10) {
    }
    // Where the system keeps the clip whole, the job is cancelled.
    const bool lost = keep != 0 && CutWhileOpen(clip.path, keep);
    if (!lost) tracks.cancel = 1;
    worker.join();
    EXPECT_EQ(result, lost ? 4000 + static_cast<std::int32_t>(kClipFault) : kCancelled);
    EXPECT_EQ(tracks.cancel, 0u);
    EXPECT_EQ(tracks.totalFrames, lost ? 3000u : 0u);
    EXPECT_EQ(clip.app.mxf.audio.integratedLoudness, 0.0);
  }
}

}  // namespace
}  // namespace quorvan
