#include <gtest/gtest.h>

#include "export/bwf_header.h"
#include "export/export_file_io.h"
#include "export/export_mapped.h"
#include "platform/text.h"
#include "support/call_hook.h"
#include "support/golden.h"
#include "support/loaded_clip.h"

namespace quorvan {
namespace {

using namespace test;
using platform::SystemCall;

void PutText(std::u16string_view text, char16_t* field) {
  field[text.copy(field, 1023)] = 0;
}

std::uint64_t Little(const Bytes& bytes, std::size_t place, std::size_t count) {
  std::uint64_t value = 0;
  for (std::size_t b = 0; b < count; ++b)
    value |= std::uint64_t{bytes[place + b]} << (8 * b);
  return value;
}

// A clip of which some tracks, from 0, go into a folder of its own.
struct ExportClip : LoadedClip {
  ExportClip(const ClipSpec& description, std::initializer_list<std::uint32_t> tracks)
      : LoadedClip(description) {
    std::filesystem::create_directory(Out());
    PutText(folder.PathOf("out"), app.tracks.exportFolder);
    PutText(u"Track-", app.tracks.exportName);
    for (const std::uint32_t t : tracks)
      app.tracks.exportSwitch[t] = kSwitchOn;
  }

  std::filesystem::path Out() const { return folder.Path() / "out"; }
  Bytes File(const std::string& name) const { return ReadAll(Out() / name); }

  std::size_t Files() const {
    const std::filesystem::directory_iterator files(Out());
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
  }

  // True when the file of a track holds the audio of these frames as the clip was built.
  bool HasExported(std::uint32_t track, std::uint32_t in, std::uint32_t out) const {
    Bytes audio = File("Track-" + std::to_string(track + 1) + ".wav");
    Bytes expected(audio.begin(), audio.begin() + kBwfHeaderBytes);
    for (std::uint32_t f = in; f <= out; ++f) {
      const FramePlace& frame = clip.layout.frames[f];
      const auto from = clip.bytes.begin() + static_cast<long>(frame.audio[track].value);
      expected.insert(expected.end(), from, from + frame.samples * clip.layout.blockAlign);
    }
    return audio == expected;
  }

