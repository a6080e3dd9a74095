#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <optional>

#include "platform/text.h"
#include "rewrap_job.h"
#include "rewrite/umid.h"
#include "support/call_hook.h"
#include "support/mxf_tags.h"

namespace quorvan {
namespace {

using namespace test;
using platform::CallOutcome;
using platform::SystemCall;

WavSpec Wav(std::uint16_t channels, std::uint16_t bits, std::uint64_t sampleFrames) {
  return {.channels = channels, .bits = bits, .sampleFrames = sampleFrames};
}

constexpr std::uint64_t kPlenty = 100000;

// Every test runs with both engines; what is said of codes is said of the mapped one.
class Rewrap : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override { RewrapJob::fileIo = GetParam(); }
};
INSTANTIATE_TEST_SUITE_P(Engines, Rewrap, ::testing::Bool(), [](const auto& engine) {
  return std::string(engine.param ? "FileIo" : "Mapped");
});

std::int32_t Code(std::int32_t mapped) {
  if (!RewrapJob::fileIo || mapped == kUmidTooLong) return mapped;
  constexpr std::pair<std::int32_t, std::int32_t> others[] = {
      {2006, 3007}, {2009, 3021}, {2010, 3006}};
  for (const auto& [code, other] : others) {
    if (mapped == code) return other;
  }
  return mapped + 1000;
}

// Runs the job and compares every byte of the file.
void ExpectExactly(RewrapJob& job) {
  ASSERT_EQ(job.Run(), 0);
  EXPECT_TRUE(job.Now() == job.Expected());
  EXPECT_EQ(job.app.tracks.currentFrame, job.app.tracks.totalFrames);
  platform::File file = platform::File::Open(job.path, platform::OpenMode::kReadAlone);
  MxfRecords again;
  ASSERT_EQ(AnalyzeMxfFile(&file, &again.base), 0);
  EXPECT_EQ(again.base.materialUmid, job.app.mxf.base.materialUmid);
  EXPECT_EQ(again.base.sourceUmid, job.app.mxf.base.sourceUmid);
}

// Puts other bytes into the clip than it was built with.
void Rewrite(RewrapJob& job, const Bytes& bytes) {
  job.clip.bytes = bytes;
  ASSERT_TRUE(WriteBytes(platform::ToUtf8(job.path), bytes));
}

// The result, with a file in which nothing changed.
void ExpectUntouched(RewrapJob& job, std::int32_t code) {
  EXPECT_EQ(job.Run(), Code(code));
  EXPECT_TRUE(job.Now() == job.clip.bytes);
  for (const platform::File& file : job.app.tracks.wavHandle)
    EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(platform::File::Open(job.path, platform::OpenMode::kRewrite).IsOpen());
}

// What stands between the values of a row is written with it: it differs from frame to frame here,
// in more ways than are kept.
TEST_P(Rewrap, LeavesEveryFillAsItWas) {
  RewrapJob job({.frames = 150, .framesPerPartition = 0});
  Bytes bytes = job.clip.bytes;
  for (std::size_t f = 0; f < job.clip.layout.frames.size(); ++f) {
    const auto& audio = job.clip.layout.frames[f].audio;
    for (std::size_t t = 0; t + 1 < audio.size(); ++t)
      bytes[audio[t + 1].key - 1] = static_cast<std::uint8_t>(f % 100 + t);
  }
  Rewrite(job, bytes);
  job.Put(0, Wav(4, 24, 1 << 20));
  DropFromMemory(job.path);
  ExpectExactly(job);
}

// Of whatever length: behind its end comes silence.
TEST_P(Rewrap, TakesEveryKindOfFile) {
  std::vector<WavSpec> files(3, Wav(2, 24, 9000));
  files[0].dataSize = 0xFFFFFFFF;  // a stream, which lasts to the end of its file
  files[1].formId = "RF64";
  files[1].chunksBehindData = {{"LIST", Bytes(600, 0x55)}};
  files[2] = files[1];
  files[2].chunksFirst = {{"five!", Bytes(20)}};  // which puts the audio at an odd place
  for (const std::uint64_t samples : {0u, 1u, 1919u, 1920u, 1921u, 9599u, 9600u, 19199u}) {
    files.push_back(Wav(1, 24, samples));
    files.push_back(Wav(2, 16, samples));
  }
  for (const WavSpec& file : files) {
    RewrapJob job{ClipSpec()};
    job.Put(2, file);
    SCOPED_TRACE(file.sampleFrames);
    ExpectExactly(job);
  }
  RewrapJob job({.bits = 16, .waveAudio = true});
  job.Put(0, Wav(1, 16, kPlenty));
  job.Put(2, Wav(2, 16, kPlenty));
  ExpectExactly(job);
}

TEST_P(Rewrap, WritesAnyRangeOverTheSegments) {
  const std::pair<std::uint32_t, std::uint32_t> ranges[] = {{0, 0}, {9, 9}, {4, 5},  {5, 5},
                                                            {0, 9}, {3, 7}, {4, 22}, {22, 22}};
  for (const auto placement : {IndexPlacement::kFollowingPartition, IndexPlacement::kFooter}) {
    for (const auto& [in, out] : ranges) {
      RewrapJob job({.frames = 23, .indexPlacement = placement});
      job.Put(1, Wav(1, 24, kPlenty));
      job.Silence(3);
      job.Range(in, out);
      SCOPED_TRACE(in * 100 + out);
      ExpectExactly(job);
    }
  }
}

TEST_P(Rewrap, WritesEveryRateAndShapeOfFrame) {
  std::vector<ClipSpec> shapes = {
      {.tracks = 1},
      {.tracks = 24},
      {.dataTrack = true, .dataElement = true},
      {.dataTrack = true},  // announced, but in no frame
      {.elementKag = 0},
      {.sliceCount = 0},
      {.frames = 6, .elementKag = 1 << 17}};  // with more between two values than is kept
  for (const Rate rate : {Rate::k24, Rate::k25, Rate::k30, Rate::k50, Rate::k60, Rate::k23_98,
                          Rate::k29_97, Rate::k59_94}) {
    shapes.push_back(
        {.rate = rate, .dropFrame = true, .start = {23, 59, 59, 20}, .frames = 17, .tracks = 12});
  }
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    RewrapJob job(shapes[i]);
    job.Put(0, Wav(1, 24, kPlenty));
    if (job.spec.tracks > 2) job.Silence(1);
    if (job.spec.tracks > 10) job.Put(2, Wav(8, 24, kPlenty));
    if (job.spec.tracks > 11) job.Put(10, Wav(2, 24, kPlenty));
    job.Range(2, job.spec.frames - 3);
    SCOPED_TRACE(i);
    ExpectExactly(job);
  }
}

