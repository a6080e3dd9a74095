// Takes the pictures of the manual from the running program, into the folder QUORVAN_SCREENSHOTS.

#include <gtest/gtest.h>

#include <QApplication>
#include <QProgressBar>
#include <QTest>

#include "driver.h"
#include "platform/text.h"
#include "state/window_state_info.h"
#include "support/wav_builder.h"
#include "ui/main/theme.h"

namespace quorvan::test {
namespace {

constexpr std::uint64_t kMinute = 60 * 48000;  // samples

// Two minutes of news as it may come from the edit, with its sound from the mix.
ClipSpec News() {
  ClipSpec spec;
  spec.rate = Rate::k29_97;
  spec.dropFrame = true;
  spec.frames = 3600;
  spec.framesPerPartition = 300;
  spec.tracks = 8;
  return spec;
}

// A folder whose name may stand in the pictures.
class Folder {
 public:
  Folder() { std::filesystem::create_directories(path_); }
  ~Folder() { std::filesystem::remove_all(path_); }
  std::u16string PathOf(const std::string& name) const {
    return platform::ToUtf16((path_ / name).string());
  }
  std::u16string Write(const std::string& name, const Bytes& bytes) const {
    if (!WriteBytes(path_ / name, bytes)) std::abort();
    return PathOf(name);
  }

 private:
  std::filesystem::path path_ = std::filesystem::temp_directory_path() / "ONAIR" / "NEWS1900";
};

std::u16string WriteWav(const Folder& folder, const std::string& name, std::uint16_t channels,
                        std::uint32_t level) {
  WavSpec spec;
  spec.channels = channels;
  spec.sampleFrames = 2 * kMinute;
  spec.timeReference = std::uint64_t{10} * 60 * kMinute;
  spec.sample = [level](std::uint32_t channel, std::uint64_t index) {
    const auto noise = static_cast<std::uint32_t>((index + channel * 77) * 2654435761u) >> 8;
    return (static_cast<std::int32_t>(noise % level) - static_cast<std::int32_t>(level / 2));
  };
  return folder.Write(name, BuildWav(spec).bytes);
}

// Waits until the bar of a running job has moved, then takes its picture.
Answer PhotographRunning(Driver* driver, const QString& name) {
  return [=](QWidget* dialog) {
    while (dialog->isVisible() && dialog->findChild<QProgressBar*>()->value() == 0)
      QTest::qWait(1);
    driver->Photograph(name);
  };
}

Answer PhotographAndPress(Driver* driver, const QString& name, const QString& button) {
  return [=](QWidget* dialog) {
    driver->Photograph(name);
    Press(button)(dialog);
  };
}

void TakePictures() {
  const Folder folder;
  const std::u16string clip = folder.Write("NEWS1900_HI.mxf", BuildClip(News()).bytes);
  const std::vector<std::u16string> sounds = {
      WriteWav(folder, "NEWS1900_完パケMIX.wav", 2, 1u << 20),
      WriteWav(folder, "NEWS1900_ナレーション.wav", 1, 1u << 18),
      WriteWav(folder, "NEWS1900_国際音声.wav", 2, 1u << 19)};

  Driver driver(QSize(1280, 720));
  APP_STATE_INFO& app = driver.App();
  driver.Photograph("start");
  driver.WhenRunning(PhotographRunning(&driver, "analysis"));
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
  driver.Expect(PhotographAndPress(&driver, "done", "1"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);

  std::filesystem::create_directory(platform::ToUtf8(folder.PathOf("BWF")));
  platform::CopyText(app.tracks->exportFolder, 1024, folder.PathOf("BWF"));
  driver.Expect([&](QWidget* dialog) {
    driver.Click(driver.Find("1056", dialog));
    for (const char* track : {"1016", "1017"})
      driver.Click(driver.Find(track, dialog));
    driver.Photograph("export");
    driver.Click(driver.Find("2", dialog));
  });
  driver.Key(Qt::Key_B, Qt::ControlModifier);

  driver.ClickView(app.window->nameRect[0]);
  driver.ClickView(app.window->nameRect[1], Qt::ShiftModifier);
  driver.Expect([&](QWidget* dialog) {
    driver.Click(driver.Find("1056", dialog));
    driver.WhenRunning(PhotographRunning(&driver, "measuring"));
    driver.Click(driver.Find("1052", dialog));
    driver.Photograph("loudness");
    driver.Click(driver.Find("2", dialog));
  });
  driver.Key(Qt::Key_L, Qt::ControlModifier);

  driver.Expect(PhotographAndPress(&driver, "settings", "2"));
  driver.Key(Qt::Key_E, Qt::ControlModifier);
  driver.Expect(PhotographAndPress(&driver, "information", "1"));
  driver.Key(Qt::Key_M, Qt::ControlModifier);
  driver.Expect(PhotographAndPress(&driver, "about", "1"));
  driver.Key(Qt::Key_H, Qt::ControlModifier);
  driver.Key(Qt::Key_U, Qt::ControlModifier);

  ClipSpec broken = News();
  broken.frames = 300;
  broken.timecodeWords[200] = 0;
  driver.Expect(PhotographAndPress(&driver, "breaks", "7"));
  driver.Drop({folder.Write("NEWS1900_HI.mxf", BuildClip(broken).bytes)});
}

}  // namespace
}  // namespace quorvan::test

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QUORVAN_SCREENSHOTS")) {
    std::fprintf(stderr, "manual_pictures: set QUORVAN_SCREENSHOTS to a folder\n");
    return 2;
  }
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  quorvan::ui::DressApplication();
  ::testing::InitGoogleTest(&argc, argv);  // the driver reports what it misses through it
  quorvan::test::TakePictures();
  return ::testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed() ? 1 : 0;
}