  std::uint64_t SamplesSinceMidnight(std::uint32_t frame) const {
    std::uint64_t samples = 0;
    for (std::uint32_t f = 0; f < clip.layout.startFrames + frame; ++f)
      samples += SamplesOfFrame(spec.rate, f);
    return samples;
  }
};

// Every test runs with both engines; what is said of codes is said of the mapped one.
class Export : public ::testing::TestWithParam<bool> {
 protected:
  static auto Engine() { return GetParam() ? ExportFileIo : ExportMapped; }
  static std::int32_t Run(ExportClip& clip) {
    return Engine()(clip.path.c_str(), &clip.app.tracks, clip.app.info.mxf);
  }
  static std::int32_t Code(std::int32_t mapped) {
    if (!GetParam()) return mapped;
    return mapped == 4006 ? 5007 : mapped + 1000;
  }
};
INSTANTIATE_TEST_SUITE_P(Engines, Export, ::testing::Bool(), [](const auto& engine) {
  return std::string(engine.param ? "FileIo" : "Mapped");
});

TEST_P(Export, WritesTheSamplesOfEachTrackAtEveryRate) {
  for (const Rate rate : {Rate::k24, Rate::k25, Rate::k30, Rate::k50, Rate::k60, Rate::k23_98,
                          Rate::k29_97, Rate::k59_94}) {
    const ClipSpec spec{.rate = rate,
                        .dropFrame = true,
                        .start = {23, 59, 59, 10},
                        .frames = 17,
                        .bits = rate == Rate::k25 || rate == Rate::k29_97 ? 16u : 24u,
                        .dataTrack = rate == Rate::k30,
                        .dataElement = rate == Rate::k30};
    ExportClip clip(spec, {0, 3});
    clip.app.tracks.exportSwitch[1] = kNoSuchTrack;
    clip.SetRange(kExportRange, 3, 13);
    SCOPED_TRACE(static_cast<int>(rate));
    ASSERT_EQ(Run(clip), 0);
    EXPECT_EQ(clip.Files(), 2u);
    EXPECT_EQ(clip.app.tracks.totalFrames, 11u);
    EXPECT_EQ(clip.app.tracks.currentFrame, 10u);
    EXPECT_EQ(clip.app.tracks.provenFrames, 11u);
    EXPECT_TRUE(clip.HasExported(0, 3, 13));
    EXPECT_TRUE(clip.HasExported(3, 3, 13));
    const Bytes file = clip.File("Track-4.wav");
    EXPECT_EQ(Little(file, 70, 2), spec.bits);
    EXPECT_EQ(Little(file, 72, 2), GetParam() ? 0u : 22u);
    EXPECT_EQ(Little(file, 442, 8), clip.SamplesSinceMidnight(3));
    EXPECT_EQ(Little(file, 710, 4), file.size() - kBwfHeaderBytes);
    EXPECT_TRUE(clip.Now() == clip.clip.bytes);
  }
}

// The long one has more frames than are taken at a time, over partitions, and comes from the
// medium.
TEST_P(Export, WritesAnyRangeAndShape) {
  const ClipSpec shapes[] = {{.tracks = 1},
                             {.tracks = 24},
                             {.sliceCount = 0},
                             {.elementKag = 0},
                             {.frames = 140, .framesPerPartition = 90}};
  using Ranges = std::vector<std::pair<std::uint32_t, std::uint32_t>>;
  const Ranges brief = {{0, 0}, {9, 9}, {4, 5}, {0, 9}};
  const Ranges lasting = {{0, 62}, {0, 63}, {0, 64}, {1, 138}};
  for (const ClipSpec& spec : shapes) {
    for (const auto& [in, out] : spec.frames > 100 ? lasting : brief) {
      ExportClip clip(spec, {0, spec.tracks - 1});
      clip.app.tracks.noFlush = 1;
      clip.app.tracks.wavBufferIndex = 0;
      clip.SetRange(kExportRange, in, out);
      DropFromMemory(clip.path);
      ASSERT_EQ(Run(clip), 0);
      EXPECT_EQ(clip.Files(), spec.tracks == 1 ? 1u : 2u);
      EXPECT_TRUE(clip.HasExported(0, in, out)) << in << " " << out;
      EXPECT_TRUE(clip.HasExported(spec.tracks - 1, in, out)) << in << " " << out;
    }
  }
}

TEST_P(Export, NumbersItsFilesAndNeverTakesANameThatIsTaken) {
  ExportClip clip({.tracks = 12}, {2, 11});
  const Bytes precious = {1, 2, 3};
  ASSERT_TRUE(WriteBytes(clip.Out() / "Track-3 7.wav", precious));
  if (!MakeLink(clip.folder.Path() / "nowhere", clip.Out() / "Track-3 8.wav")) {
    ASSERT_TRUE(WriteBytes(clip.Out() / "Track-3 8.wav", precious));
  }
  using Case = std::tuple<const char16_t*, std::uint32_t, std::string, std::string>;
  const Case cases[] = {{u"Track-", 6, "Track-3.wav", "Track-12.wav"},
                        {u"Track-", 7, "Track-3 9.wav", "Track-12 7.wav"},
                        {u"Track-", 1234, "Track-3 1234.wav", "Track-12 1234.wav"},
                        // Only the extension that the program gave counts.
                        {u"a.b-", 8, "a.b-3.wav", "a.b-12.wav"},
                        {u"a.b-", 9, "a.b-3 9.wav", "a.b-12 9.wav"}};
  std::size_t files = 2;
  for (const auto& [stem, count, third, twelfth] : cases) {
    PutText(stem, clip.app.tracks.exportName);
    clip.app.tracks.exportCount = count;
    EXPECT_EQ(Run(clip), 0);
    for (const std::string& name : {third, twelfth})
      ASSERT_TRUE(std::filesystem::exists(clip.Out() / name)) << name;
    EXPECT_EQ(clip.File(third), clip.File("Track-3.wav"));
    EXPECT_EQ(clip.File(twelfth), clip.File("Track-12.wav"));
    EXPECT_EQ(clip.Files(), files += 2);
  }
  EXPECT_TRUE(clip.HasExported(2, 0, 9));
  EXPECT_TRUE(clip.HasExported(11, 0, 9));
  EXPECT_EQ(clip.File("Track-3 7.wav"), precious);
}

TEST_P(Export, RefusesBeforeItMakesAFile) {
  ExportClip clip(ClipSpec(), {0});
  AUDIOTRACK_IO_INFO& tracks = clip.app.tracks;
  EXPECT_EQ(Engine()(nullptr, &tracks, clip.app.info.mxf), Code(4001));
  EXPECT_EQ(Engine()(clip.path.c_str(), nullptr, clip.app.info.mxf), Code(4002));
  EXPECT_EQ(Engine()(clip.path.c_str(), &tracks, nullptr), Code(4003));
  const std::u16string none = clip.folder.PathOf("none");
  EXPECT_EQ(Engine()(none.c_str(), &tracks, clip.app.info.mxf), Code(4006));
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
  for (const char16_t* folder : {u"", u"/none/such"}) {
    PutText(folder, tracks.exportFolder);
    EXPECT_EQ(Run(clip), Code(4008));
  }
  // A path of one character more than the records hold, and one of just as many.
  std::u16string out = clip.folder.PathOf("out");
  out.resize(1024 - std::u16string_view(u"Track-1.wav").size(), u'/');
  PutText(out, tracks.exportFolder);
  EXPECT_EQ(Run(clip), Code(4008));
  EXPECT_EQ(clip.Files(), 0u);
  out.pop_back();
  PutText(out, tracks.exportFolder);
  EXPECT_EQ(Run(clip), 0);
}

TEST_P(Export, MakesNoFileOfWhatIsNoAudioOfItsTrack) {
  using Segments = std::vector<IndexSegment>;
  const std::pair<std::int32_t, std::function<void(Segments&)>> edits[] = {
      {4019, [](Segments& s) { s[1].deltas[2].elementDelta += 512; }},
      {4019, [](Segments& s) { s[1].deltas.resize(2); }},
      {4019, [](Segments& s) { s[1].deltas[2] = s[1].deltas[3]; }},    // a neighbour's element
      {4031, [](Segments& s) { s[1].entries[3] = s[1].entries[2]; }},  // a frame twice
  };
  for (const auto& [code, edit] : edits) {
    ExportClip clip({.indexEdits = {edit}}, {0});
    if (code == 4031) clip.SetRange(kExportRange, 0, 4);  // itself in order
    EXPECT_EQ(Run(clip), Code(code));
    EXPECT_EQ(clip.Files(), 0u);
  }
}

// The engines take a range that ends in front of its first frame in a clip of the last hour.
TEST_P(Export, WritesAHeaderAloneForARangeWithoutFrames) {
  ExportClip clip({.start = {23, 59, 59, 0}}, {0});
  clip.SetRange(kExportRange, 3, 2);
  ASSERT_EQ(Run(clip), 0);
  EXPECT_EQ(clip.File("Track-1.wav").size(), kBwfHeaderBytes);
}

// Each file, then the folder with their names.
TEST_P(Export, IsNotDoneBeforeTheMediumHasAll) {
  for (const int flush : {1, 2, 3}) {
    ExportClip clip(ClipSpec(), {0, 1});
    const CallHook full([&](SystemCall call, int nth) {
      return call == SystemCall::kFlush && nth >= flush ? platform::CallOutcome::kFails
                                                        : platform::CallOutcome::kAsEver;
    });
    EXPECT_EQ(Run(clip), Code(4026));
    EXPECT_EQ(std::u16string(clip.app.tracks.fault.path),
              clip.folder.PathOf(flush == 1 ? "out/Track-1.wav" : "out/Track-2.wav"));
    clip.app.tracks.noFlush = 1;
    EXPECT_EQ(Run(clip), 0) << "nobody waits for the medium";
  }
}

// With the header, then with the first frames that are written at a time.
TEST_P(Export, StopsBehindTheFrameOfACancel) {
  for (const auto& [nth, frames] : {std::pair{1, 1u}, {2, 65u}}) {
    ExportClip clip(LongClip(200), {0});
    clip.app.tracks.cancel = 1;  // left over from before: no effect
    const CallHook operatorStops(SystemCall::kGatheredWrite, nth,
                                 [&] { clip.app.tracks.cancel = 1; });
    ASSERT_EQ(Run(clip), kCancelled);
    EXPECT_EQ(clip.app.tracks.cancel, 0u);
    EXPECT_EQ(clip.app.tracks.currentFrame,
              frames < 2 ? 0 : frames - 2);  // the last does not count
    EXPECT_EQ(clip.File("Track-1.wav").size(), kBwfHeaderBytes + frames * 800 * 2);
  }
}

// In front of the frames that are being written, behind them, and behind the last one.
TEST_P(Export, IsNotDoneWhenTheClipIsCutShortMeanwhile) {
  constexpr std::uint64_t page = 4096;
  for (const std::size_t frame : {0u, 100u, 200u}) {
    ExportClip clip(LongClip(200), {0});
    const std::uint64_t rest = frame == 200 ? clip.clip.bytes.size() - 1
                                            : clip.clip.layout.frames[frame].offset / page * page;
    bool isCut = false;
    const CallHook cut(SystemCall::kGatheredWrite, 2,
                       [&] { isCut = CutWhileOpen(clip.path, rest); });
    const std::int32_t result = Run(clip);
    EXPECT_EQ(result, isCut ? Code(4024) : 0);
  }
}

TEST(ExportFileIo, RefusesABlockThatIsTooLarge) {
  ExportClip clip({.tracks = 24}, {0});
  for (const std::uint32_t row : {13u, 14u}) {
    clip.app.tracks.wavBufferIndex = row;
    EXPECT_EQ(ExportFileIo(clip.path.c_str(), &clip.app.tracks, clip.app.info.mxf), 5006);
  }
  EXPECT_EQ(clip.Files(), 0u);
}

// The page has the place and value of each byte that is not zero.
TEST(BwfHeader, BecomesRf64WhereTheSizesNeedIt) {
  MXF_AUDIO_INFO audio{};
  audio.sampleRate = 48000;
  audio.avgBytesPerSecond = 144000;
  audio.blockAlign = 3;
  audio.quantizationBits = 24;
  std::string page;
  for (const std::uint64_t audioBytes : {0xFFFFFFFEu, 0xFFFFFFFFu}) {
    const BwfHeader header = MakeBwfHeader(audio, {audioBytes, 0x123456789A, 22});
    for (std::size_t i = 0; i < header.size(); ++i) {
      if (header[i] != 0) page += std::to_string(i) + ' ' + std::to_string(header[i]) + '\n';
    }
    page += '\n';
  }
  EXPECT_EQ(page, GoldenText("export/golden/bwf_headers.txt"));
}

}  // namespace
}  // namespace quorvan