// Audio of a segment beyond 31 bits, of which mapped sources are no part.
TEST_P(Rewrap, RefusesToMapSourcesForASegmentThatIsTooLong) {
  ClipSpec spec;
  spec.indexEdits.push_back([](auto& all) { all[0].duration = 0x7FFFFFFFFFFFFFFF; });
  RewrapJob job(spec);
  job.Put(0, Wav(1, 24, kPlenty));
  GetParam() ? ExpectExactly(job) : ExpectUntouched(job, 2011);
  RewrapJob silent(spec);
  silent.Silence(0);
  ExpectExactly(silent);
}

// Each track's own lamp decides, whatever the others of its file do.
TEST_P(Rewrap, WritesOnlyTracksThatAreOnWithTheirOwnChannels) {
  for (const std::uint32_t on : {0b0000u, 0b0001u, 0b0010u, 0b0101u, 0b1010u, 0b1101u}) {
    RewrapJob job{ClipSpec()};
    job.Put(0, Wav(4, 24, kPlenty));
    for (std::uint32_t t = 0; t < 4; ++t)
      job.app.tracks.rewrapSwitch[t] = (on >> t & 1) != 0 ? kSwitchOn : kSwitchOff;
    SCOPED_TRACE(on);
    on == 0 ? ExpectUntouched(job, 2015) : ExpectExactly(job);
  }
}

