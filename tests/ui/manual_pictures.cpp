// Takes the pictures of the manual from the running program, into the folder QUORVAN_SCREENSHOTS.

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "driver.h"
#include "platform/fault_seam.h"
#include "platform/text.h"
#include "state/window_state_info.h"
#include "support/wav_builder.h"

namespace quorvan::test {
namespace {

// The kind of system call that takes long, so that a picture of the running job can be taken, and
// how long it takes. kSystemCalls for none.
std::atomic<int> slowCall = platform::kSystemCalls;
std::atomic<std::chrono::microseconds> delay;

void SlowDown(platform::SystemCall call, std::chrono::microseconds time) {
  delay = time;
  slowCall = static_cast<int>(call);
  platform::SetFaultSeam([](platform::SystemCall made) {
    if (slowCall == static_cast<int>(made)) std::this_thread::sleep_for(delay.load());
    return platform::CallOutcome::kAsEver;
  });
}

constexpr std::uint64_t kMinute = 60 * 48000;  // samples

// Two minutes of news as it may come from the edit, with its sound from the mix.
ClipSpec News() {
  ClipSpec spec{.rate = Rate::k29_97,
                .dropFrame = true,
                .frames = 3600,
                .framesPerPartition = 300,
                .tracks = 8};
  return spec;
}

// A folder whose name may stand in the pictures.
const std::filesystem::path kFolder =
    (std::filesystem::temp_directory_path() / "ONAIR" / "NEWS1900").make_preferred();

std::u16string Write(const std::string& name, const Bytes& bytes) {
  const std::filesystem::path path = kFolder / platform::ToUtf16(name);
  EXPECT_TRUE(WriteBytes(path, bytes));
  return path.u16string();
}

std::u16string WriteWav(const std::string& name, std::uint16_t channels, std::uint32_t level) {
  WavSpec spec{.channels = channels,
               .sampleFrames = 2 * kMinute,
               .timeReference = std::uint64_t{10} * 60 * kMinute};
  spec.sample = [level](std::uint32_t channel, std::uint64_t index) {
    const auto noise = static_cast<std::uint32_t>((index + channel * 77) * 2654435761u) >> 8;
    return (static_cast<std::int32_t>(noise % level) - static_cast<std::int32_t>(level / 2));
  };
  return Write(name, BuildWav(spec).bytes);
}

// Waits until a running job says `text`, if it is not empty, and its bar has come to `percent`,
// then takes its picture.
Answer PhotographRunning(Driver* driver, const QString& name, const QString& text, int percent) {
  return [=](QWidget* dialog) {
    const auto says = [&] {
      const auto labels = dialog->findChildren<QLabel*>();
      return text.isEmpty() ||
             std::ranges::any_of(labels, [&](QLabel* label) { return label->text() == text; });
    };
    while (dialog->isVisible() &&
           !(says() && dialog->findChild<QProgressBar*>()->value() >= percent))
      QTest::qWait(1);
    driver->Photograph(name);
    slowCall = platform::kSystemCalls;
  };
}

Answer PhotographAndPress(Driver* driver, const QString& name, const QString& button) {
  return [=](QWidget* dialog) {
    driver->Photograph(name);
    Press({button})(dialog);
  };
}

TEST(Manual, TakesItsPictures) {
  ASSERT_FALSE(qEnvironmentVariableIsEmpty("QUORVAN_SCREENSHOTS")) << "set it to a folder";
  std::filesystem::create_directories(kFolder / "BWF");
  const std::u16string clip = Write("NEWS1900_HI.mxf", BuildClip(News()).bytes);
  const std::vector<std::u16string> sounds = {WriteWav("NEWS1900_完パケMIX.wav", 2, 1u << 20),
                                              WriteWav("NEWS1900_ナレーション.wav", 1, 1u << 18),
                                              WriteWav("NEWS1900_国際音声.wav", 2, 1u << 19)};

  Driver driver;
  APP_STATE_INFO& app = driver.App();
  driver.Photograph("start");
  driver.WhenRunning(PhotographRunning(
      &driver, "checking", "インデックステーブルとタイムコードを検証しています...", 40));
  SlowDown(platform::SystemCall::kCachedRead, std::chrono::microseconds(300));
  driver.Drop({clip});
  driver.Photograph("loaded");
  driver.Drop(sounds);
  driver.Photograph("library");
  driver.ClickRow(0);
  driver.Key(Qt::Key_C, Qt::ControlModifier);
  for (const auto& [track, row] : {std::pair<std::size_t, int>{2, 1}, {4, 2}}) {
    driver.ClickView(app.window->nameRect[track]);
    driver.Key(Qt::Key_T, Qt::ControlModifier);
    driver.ClickRow(row);
    driver.Key(Qt::Key_C, Qt::ControlModifier);
  }
  for (const std::size_t track : {0u, 2u, 3u})
    driver.ClickView(app.window->lampRect[track]);
  driver.Key(Qt::Key_I);
  driver.Type("10000500");
  driver.Photograph("entry");
  driver.Key(Qt::Key_Return);
  driver.Type("10014429");
  driver.Key(Qt::Key_Return);
  driver.Photograph("assigned");

  driver.Expect(PhotographAndPress(&driver, "confirm", "102"));
  driver.WhenRunning(
      PhotographRunning(&driver, "rewriting", "オーディオトラックを再ラップ中...", 40));
  SlowDown(platform::SystemCall::kGatheredWrite, std::chrono::microseconds(500));
  driver.Expect(PhotographAndPress(&driver, "done", "1"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);

  platform::CopyText(app.tracks->exportFolder, 1024, (kFolder / "BWF").u16string());
  driver.Expect([&](QWidget* dialog) {
    Press({"1056", "1016", "1017"})(dialog);
    driver.Settle();
    driver.Photograph("export");
    Press({"2"})(dialog);
  });
  driver.Key(Qt::Key_B, Qt::ControlModifier);

  driver.ClickView(app.window->nameRect[0]);
  driver.ClickView(app.window->nameRect[1], Qt::ShiftModifier);
  driver.Expect([&](QWidget* dialog) {
    driver.Click(driver.Find("1056", dialog));
    driver.Click(driver.Find("1052", dialog));
    driver.Photograph("loudness");
    driver.Click(driver.Find("2", dialog));
  });
  driver.Key(Qt::Key_L, Qt::ControlModifier);

  driver.Expect(PhotographAndPress(&driver, "settings", "2"));
  driver.Key(Qt::Key_E, Qt::ControlModifier);
  driver.Expect(PhotographAndPress(&driver, "information", "1"));
  driver.Key(Qt::Key_M, Qt::ControlModifier);
  driver.Key(Qt::Key_U, Qt::ControlModifier);

  ClipSpec broken = News();
  broken.frames = 300;
  broken.timecodeWords[200] = 0;
  driver.Expect(PhotographAndPress(&driver, "breaks", "7"));
  driver.Drop({Write("NEWS1900_HI.mxf", BuildClip(broken).bytes)});

  Clip cut = BuildClip(News());
  cut.bytes.resize(cut.layout.randomIndex.key);
  driver.Expect(Press({"1"}));
  driver.Expect(PhotographAndPress(&driver, "conform", "6"));
  driver.Expect([&](QWidget* dialog) {
    driver.WhenRunning(PhotographRunning(&driver, "conforming", "", 40));
    SlowDown(platform::SystemCall::kWrite, std::chrono::milliseconds(20));
    static_cast<QDialog*>(dialog)->accept();
  });
  driver.Expect(Press({"1"}));
  driver.Drop({Write("NEWS1900_LO.mxf", cut.bytes)});
  platform::SetFaultSeam(nullptr);
  std::filesystem::remove_all(kFolder);
}

}  // namespace
}  // namespace quorvan::test
