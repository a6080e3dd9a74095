// A built clip in a folder of its own, loaded as the program loads one.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "mxf/analysis.h"
#include "state/clip_state.h"
#include "state/frame_range.h"
#include "support/clip_builder.h"
#include "support/temp_folder.h"

namespace quorvan::test {

// A clip of small frames, long enough for another thread to step in while it is worked on.
inline ClipSpec LongClip(std::uint32_t frames = 20000) {
  ClipSpec spec;
  spec.rate = Rate::k60;
  spec.bits = 16;
  spec.tracks = 1;
  spec.frames = frames;
  spec.framesPerPartition = 4000;
  spec.pictureSize = 32;
  spec.pictureStep = 0;
  spec.kagSize = spec.elementKag = 256;
  return spec;
}

struct LoadedClip {
  explicit LoadedClip(const ClipSpec& description)
      : LoadedClip(description, BuildClip(description)) {}

  // With `file` in place of the built bytes, for a copy that lays them out anew.
  LoadedClip(const ClipSpec& description, Clip built, const Bytes* file = nullptr)
      : clip(std::move(built)),
        spec(description),
        path(folder.Write("clip.mxf", file == nullptr ? clip.bytes : *file)) {
    Load();
    for (const RangeFields& range : {kRewrapRange, kExportRange, kLoudnessRange}) {
      app.tracks.*range.in = FirstFramePoint(app.mxf.timecode);
      app.tracks.*range.out = LastFramePoint(app.mxf.timecode);
    }
    app.info.mxfPath[path.copy(app.info.mxfPath, kMxfPathChars - 1)] = 0;
  }

  // Analyses the file as it is now.
  void Load() {
    platform::File file = platform::File::Open(path, platform::OpenMode::kReadAlone);
    analysis = AnalyzeMxfFile(&file, app.info.mxf);
    EXPECT_EQ(analysis, 0);
    if (analysis == 0) EnterLoadedState(&app.info);
  }

  // Frames from 0, both included; the whole clip when not called.
  void SetRange(const RangeFields& range, std::uint32_t in, std::uint32_t out) {
    const std::uint32_t start = app.mxf.timecode.startFrames;
    app.tracks.*range.in = MakeFramePoint(app.mxf.timecode, static_cast<std::int32_t>(start + in));
    app.tracks.*range.out =
        MakeFramePoint(app.mxf.timecode, static_cast<std::int32_t>(start + out));
  }

  Bytes Now() const { return ReadAll(path); }

  TempFolder folder;
  Clip clip;
  ClipSpec spec;
  std::u16string path;
  AppState app;
  std::int32_t analysis = 0;
};

}  // namespace quorvan::test