TEST_P(Rewrap, RefusesArgumentsAndRangesBeforeItOpensAnything) {
  RewrapJob job{ClipSpec()};
  job.Silence(0);
  MXF_BASE_INFO* mxf = job.app.info.mxf;
  EXPECT_EQ(RewrapJob::Engine()(nullptr, &job.app.tracks, mxf), Code(2001));
  EXPECT_EQ(RewrapJob::Engine()(job.path.c_str(), nullptr, mxf), Code(2002));
  EXPECT_EQ(RewrapJob::Engine()(job.path.c_str(), &job.app.tracks, nullptr), Code(2003));
  const std::u16string none = job.folder.PathOf("none");
  EXPECT_EQ(RewrapJob::Engine()(none.c_str(), &job.app.tracks, mxf), Code(2006));
  const std::pair<std::uint32_t, std::uint32_t> ranges[] = {{5, 4}, {0, 10}, {~0u, 3}};
  for (const auto& [in, out] : ranges) {
    job.Range(in, out);
    ExpectUntouched(job, 2005);
  }
  job.Range(0, 9);
  const auto other = platform::File::Open(job.path, platform::OpenMode::kReadShared);
  EXPECT_EQ(job.Run(), Code(2006));
  job.app.mxf.timecode.rateIndex = 8;
  EXPECT_EQ(job.Run(), Code(2004));
  EXPECT_TRUE(job.Now() == job.clip.bytes);
}

// What stands where audio should be, in frame 6 of 10 on track 1.
TEST_P(Rewrap, TouchesNothingUnlessEveryValueIsAnAudioElement) {
  const std::pair<std::int32_t, std::function<void(Bytes&, const KlvPlace&)>> damages[] = {
      {2019, [](Bytes& b, const KlvPlace& e) { b[e.key] ^= 1; }},
      {2019, [](Bytes& b, const KlvPlace& e) { b[e.key + 12] = 0x15; }},
      {2019, [](Bytes& b, const KlvPlace& e) { b[e.key + 14] = 0x01; }},
      {2019, [](Bytes& b, const KlvPlace& e) { b[e.key + 16] = 0x87; }},
      {2018, [](Bytes& b, const KlvPlace& e) { b[e.key + 19] -= 3; }},  // a sample less
      {2018, [](Bytes& b, const KlvPlace& e) { b[e.key + 19] += 3; }},  // a sample more
      {2020, [](Bytes& b, const KlvPlace& e) { b.resize(e.value + 100); }},
      {2020, [](Bytes& b, const KlvPlace&) { b.push_back(0); }},
  };
  for (const auto& [code, damage] : damages) {
    RewrapJob job{ClipSpec()};
    job.Put(1, Wav(1, 24, kPlenty));
    Bytes bytes = job.clip.bytes;
    damage(bytes, job.clip.layout.frames[6].audio[1]);
    Rewrite(job, bytes);
    ExpectUntouched(job, code);
    EXPECT_EQ(job.app.tracks.fault.frame, code == 2020 ? kNoFrame : 6u);
    EXPECT_EQ(job.app.tracks.fault.framesBegun, 0u);
  }
}

TEST_P(Rewrap, TouchesNothingInAClipThatContradictsItself) {
  using Segments = std::vector<IndexSegment>;
  const auto index = [](const std::function<void(Segments&)>& edit) {
    return ClipSpec{.indexEdits = {edit}};
  };
  ClipSpec noWidth, noRate, narrow{.sliceCount = 0}, otherRate{.rate = Rate::k29_97};
  noWidth.RemoveTag(SetKind::kAes3Descriptor, 0, tag::kQuantizationBits);
  noRate.RemoveTag(SetKind::kAes3Descriptor, 0, tag::kAudioSamplingRate);
  // Elements of 24 bits under a descriptor of 16.
  narrow.SetTag(SetKind::kAes3Descriptor, 0, tag::kQuantizationBits, Big32(16));
  narrow.SetTag(SetKind::kAes3Descriptor, 0, tag::kBlockAlign, Big16(2));
  // Frames of 1602 and 1601 samples under a picture of 30/1.
  otherRate.SetTag(SetKind::kMpegVideoDescriptor, 0, tag::kSampleRate, {0, 0, 0, 30, 0, 0, 0, 1});
  const std::pair<std::int32_t, ClipSpec> cases[] = {
      {2016, {.timecodeTracks = 0}},
      {2017, noWidth},
      {2017, noRate},
      {2018, narrow},
      {2018, otherRate},
      // A neighbour's element, behind the key, no entry for the track.
      {2019, index([](Segments& s) { s[1].deltas[3] = s[1].deltas[2]; })},
      {2019, index([](Segments& s) { s[1].deltas.resize(3); })},
      {2019, index([](Segments& s) { s[1].entries[2].sliceOffset -= 512; })},
      // No entry for the system element, so that each delta leads to the next track.
      {2019, index([](Segments& s) {
         for (IndexSegment& segment : s)
           segment.deltas.erase(segment.deltas.begin());
       })},
      // One frame twice, fewer than the clip lasts.
      {2031, index([](Segments& s) { s[1].entries[3] = s[1].entries[2]; })},
      {2031, index([](Segments& s) { s[1].entries.pop_back(); })},
      // One frame lost and the rest closed up, the first ones missing, a gap.
      {2031, index([](Segments& s) {
         s[0].entries.erase(s[0].entries.begin());
         s[1].startPosition = 4;
       })},
      {2031, index([](Segments& s) { s[0].startPosition = 5; })},
      {2031, index([](Segments& s) { s[1].startPosition = 6; })},
      // Other frames than the ones they stand for.
      {2031, index([](Segments& s) {
         for (std::size_t i = 0; i < 5; ++i)
           s[0].entries[i].streamOffset = s[1].entries[i].streamOffset;
       })},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    RewrapJob job(cases[i].second);
    job.Silence(1);
    SCOPED_TRACE(i);
    ExpectUntouched(job, cases[i].first);
  }
}

