#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <numeric>
#include <thread>

#include "export/bwf_header.h"
#include "export/export_file_io.h"
#include "export/export_mapped.h"
#include "platform/text.h"
#include "support/loaded_clip.h"

namespace quorvan {
namespace {

using namespace test;

void PutText(std::u16string_view text, char16_t* field) {
  field[text.copy(field, 1000)] = 0;
}

std::uint64_t Little(const Bytes& bytes, std::size_t place, std::size_t count) {
  std::uint64_t value = 0;
  for (std::size_t b = 0; b < count; ++b)
    value |= std::uint64_t{bytes[place + b]} << (8 * b);
  return value;
}

// Every test runs with both engines; what is said of codes is said of the mapped one.
class Export : public ::testing::TestWithParam<bool> {
 protected:
  std::int32_t Run(LoadedClip& clip) {
    return (GetParam() ? ExportFileIo : ExportMapped)(clip.path.c_str(), &clip.app.tracks,
                                                      clip.app.info.mxf);
  }
  std::int32_t Code(std::int32_t mapped) const {
    if (!GetParam()) return mapped;
    return mapped == 4006 ? 5007 : mapped + 1000;
  }
};
INSTANTIATE_TEST_SUITE_P(Engines, Export, ::testing::Bool(), [](const auto& engine) {
  return std::string(engine.param ? "FileIo" : "Mapped");
});

void SwitchOn(LoadedClip& clip, std::initializer_list<std::uint32_t> tracks) {
  std::filesystem::create_directory(clip.folder.Path() / "out");
  PutText(clip.folder.PathOf("out"), clip.app.tracks.exportFolder);
  PutText(u"Track-", clip.app.tracks.exportName);
  for (const std::uint32_t t : tracks)
    clip.app.tracks.exportSwitch[t] = kSwitchOn;
}

Bytes File(const LoadedClip& clip, const std::string& name) {
  return ReadAll(clip.folder.Path() / "out" / name);
}

std::size_t Files(const LoadedClip& clip) {
  const std::filesystem::directory_iterator files(clip.folder.Path() / "out");
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

// The audio of one track in the clip as it was built.
Bytes Audio(const LoadedClip& clip, std::uint32_t track, std::uint32_t in, std::uint32_t out) {
  Bytes audio;
  for (std::uint32_t f = in; f <= out; ++f) {
    const KlvPlace& value = clip.clip.layout.frames[f].audio[track];
    const auto from = clip.clip.bytes.begin() + static_cast<long>(value.value);
    const auto bytes = clip.clip.layout.frames[f].samples * clip.clip.layout.blockAlign;
    audio.insert(audio.end(), from, from + bytes);
  }
  return audio;
}

std::uint64_t SamplesSinceMidnight(const LoadedClip& clip, std::uint32_t frame) {
  std::uint64_t samples = 0;
  for (std::uint32_t f = 0; f < clip.clip.layout.startFrames + frame; ++f)
    samples += SamplesOfFrame(clip.spec.rate, f);
  return samples;
}

TEST_P(Export, WritesTheSamplesOfEachTrackAtEveryRate) {
  for (const Rate rate : {Rate::k24, Rate::k25, Rate::k30, Rate::k50, Rate::k60, Rate::k23_98,
                          Rate::k29_97, Rate::k59_94}) {
    const bool is16 = rate == Rate::k25 || rate == Rate::k29_97;
    ClipSpec spec;
    spec.rate = rate;
    spec.bits = is16 ? 16 : 24;
    spec.dropFrame = true;
    spec.start = {23, 59, 59, 10};
    spec.frames = 17;
    spec.dataTrack = spec.dataElement = rate == Rate::k30;
    LoadedClip clip(spec);
    SwitchOn(clip, {0, 3});
    clip.app.tracks.exportSwitch[1] = kNoSuchTrack;
    clip.SetRange(kExportRange, 3, 13);
    SCOPED_TRACE(static_cast<int>(rate));
    ASSERT_EQ(Run(clip), 0);
    EXPECT_EQ(Files(clip), 2u);
    EXPECT_EQ(clip.app.tracks.totalFrames, 11u);
    EXPECT_EQ(clip.app.tracks.currentFrame, 10u);
    for (const std::uint32_t t : {0u, 3u}) {
      const Bytes file = File(clip, "Track-" + std::to_string(t + 1) + ".wav");
      const Bytes audio = Audio(clip, t, 3, 13);
      ASSERT_EQ(file.size(), kBwfHeaderBytes + audio.size());
      EXPECT_TRUE(Bytes(file.begin() + kBwfHeaderBytes, file.end()) == audio) << t;
      EXPECT_EQ(Little(file, 4, 4), file.size() - 8);
      EXPECT_EQ(Little(file, 710, 4), audio.size());
      EXPECT_EQ(Little(file, 70, 2), spec.bits);
      EXPECT_EQ(Little(file, 442, 8), SamplesSinceMidnight(clip, 3));
      EXPECT_EQ(Little(file, 72, 2), GetParam() ? 0u : 22u);
    }
    EXPECT_TRUE(clip.Now() == clip.clip.bytes);
  }
}

TEST_P(Export, WritesAnyRangeAndShape) {
  std::vector<ClipSpec> shapes(4);
  shapes[0].tracks = 1;
  shapes[1].tracks = 24;
  shapes[2].sliceCount = 0;
  shapes[3].elementKag = 0;
  const std::pair<std::uint32_t, std::uint32_t> ranges[] = {{0, 0}, {9, 9}, {4, 5}, {0, 9}};
  for (const ClipSpec& spec : shapes) {
    for (const auto& [in, out] : ranges) {
      LoadedClip clip(spec);
      for (std::uint32_t t = 0; t < spec.tracks; ++t)
        SwitchOn(clip, {t});
      clip.SetRange(kExportRange, in, out);
      ASSERT_EQ(Run(clip), 0);
      ASSERT_EQ(Files(clip), spec.tracks);
      const Bytes last = File(clip, "Track-" + std::to_string(spec.tracks) + ".wav");
      EXPECT_TRUE(Bytes(last.begin() + kBwfHeaderBytes, last.end()) ==
                  Audio(clip, spec.tracks - 1, in, out));
    }
  }
}

// More frames than are taken at a time, over partitions, from a clip that is on the medium only.
TEST_P(Export, WritesTheSameWhereTheClipIsNotInMemory) {
  ClipSpec spec;
  spec.frames = 200;
  spec.framesPerPartition = 90;
  LoadedClip clip(spec);
  SwitchOn(clip, {1, 2});
  clip.SetRange(kExportRange, 1, 198);
  DropFromMemory(clip.path);
  ASSERT_EQ(Run(clip), 0);
  for (const std::uint32_t t : {1u, 2u}) {
    const Bytes file = File(clip, "Track-" + std::to_string(t + 1) + ".wav");
    EXPECT_TRUE(Bytes(file.begin() + kBwfHeaderBytes, file.end()) == Audio(clip, t, 1, 198));
  }
}

TEST_P(Export, NeverTakesANameThatIsTaken) {
  LoadedClip clip{ClipSpec()};
  SwitchOn(clip, {2});
  const Bytes precious = {1, 2, 3};
  const auto out = clip.folder.Path() / "out";
  ASSERT_TRUE(WriteBytes(out / "Track-3 7.wav", precious));
  std::filesystem::create_symlink(clip.folder.Path() / "nowhere", out / "Track-3 8.wav");
  clip.app.tracks.exportCount = 7;
  EXPECT_EQ(Run(clip), 0);
  EXPECT_EQ(Run(clip), 0);
  clip.app.tracks.exportCount = 1234;
  EXPECT_EQ(Run(clip), 0);
  EXPECT_EQ(File(clip, "Track-3 7.wav"), precious);
  EXPECT_EQ(File(clip, "Track-3 9.wav"), File(clip, "Track-3.wav"));
  EXPECT_EQ(File(clip, "Track-3 1234.wav"), File(clip, "Track-3.wav"));
  EXPECT_EQ(Files(clip), 5u);
  // Only the extension that the program gave counts.
  PutText(u"a.b-", clip.app.tracks.exportName);
  EXPECT_EQ(Run(clip), 0);
  EXPECT_EQ(Run(clip), 0);
  EXPECT_EQ(File(clip, "a.b-3 1234.wav"), File(clip, "a.b-3.wav"));
}

TEST_P(Export, RefusesBeforeItMakesAFile) {
  LoadedClip clip{ClipSpec()};
  SwitchOn(clip, {0});
  const auto engine = GetParam() ? ExportFileIo : ExportMapped;
  EXPECT_EQ(engine(nullptr, &clip.app.tracks, clip.app.info.mxf), Code(4001));
  EXPECT_EQ(engine(clip.path.c_str(), nullptr, clip.app.info.mxf), Code(4002));
  EXPECT_EQ(engine(clip.path.c_str(), &clip.app.tracks, nullptr), Code(4003));
  const std::u16string none = clip.folder.PathOf("none");
  EXPECT_EQ(engine(none.c_str(), &clip.app.tracks, clip.app.info.mxf), Code(4006));
  for (const auto& [in, out] : {std::pair{5u, 4u}, {0u, 10u}, {~0u, 3u}}) {
    clip.SetRange(kExportRange, in, out);
    EXPECT_EQ(Run(clip), Code(4005));
  }
  clip.SetRange(kExportRange, 0, 9);
  {
    const auto other = platform::File::Open(clip.path, platform::OpenMode::kRewrite);
    EXPECT_EQ(Run(clip), Code(4006));
  }
  std::filesystem::resize_file(platform::ToUtf8(clip.path), clip.clip.bytes.size() - 1);
  EXPECT_EQ(Run(clip), Code(4020));
  ASSERT_TRUE(WriteBytes(platform::ToUtf8(clip.path), clip.clip.bytes));
  EXPECT_EQ(Files(clip), 0u);
  for (const char16_t* folder : {u"", u"/none/such"}) {
    PutText(folder, clip.app.tracks.exportFolder);
    EXPECT_EQ(Run(clip), Code(4008));
  }
  PutText(std::u16string(1000, u'/'), clip.app.tracks.exportFolder);
  PutText(std::u16string(200, u'n'), clip.app.tracks.exportName);
  EXPECT_EQ(Run(clip), Code(4008));
}

TEST_P(Export, MakesNoFileOfWhatIsNoAudioOfItsTrack) {
  using Segments = std::vector<IndexSegment>;
  const std::function<void(Segments&)> edits[] = {
      [](Segments& s) { s[1].deltas[2].elementDelta += 512; },
      [](Segments& s) { s[1].entries[2].sliceOffset -= 512; },
      [](Segments& s) { s[1].deltas.resize(2); },
      [](Segments& s) { s[1].deltas[2] = s[1].deltas[3]; },  // a neighbour's element
  };
  for (const auto& edit : edits) {
    ClipSpec spec;
    spec.indexEdits.push_back(edit);
    LoadedClip clip(spec);
    SwitchOn(clip, {0});
    EXPECT_EQ(Run(clip), Code(4019));
    EXPECT_EQ(Files(clip), 0u);
  }
}

TEST_P(Export, MakesNoFileWhenTheIndexHasAFrameTwice) {
  ClipSpec spec;
  spec.indexEdits.push_back(
      [](auto& segments) { segments[1].entries[3] = segments[1].entries[2]; });
  LoadedClip clip(spec);
  SwitchOn(clip, {0});
  clip.SetRange(kExportRange, 0, 4);  // itself sound
  EXPECT_EQ(Run(clip), Code(4031));
  EXPECT_EQ(Files(clip), 0u);
}

TEST_P(Export, WritesAHeaderAloneForARangeWithoutFrames) {
  ClipSpec spec;
  spec.start = {23, 59, 59, 0};
  LoadedClip clip(spec);
  SwitchOn(clip, {0});
  for (const std::uint32_t in : {3u, 10u}) {
    clip.SetRange(kExportRange, in, in - 1);
    ASSERT_EQ(Run(clip), 0);
    EXPECT_EQ(clip.app.tracks.totalFrames, 0u);
    const Bytes file = File(clip, in == 3 ? "Track-1.wav" : "Track-1 0.wav");
    ASSERT_EQ(file.size(), kBwfHeaderBytes);
    EXPECT_EQ(Little(file, 710, 4), 0u);
    EXPECT_EQ(Little(file, 442, 8), SamplesSinceMidnight(clip, in));
  }
}

TEST_P(Export, StopsBehindTheFrameOfACancel) {
  for (int attempt = 0;; ++attempt) {
    ASSERT_LT(attempt, 20) << "never caught it at work";
    LoadedClip clip(LongClip());
    SwitchOn(clip, {0});
    clip.app.tracks.cancel = 1;  // left over from before: no effect
    std::int32_t result = -1;
    std::atomic<bool> ended = false;
    std::thread worker([&] {
      result = Run(clip);
      ended = true;
    });
    while (!ended && clip.app.tracks.currentFrame < 10) {
    }
    clip.app.tracks.cancel = 1;
    worker.join();
    if (result == 0) continue;
    ASSERT_EQ(result, kCancelled);
    EXPECT_EQ(clip.app.tracks.cancel, 0u);
    const Bytes file = File(clip, "Track-1.wav");
    const std::uint32_t frames = clip.app.tracks.currentFrame + 2;  // the last one is not counted
    EXPECT_EQ(file.size(), kBwfHeaderBytes + frames * 800 * 2);
    break;
  }
}

TEST_P(Export, SurvivesAClipThatIsCutShortWhileItIsRead) {
  for (int attempt = 0;; ++attempt) {
    ASSERT_LT(attempt, 20) << "never caught it at work";
    LoadedClip clip(LongClip());
    SwitchOn(clip, {0});
    std::int32_t result = -1;
    std::atomic<bool> ended = false;
    std::thread worker([&] {
      result = Run(clip);
      ended = true;
    });
    while (!ended && !std::filesystem::exists(clip.folder.Path() / "out" / "Track-1.wav")) {
    }
    std::filesystem::resize_file(platform::ToUtf8(clip.path), 4096);
    worker.join();
    if (result == 0) continue;
    EXPECT_TRUE(result == Code(4024) || result == Code(4019) || result == Code(4009)) << result;
    break;
  }
}

TEST(ExportFileIo, RefusesABlockThatIsTooLarge) {
  ClipSpec spec;
  spec.tracks = 24;
  LoadedClip clip(spec);
  SwitchOn(clip, {0});
  for (const std::uint32_t row : {13u, 14u}) {
    clip.app.tracks.wavBufferIndex = row;
    EXPECT_EQ(ExportFileIo(clip.path.c_str(), &clip.app.tracks, clip.app.info.mxf), 5006);
  }
  EXPECT_EQ(Files(clip), 0u);
}

// Blocks of the shortest row, a minute.
TEST(ExportFileIo, WritesTheSameWhateverTheBlock) {
  ClipSpec spec = LongClip();
  spec.rate = Rate::k24;
  spec.frames = 2890;
  LoadedClip clip(spec);
  SwitchOn(clip, {0});
  clip.app.tracks.wavBufferIndex = 0;
  for (const std::uint32_t frames : {1439u, 1440u, 1441u, 2880u, 2881u}) {
    clip.SetRange(kExportRange, 5, 5 + frames - 1);
    ASSERT_EQ(ExportFileIo(clip.path.c_str(), &clip.app.tracks, clip.app.info.mxf), 0);
    const Bytes file = File(clip, "Track-1.wav");
    EXPECT_TRUE(Bytes(file.begin() + kBwfHeaderBytes, file.end()) ==
                Audio(clip, 0, 5, 5 + frames - 1));
    std::filesystem::remove(clip.folder.Path() / "out" / "Track-1.wav");
  }
}

TEST(BwfHeader, BecomesRf64WhereTheSizesNeedIt) {
  MXF_AUDIO_INFO audio{};
  audio.sampleRate = 48000;
  audio.avgBytesPerSecond = 144000;
  audio.blockAlign = 3;
  audio.quantizationBits = 24;
  const auto make = [&](std::uint64_t bytes) {
    const BwfHeader header = MakeBwfHeader(audio, {bytes, 0x123456789A, 22});
    return Bytes(header.begin(), header.end());
  };
  const auto id = [](const Bytes& header, std::size_t place) {
    return std::string(header.begin() + static_cast<long>(place),
                       header.begin() + static_cast<long>(place) + 4);
  };
  const Bytes riff = make(0xFFFFFFFE);
  EXPECT_EQ(id(riff, 0) + id(riff, 8) + id(riff, 12), "RIFFWAVEJUNK");
  EXPECT_EQ(std::accumulate(riff.begin() + 20, riff.begin() + 48, 0), 0);
  EXPECT_EQ(Little(riff, 710, 4), 0xFFFFFFFE);
  const Bytes rf64 = make(0xFFFFFFFF);
  EXPECT_EQ(id(rf64, 0) + id(rf64, 8) + id(rf64, 12), "RF64WAVEds64");
  EXPECT_EQ(Little(rf64, 4, 4), 0xFFFFFFFF);
  EXPECT_EQ(Little(rf64, 20, 8), 0xFFFFFFFFu + 706ull);
  EXPECT_EQ(Little(rf64, 28, 8), 0xFFFFFFFFull);
  EXPECT_EQ(Little(rf64, 36, 8), 0xFFFFFFFFull / 3);
  EXPECT_EQ(Little(rf64, 710, 4), 0xFFFFFFFF);
  for (const Bytes& header : {riff, rf64}) {
    EXPECT_EQ(id(header, 48) + id(header, 96) + id(header, 706), "fmt bextdata");
    const std::pair<std::size_t, std::uint64_t> fields[] = {
        {16, 28}, {52, 40}, {60, 48000}, {64, 144000}, {72, 22}, {100, 602}, {450, 1}};
    for (const auto& [place, value] : fields)
      EXPECT_EQ(Little(header, place, place == 72 || place == 450 ? 2 : 4), value) << place;
    EXPECT_EQ(Little(header, 56, 4), 0x00010001u);
    EXPECT_EQ(Little(header, 68, 4), 0x00180003u);
    EXPECT_EQ(Little(header, 442, 8), 0x123456789Aull);
    for (const auto& [from, to] : {std::pair{74, 96}, {104, 442}, {452, 706}})
      EXPECT_EQ(std::accumulate(header.begin() + from, header.begin() + to, 0), 0) << from;
  }
}

}  // namespace
}  // namespace quorvan
