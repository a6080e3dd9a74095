// What the tests of the window begin with.

#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "driver.h"
#include "platform/fault_seam.h"
#include "platform/text.h"
#include "state/window_state_info.h"
#include "support/wav_builder.h"

namespace quorvan::test {

// A clip and three files beside it, and the window.
struct Stage {
  explicit Stage(const ClipSpec& spec = ClipSpec())
      : clip(BuildClip(spec)), path(folder.Write("clip.mxf", clip.bytes)) {
    const std::tuple<const char*, std::uint16_t, std::uint16_t> files[] = {
        {"b_mono.wav", 1, 24}, {"a_stereo.wav", 2, 24}, {"c_narrow.wav", 1, 16}};
    for (const auto& [name, channels, bits] : files) {
      WavSpec wav{.channels = channels, .bits = bits, .sampleFrames = 96000};
      wavs.push_back(folder.Write(name, BuildWav(wav).bytes));
    }
  }
  bool IsUntouched() const { return ReadAll(path) == clip.bytes; }
  std::string Text(const char* name) const {
    const Bytes bytes = ReadAll(folder.Path() / name);
    return {bytes.begin(), bytes.end()};
  }
  // A folder for new files, which the export takes.
  void MakeExportFolder() {
    std::filesystem::create_directory(folder.Path() / "out");
    platform::CopyText(app.tracks->exportFolder, 1024, folder.PathOf("out"));
  }

  TempFolder folder;
  Clip clip;
  std::u16string path;
  std::vector<std::u16string> wavs;
  Driver driver;
  APP_STATE_INFO& app = driver.App();
  WINDOW_STATE_INFO& window = *app.window;
};

// The same with the clip loaded.
struct LoadedStage : Stage {
  explicit LoadedStage(const ClipSpec& spec = ClipSpec()) : Stage(spec) {
    driver.Drop({path});
    EXPECT_EQ(app.mxfLoaded, 1);
  }
};

// Where a job waits until the operator has done something: at each call of the kind while there is
// no counter or it counts. Cached reads are plain reads where the system does not tell them apart.
inline std::atomic<bool> goesOn = true;
inline platform::SystemCall chosenCall;
inline const std::atomic<std::uint32_t>* counter = nullptr;

inline void HoldJobAt(platform::SystemCall call, const std::atomic<std::uint32_t>* counts) {
  chosenCall = call;
  counter = counts;
  goesOn = false;
  platform::SetFaultSeam([](platform::SystemCall made) {
    const bool plain = chosenCall == platform::SystemCall::kCachedRead;
    const bool chosen = made == chosenCall || (plain && made == platform::SystemCall::kRead);
    while (chosen && !goesOn && (counter == nullptr || *counter != 0))
      std::this_thread::yield();
    return platform::CallOutcome::kAsEver;
  });
}

}  // namespace quorvan::test