// A clip whose index ends early can be filled as far as the index goes, but only when each segment
// holds what it says.
TEST_P(Rewrap, TrustsAnIndexThatEndsEarlyAsFarAsItGoes) {
  for (const bool valid : {true, false}) {
    ClipSpec spec;
    spec.indexEdits.push_back([&](std::vector<IndexSegment>& s) {
      s[1].entries.pop_back();
      if (valid) --s[1].duration;
    });
    RewrapJob job(spec);
    job.Put(1, Wav(1, 24, kPlenty));
    job.Range(2, 9);  // with the frame that has no entry
    ExpectUntouched(job, 2031);
    job.Range(2, 8);
    SCOPED_TRACE(valid);
    valid ? ExpectExactly(job) : ExpectUntouched(job, 2031);
  }
}

// Bytes in a picture that look like an element, to which the index leads.
TEST_P(Rewrap, IsNotTakenInByAPicture) {
  constexpr std::uint32_t inPicture = 100;
  ClipSpec spec{.pictureSize = 9000, .sliceCount = 0};
  const FramePlace first = BuildClip(spec).layout.frames[0];
  const auto delta = static_cast<std::uint32_t>(first.picture.value + inPicture - first.offset);
  spec.indexEdits.push_back([&](std::vector<IndexSegment>& all) {
    for (IndexSegment& segment : all)
      segment.deltas[2].elementDelta = delta;
  });
  RewrapJob job(spec);
  Bytes bytes = job.clip.bytes;
  for (const FramePlace& frame : job.clip.layout.frames) {
    const auto header = bytes.begin() + static_cast<long>(frame.audio[0].key);
    Patch(bytes, frame.offset + delta, Bytes(header, header + kElementHeaderBytes));
  }
  Rewrite(job, bytes);
  job.Silence(0);
  ExpectUntouched(job, 2019);
}

// A UMID in a picture under a HeaderByteCount that reaches over the essence, and bytes behind the
// sets that are no KLV.
TEST_P(Rewrap, RenewsUmidsInTheHeaderMetadataAlone) {
  RewrapJob job{ClipSpec()};
  Bytes bytes = job.clip.bytes;
  const KlvPlace& last = job.clip.layout.sets.back().klv;
  Patch(bytes, job.clip.layout.frames[3].picture.value, {kSourceUmid.begin(), kSourceUmid.end()});
  Patch(bytes, pack::kHeaderByteCount, Big64(bytes.size() - 1));
  Patch(bytes, last.value + last.valueBytes, Bytes(20));
  Rewrite(job, bytes);
  (*job.app.mxf.base.partitionTable)[0].headerByteCount = bytes.size() - 1;
  job.Silence(1);
  ExpectExactly(job);
}

TEST_P(Rewrap, TouchesNothingWhenTheClipIsNoLongerTheOneThatWasAnalysed) {
  RewrapJob job{ClipSpec()};
  job.Silence(0);
  ASSERT_EQ(job.Run(), 0);
  job.app.mxf.base.materialUmid = kMaterialUmid;
  job.clip.bytes = job.Now();
  ExpectUntouched(job, 2020);
}

