// Measures the inner loops, each by itself.

#include <benchmark/benchmark.h>

#include <array>

#include "mxf/metadata/klv.h"
#include "platform/text.h"
#include "rewrite/source_blocks.h"
#include "state/window_state_info.h"
#include "support/clip_builder.h"
#include "support/temp_folder.h"
#include "timecode/timecode.h"

#ifdef QUORVAN_WINDOW
#include <QApplication>
#include <QImage>
#include <QPainter>

#include "job/worker.h"
#include "state/clip_state.h"
#include "ui/main/main_window.h"
#endif

namespace quorvan::bench {
namespace {

constexpr std::uint32_t kSamples = 1920;
constexpr std::uint32_t kFpsIndex60 = 4;
// Frames from one count to the next: an order that no cache can predict.
constexpr std::uint32_t kStep = 7919;

// Arguments: channels of the file, bytes of a sample in the file, bytes of a sample in the clip.
void DeInterleave(benchmark::State& state) {
  const auto channels = static_cast<std::uint16_t>(state.range(0));
  const auto sampleBytes = static_cast<std::uint16_t>(state.range(1));
  const auto width = static_cast<std::uint32_t>(state.range(2));
  WAV_FILE_INFO wav{};
  wav.channels = channels;
  wav.bytesPerChannelSample = sampleBytes;
  wav.blockAlign = static_cast<std::uint16_t>(channels * sampleBytes);
  const std::vector<std::uint8_t> source(std::size_t{kSamples} * wav.blockAlign, 0x5A);
  std::vector<std::uint8_t> target(std::size_t{kSamples} * width);
  for (auto _ : state) {
    for (std::uint32_t c = 0; c < channels; ++c) {
      FillChannel(wav, c, source.data(), kSamples, kSamples, width, target.data());
      benchmark::DoNotOptimize(target.data());
      benchmark::ClobberMemory();
    }
  }
  state.SetBytesProcessed(state.iterations() * channels * std::int64_t{kSamples} * width);
}
BENCHMARK(DeInterleave)
    ->ArgNames({"channels", "from", "to"})
    ->ArgsProduct({{1, 2, 4, 8}, {2}, {2, 3}})
    ->ArgsProduct({{1, 2, 4, 8}, {3}, {3}});

const test::Clip& SmallClip() {
  static const test::Clip clip = test::BuildClip({});
  return clip;
}

void SearchInHeader(benchmark::State& state) {
  const test::Clip& clip = SmallClip();
  std::uint64_t value = 0;
  std::uint64_t length = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(FindKlvKeyInBuffer(keys::kAvcSubDescriptor, clip.bytes.data(),
                                                clip.layout.headerByteCount, &value, &length));
  }
  state.SetBytesProcessed(state.iterations() *
                          static_cast<std::int64_t>(clip.layout.headerByteCount));
}
BENCHMARK(SearchInHeader);

void SearchInFile(benchmark::State& state) {
  const test::Clip& clip = SmallClip();
  const test::TempFolder folder;
  platform::File file =
      platform::File::Open(folder.Write("clip.mxf", clip.bytes), platform::OpenMode::kReadShared);
  std::uint64_t length = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        FindKlvKey(&file, keys::kAvcSubDescriptor, 0, clip.layout.headerByteCount, &length));
  }
}
BENCHMARK(SearchInFile);

// Measures `convert`, called with real counts from all over a day of 59.94 frames, drop frame.
template <typename Convert>
void OverTheDay(benchmark::State& state, Convert convert) {
  const std::uint32_t day = FramesPerDay(kFpsIndex60, 1);
  std::uint32_t count = 0;
  for (auto _ : state) {
    convert(count);
    count = (count + kStep) % day;
  }
}

void CountToFields(benchmark::State& state) {
  OverTheDay(state, [](std::uint32_t count) {
    TimeFields fields{};
    FramesToTimecode(FramesToLabelCount(kFpsIndex60, 1, count), kFpsIndex60, &fields);
    benchmark::DoNotOptimize(fields);
  });
}
BENCHMARK(CountToFields);

void FieldsToCount(benchmark::State& state) {
  OverTheDay(state, [](std::uint32_t count) {
    const TimeFields fields = {count % 24, count % 59, count % 58, 4 + count % 50};
    benchmark::DoNotOptimize(TimecodeToFrames(kFpsIndex60, 1, fields));
  });
}
BENCHMARK(FieldsToCount);

void CountToText(benchmark::State& state) {
  OverTheDay(state, [](std::uint32_t count) {
    std::array<char16_t, 16> text{};
    FormatTimecode(text.data(), text.size(), kFpsIndex60, 1, count, kSeparated);
    benchmark::DoNotOptimize(text);
  });
}
BENCHMARK(CountToText);

void TextToCount(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(TextToFrames(kFpsIndex60, 1, "10:59:58.57"));
}
BENCHMARK(TextToCount);

void ShiftByAnHour(benchmark::State& state) {
  OverTheDay(state, [](std::uint32_t count) {
    benchmark::DoNotOptimize(ShiftHours(kFpsIndex60, 1, count, 1, '+'));
  });
}
BENCHMARK(ShiftByAnHour);

#ifdef QUORVAN_WINDOW
// Measures a full repaint of the main window with kMaxTracks tracks.
void PaintTracks(benchmark::State& state) {
  test::ClipSpec spec;
  spec.tracks = kMaxTracks;
  const test::TempFolder folder;
  const std::u16string path = folder.Write("clip.mxf", test::BuildClip(spec).bytes);
  ui::MainWindow window;
  APP_STATE_INFO& app = window.State();
  app.mxfFile = platform::File::Open(path, platform::OpenMode::kReadAlone);
  platform::CopyText(app.mxfPath, kMxfPathChars, path);
  app.jobKind = kAnalysisJob;
  bool loaded = false;
  app.ui.progressDialog = [&](const JobReport& report) { loaded = report.message == JOB_MSG_DONE; };
  WorkerThread(&app);
  app.mxfFile.Close();
  if (!loaded) return state.SkipWithError("the clip is refused");
  EnterLoadedState(&app);
  window.resize(1280, 2000);
  window.show();
  QApplication::processEvents();
  auto* view = static_cast<ui::MainView*>(window.centralWidget());
  view->RefreshInfoPanel();
  view->LayOut();
  QImage image(view->size(), QImage::Format_ARGB32_Premultiplied);
  for (auto _ : state)
    view->render(&image);
  state.counters["rows"] = app.window->visibleRows;
}
BENCHMARK(PaintTracks)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
}  // namespace quorvan::bench

int main(int argc, char** argv) {
#ifdef QUORVAN_WINDOW
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
#endif
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