TEST_P(Rewrap, TouchesNothingWhenASourceIsNoLongerWhatItWas) {
  const std::pair<std::int32_t, std::function<void(const std::filesystem::path&)>> cases[] = {
      {2008, [](const auto& file) { std::filesystem::remove(file); }},
      {2009, [](const auto& file) { WriteBytes(file, {}); }},
      {2021, [](const auto& file) { WriteBytes(file, BuildWav(Wav(1, 24, kPlenty + 1)).bytes); }},
  };
  for (const auto& [code, change] : cases) {
    RewrapJob job{ClipSpec()};
    job.Put(0, Wav(1, 24, kPlenty));
    change(job.folder.Path() / "track0.wav");
    ExpectUntouched(job, code);
    EXPECT_EQ(std::u16string(job.app.tracks.fault.path), job.folder.PathOf("track0.wav"));
  }
}

TEST_P(Rewrap, KeepsUmidsThatAreNotThirtyTwoBytesOnlyWhenAskedTo) {
  RewrapJob job({.umidSize = 64});
  job.Put(0, Wav(1, 24, kPlenty));
  ExpectUntouched(job, kUmidTooLong);
  job.app.tracks.keepUmids = 1;
  EXPECT_EQ(job.Run(), kDoneWithNotice);
  EXPECT_EQ(job.app.tracks.umidState, kUmidsKept);
  EXPECT_TRUE(job.Now() == job.Expected(false));
  RewrapJob odd({.umidSize = 48});
  odd.Silence(0);
  odd.app.tracks.keepUmids = 1;
  ExpectUntouched(odd, 2032);
}

// What the record says of the clip's identity must stand in the file, renewed or not.
TEST_P(Rewrap, TellsOfAUmidThatDoesNotBeginAsOne) {
  ClipSpec spec;
  Bytes odd(kSourceUmid.begin(), kSourceUmid.end());
  odd[3] = 0x33;
  spec.SetTag(SetKind::kSourcePackage, 0, tag::kPackageUid, odd);
  RewrapJob job(spec);
  job.Silence(0);
  ASSERT_EQ(job.Run(), kDoneWithNotice);
  EXPECT_EQ(job.app.tracks.umidState, kUmidsMixed);
  EXPECT_TRUE(std::equal(odd.begin(), odd.end(), job.app.mxf.base.sourceUmid.begin()));
  EXPECT_NE(job.app.mxf.base.materialUmid, kMaterialUmid);
  EXPECT_EQ(job.Run(), kDoneWithNotice) << "the clip is still the one that is loaded";
}

// Storage that fails for good from the first call of a kind on.
TEST_P(Rewrap, SaysWhatItLeavesOnStorageThatFailsForGood) {
  using Case = std::tuple<SystemCall, std::int32_t, UmidState, std::uint32_t, bool>;
  const Case cases[] = {{SystemCall::kGatheredWrite, Code(2024), kUmidsRenewed, 1, false},
                        {SystemCall::kFlush, Code(2026), kUmidsRenewed, 10, false},
                        {SystemCall::kWrite, kDoneWithNotice, kUmidsOld, 10, false},
                        {SystemCall::kClose, Code(2027), kUmidsRenewed, 10, true}};
  for (const auto& [failing, code, umids, framesBegun, renewed] : cases) {
    RewrapJob job{ClipSpec()};
    job.Silence(0);
    SCOPED_TRACE(code);
    {
      const CallHook storage([kind = failing](SystemCall call, int) {
        return call == kind ? CallOutcome::kFails : CallOutcome::kAsEver;
      });
      EXPECT_EQ(job.Run(), code);
    }
    EXPECT_EQ(job.app.tracks.umidState, umids);
    EXPECT_EQ(job.app.tracks.fault.framesBegun, framesBegun);
    EXPECT_EQ(job.app.mxf.base.materialUmid != kMaterialUmid, renewed);
    EXPECT_TRUE(job.Now() == (framesBegun == 10 ? job.Expected(renewed) : job.clip.bytes));
    if (failing != SystemCall::kFlush) continue;
    job.app.tracks.noFlush = 1;
    EXPECT_EQ(job.Run(), 0) << "nobody waits for the medium";
  }
}

// What befalls clip and source while a job is writing, or before the medium has it all, where the
// system does not keep both from it.
TEST_P(Rewrap, IsNotDoneWhenItsFilesChangeMeanwhile) {
  using Folder = std::filesystem::path;
  using Case = std::tuple<std::uint16_t, SystemCall, std::int32_t, void (*)(const Folder&)>;
  const auto cutSource = [](const Folder& folder) {
    std::filesystem::resize_file(folder / "track0.wav", 4096);
  };
  const Case cases[] = {
      // One whose bytes go into the clip as they are, and one that has to be split.
      {1, SystemCall::kGatheredWrite, 2025, cutSource},
      {2, SystemCall::kGatheredWrite, 2025, cutSource},
      {1, SystemCall::kGatheredWrite, 2025,
       [](const Folder& folder) {
         const auto source = folder / "track0.wav";
         last_write_time(source, last_write_time(source) + std::chrono::seconds(1));
       }},
      {1, SystemCall::kGatheredWrite, 2024,
       [](const Folder& folder) { std::filesystem::resize_file(folder / "clip.mxf", 4096); }},
      // The bytes went somewhere else than to the clip of that name.
      {1, SystemCall::kFlush, 2020,
       [](const Folder& folder) {
         std::filesystem::rename(folder / "clip.mxf", folder / "old");
         std::filesystem::copy_file(folder / "old", folder / "clip.mxf");
       }},
  };
  for (const auto& [channels, call, code, change] : cases) {
    RewrapJob job{ClipSpec()};
    job.Put(0, Wav(channels, 24, kPlenty));
    std::int32_t result = -1;
    {
      bool isChanged = false;
      const CallHook changing(call, call == SystemCall::kFlush ? 1 : 3, [&, step = change] {
        try {
          step(job.folder.Path());
          isChanged = true;
        } catch (const std::filesystem::filesystem_error&) {
        }
      });
      result = job.Run();
      EXPECT_EQ(result, isChanged ? Code(code) : 0);
    }
    EXPECT_TRUE(platform::File::Open(job.path, platform::OpenMode::kRewrite).IsOpen());
    if (job.Now().size() != job.clip.bytes.size()) continue;
    const bool renewed = result == 0;
    EXPECT_TRUE(job.Without(job.Now(), renewed, true) ==
                job.Without(job.clip.bytes, renewed, true));
  }
}

TEST_P(Rewrap, SetsTheTimesAndKeepsTheCreation) {
  RewrapJob job{ClipSpec()};
  job.Silence(0);
  const std::filesystem::path clip = platform::ToUtf8(job.path);
  const auto made = platform::QueryFileInfo(job.path);
  last_write_time(clip, last_write_time(clip) - std::chrono::hours(1));
  const auto before = platform::QueryFileInfo(job.path);
  ASSERT_EQ(job.Run(), 0);
  const auto after = platform::QueryFileInfo(job.path);
  EXPECT_GT(after->times.lastWrite, before->times.lastWrite);
  const bool systemKeepsCreation = before->times.creation == made->times.creation;
  EXPECT_TRUE(after->times.creation == before->times.creation || !systemKeepsCreation);
}

// Eight channels, of which a block that stays in the cache has 32 frames, in a clip that has to
// come from the medium, with tracks left out between those that are replaced.
TEST_P(Rewrap, WritesTheSameWhereverABlockEnds) {
  constexpr std::uint32_t block = 32;
  // Files that end behind the range, with a block, and within one.
  const std::pair<std::uint32_t, std::uint64_t> cases[] = {{block - 1, 200000},
                                                           {block, block * 1920},
                                                           {block + 1, block * 1920},
                                                           {2 * block, block * 1920 - 1},
                                                           {2 * block + 1, 200000}};
  for (const auto& [frames, samples] : cases) {
    RewrapJob job({.frames = 70, .framesPerPartition = 30, .tracks = 12});
    job.Put(0, Wav(8, 24, samples));
    job.Silence(9);
    job.Silence(11);
    job.Range(3, 3 + frames - 1);
    SCOPED_TRACE(frames);
    DropFromMemory(job.path);
    ExpectExactly(job);
  }
}

TEST(RewrapFileIo, TouchesNothingWhenTheBlockIsTooLarge) {
  RewrapJob::fileIo = true;
  RewrapJob job({.tracks = 24});
  job.Put(0, Wav(1, 24, kPlenty));
  for (const std::uint32_t row : {13u, 14u}) {
    job.app.tracks.wavBufferIndex = row;
    ExpectUntouched(job, 2010);
  }
  job.app.tracks.wavBufferIndex = 7;
  ExpectExactly(job);
}

// Up to the last flush in front of the new UMIDs.
TEST_P(Rewrap, StopsBehindTheFrameOfACancelAndKeepsTheOldIdentity) {
  using Case = std::tuple<SystemCall, int, std::uint32_t>;
  const Case cases[] = {{SystemCall::kSize, 0, 0},
                        {SystemCall::kGatheredWrite, 1, 1},
                        {SystemCall::kGatheredWrite, 6, 6},
                        {SystemCall::kFlush, 1, 10}};
  for (const auto& [call, nth, frames] : cases) {
    RewrapJob job{ClipSpec()};
    job.Silence(0);
    job.app.tracks.cancel = 1;  // left over from before: no effect
    const CallHook operatorStops(call, nth, [&] { job.app.tracks.cancel = 1; });
    SCOPED_TRACE(frames);
    EXPECT_EQ(job.Run(), kCancelled);
    EXPECT_EQ(job.app.tracks.cancel, 0u);
    EXPECT_EQ(job.app.tracks.fault.framesBegun, frames);
    if (frames > 0) job.Range(0, frames - 1);
    EXPECT_TRUE(job.Now() == (frames > 0 ? job.Expected(false) : job.clip.bytes));
  }
}

constexpr int kKilled = 77;  // the exit status of a process that ended in the middle of its job

// A test that runs a job in a process of its own starts its program again, with these two
// arguments behind the filter for the test.
struct EndedJob {
  std::string path;  // of the clip
  int change = 0;    // before which the process ends
};

std::optional<EndedJob> JobToEnd() {
  const auto arguments = ::testing::internal::GetArgvs();
  if (arguments.size() != 4) return std::nullopt;
  return EndedJob{arguments[2], std::stoi(arguments[3])};
}

// Runs the job in this process, which ends before the change that is asked for.
[[noreturn]] void RunToEnd(RewrapJob& job, const EndedJob& ended) {
  job.path = platform::ToUtf16(ended.path);
  int changes = 0;
  const CallHook killer([&](SystemCall call, int) {
    const bool isChange = call == SystemCall::kGatheredWrite || call == SystemCall::kWrite ||
                          call == SystemCall::kFlush;
    if (isChange && ++changes == ended.change) std::_Exit(kKilled);
    return CallOutcome::kAsEver;
  });
  std::_Exit(job.Run());
}

// Runs the job in a process of its own, which ends before its `nth` change to the clip. False when
// the job has ended before.
bool IsKilled(RewrapJob& job, int nth) {
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::string command = ::testing::internal::GetArgvs()[0] +
                              " --gtest_filter=" + test->test_suite_name() + "." + test->name() +
                              " " + platform::ToUtf8(job.path) + " " + std::to_string(nth);
  const int status = std::system(command.c_str());
  EXPECT_TRUE(status == 0 || status == kKilled || status == kKilled << 8) << status;
  return status != 0;
}

// True when a package that has its new UMID is still referred to by the old one.
bool IsOrphaned(const Bytes& bytes, std::uint64_t own, const std::vector<std::uint64_t>& places,
                const Umid& old) {
  const auto isOld = [&](std::uint64_t place) {
    return std::equal(old.begin(), old.end(), bytes.begin() + static_cast<long>(place));
  };
  return !isOld(own) && std::any_of(places.begin(), places.end(), isOld);
}

TEST_P(Rewrap, LeavesAValidClipWhereverItIsKilled) {
  RewrapJob job{ClipSpec()};
  job.Silence(0);
  job.Range(1, 8);
  if (const auto ended = JobToEnd()) RunToEnd(job, *ended);
  int kills = 0;
  while (IsKilled(job, kills + 1)) {
    ++kills;
    const Bytes now = job.Now();
    ASSERT_TRUE(job.Without(now, true, true) == job.Without(job.clip.bytes, true, true));
    const ClipLayout& layout = job.clip.layout;
    const auto own = [&](SetKind kind) { return layout.TagValueOffset(kind, tag::kPackageUid); };
    EXPECT_FALSE(
        IsOrphaned(now, own(SetKind::kMaterialPackage), layout.materialUmids, kMaterialUmid));
    EXPECT_FALSE(IsOrphaned(now, own(SetKind::kSourcePackage), layout.sourceUmids, kSourceUmid));
    MxfRecords again;
    platform::File file = platform::File::Open(job.path, platform::OpenMode::kReadAlone);
    ASSERT_EQ(AnalyzeMxfFile(&file, &again.base), 0) << "before change " << kills;
    file.Close();
    Rewrite(job, job.clip.bytes);
  }
  EXPECT_GT(kills, 15);
  EXPECT_TRUE(job.Now() == job.Expected());
}

}  // namespace
}  // namespace quorvan
