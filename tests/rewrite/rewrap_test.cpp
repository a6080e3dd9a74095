#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <functional>
#include <thread>

#include "platform/fault_seam.h"
#include "platform/text.h"
#include "rewrap_job.h"
#include "state/wav_buffer.h"
#include "support/mxf_tags.h"

namespace quorvan {
namespace {

using namespace test;

WavSpec Wav(std::uint16_t channels, std::uint16_t bits, std::uint64_t sampleFrames) {
  WavSpec wav;
  wav.channels = channels;
  wav.bits = bits;
  wav.sampleFrames = sampleFrames;
  return wav;
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
  switch (mapped) {
    case 2006:
      return 3007;
    case 2009:
      return 3021;
    case 2010:
      return 3006;
    default:
      return mapped + 1000;
  }
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

// The result, with a file in which nothing changed.
void ExpectUntouched(RewrapJob& job, std::int32_t code) {
  EXPECT_EQ(job.Run(), Code(code));
  EXPECT_TRUE(job.Now() == job.clip.bytes);
  for (const platform::File& file : job.app.tracks.wavHandle)
    EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(platform::File::Open(job.path, platform::OpenMode::kRewrite).IsOpen());
}

TEST_P(Rewrap, WritesMonoStereoAndEightChannelsAtEveryRate) {
  for (const Rate rate : {Rate::k24, Rate::k25, Rate::k30, Rate::k50, Rate::k60, Rate::k23_98,
                          Rate::k29_97, Rate::k59_94}) {
    ClipSpec spec;
    spec.rate = rate;
    spec.dropFrame = true;
    spec.tracks = 12;
    spec.frames = 17;
    RewrapJob job(spec);
    job.Put(0, Wav(1, 24, kPlenty));
    job.Put(2, Wav(8, 24, kPlenty));
    job.Put(10, Wav(2, 24, kPlenty));
    job.Range(2, 14);
    SCOPED_TRACE(static_cast<int>(rate));
    ExpectExactly(job);
  }
}

// A clip that has to come from the medium, with tracks left out between those that are replaced.
TEST_P(Rewrap, LeavesTheSameBytesWhereTheClipIsNotInMemory) {
  ClipSpec spec;
  spec.tracks = 9;
  spec.frames = 200;
  spec.framesPerPartition = 70;
  RewrapJob job(spec);
  job.Put(0, Wav(2, 24, 1 << 20));
  job.Put(3, Wav(1, 24, 1 << 20));
  job.Silence(4);
  job.Put(8, Wav(1, 16, 1 << 20));
  job.Range(3, 190);
  DropFromMemory(job.path);
  ExpectExactly(job);
}

// What stands between the values of a row is written with it: it differs from frame to frame here,
// in more ways than are kept.
TEST_P(Rewrap, LeavesEveryFillAsItWas) {
  ClipSpec spec;
  spec.frames = 150;
  spec.framesPerPartition = 0;
  RewrapJob job(spec);
  Bytes bytes = job.clip.bytes;
  for (std::size_t f = 0; f < job.clip.layout.frames.size(); ++f) {
    const auto& audio = job.clip.layout.frames[f].audio;
    for (std::size_t t = 0; t + 1 < audio.size(); ++t)
      bytes[audio[t + 1].key - 1] = static_cast<std::uint8_t>(f % 100 + t);
  }
  job.clip.bytes = bytes;
  ASSERT_TRUE(WriteBytes(job.folder.Path() / "clip.mxf", bytes));
  job.Put(0, Wav(4, 24, 1 << 20));
  DropFromMemory(job.path);
  ExpectExactly(job);
}

TEST_P(Rewrap, LiftsSixteenBitsIntoTheUpperBytes) {
  for (const std::uint32_t bits : {16u, 24u}) {
    ClipSpec spec;
    spec.bits = bits;
    spec.waveAudio = true;
    RewrapJob job(spec);
    job.Put(0, Wav(1, 16, kPlenty));
    job.Put(2, Wav(2, 16, kPlenty));
    ExpectExactly(job);
  }
}

TEST_P(Rewrap, FillsUpWithSilenceBehindTheEndOfAFile) {
  for (const std::uint64_t samples : {0u, 1u, 1919u, 1920u, 1921u, 9599u, 9600u, 19199u}) {
    RewrapJob job{ClipSpec()};
    job.Put(0, Wav(1, 24, samples));
    job.Put(2, Wav(2, 16, samples));
    SCOPED_TRACE(samples);
    ExpectExactly(job);
  }
}

TEST_P(Rewrap, WritesAnyRangeOverTheSegments) {
  const std::pair<std::uint32_t, std::uint32_t> ranges[] = {{0, 0}, {9, 9}, {4, 5},  {5, 5},
                                                            {0, 9}, {3, 7}, {4, 22}, {22, 22}};
  for (const auto placement : {IndexPlacement::kFollowingPartition, IndexPlacement::kFooter}) {
    for (const auto& [in, out] : ranges) {
      ClipSpec spec;
      spec.frames = 23;
      spec.indexPlacement = placement;
      RewrapJob job(spec);
      job.Put(1, Wav(1, 24, kPlenty));
      job.Silence(3);
      job.Range(in, out);
      SCOPED_TRACE(in * 100 + out);
      ExpectExactly(job);
    }
  }
}

TEST_P(Rewrap, WritesEveryShapeOfFrame) {
  std::vector<ClipSpec> shapes(8);
  shapes[0].tracks = 1;
  shapes[1].tracks = 24;
  shapes[1].frames = 3;
  shapes[2].dataTrack = shapes[2].dataElement = true;
  shapes[3].dataTrack = true;  // announced, but in no frame
  shapes[4].elementKag = 0;
  shapes[5].sliceCount = 0;
  shapes[6].start = {23, 59, 59, 20};
  shapes[6].rate = Rate::k29_97;
  shapes[6].dropFrame = true;
  shapes[7].indexEdits.push_back(
      [](std::vector<IndexSegment>& all) { all[0].duration = 0x7FFFFFFFFFFFFFFF; });
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    RewrapJob job(shapes[i]);
    // The mapped engine refuses a duration that does not fit its limit with a file, not with
    // silence.
    i == 7 ? job.Silence(0) : job.Put(0, Wav(1, 24, kPlenty));
    if (shapes[i].tracks > 1) job.Silence(1);
    SCOPED_TRACE(i);
    ExpectExactly(job);
  }
}

// Each track's own lamp decides, whatever the others of its file do.
TEST_P(Rewrap, WritesOnlyTracksThatAreOnWithTheirOwnChannels) {
  for (const std::uint32_t on : {0b0001u, 0b0010u, 0b0101u, 0b1010u, 0b1101u}) {
    RewrapJob job{ClipSpec()};
    job.Put(0, Wav(4, 24, kPlenty));
    for (std::uint32_t t = 0; t < 4; ++t)
      job.app.tracks.rewrapSwitch[t] = (on >> t & 1) != 0 ? kSwitchOn : kSwitchOff;
    ASSERT_EQ(job.Run(), 0);
    const Bytes expected = job.Expected();
    const Bytes now = job.Now();
    for (const FramePlace& frame : job.clip.layout.frames) {
      for (std::uint32_t t = 0; t < 4; ++t) {
        const auto slice = [&](const Bytes& bytes) {
          const auto from = bytes.begin() + static_cast<long>(frame.audio[t].value);
          return Bytes(from, from + static_cast<long>(frame.audio[t].valueBytes));
        };
        const bool isOn = job.app.tracks.rewrapSwitch[t] == kSwitchOn;
        ASSERT_TRUE(slice(now) == slice(isOn ? expected : job.clip.bytes)) << on << " track " << t;
      }
    }
  }
}

TEST_P(Rewrap, RefusesAJobWithNothingOn) {
  RewrapJob job{ClipSpec()};
  job.Put(0, Wav(1, 24, kPlenty));
  job.app.tracks.rewrapSwitch[0] = kSwitchOff;
  ExpectUntouched(job, 2015);
}

// The clip says neither start nor length, or not how its samples look.
TEST_P(Rewrap, RefusesAClipThatDoesNotSayEnough) {
  ClipSpec noTimecode;
  noTimecode.timecodeTracks = 0;
  ClipSpec noBits;
  noBits.RemoveTag(SetKind::kAes3Descriptor, 0, tag::kQuantizationBits);
  ClipSpec noRate;
  noRate.RemoveTag(SetKind::kAes3Descriptor, 0, tag::kAudioSamplingRate);
  const std::pair<ClipSpec, std::int32_t> cases[] = {
      {noTimecode, 2016}, {noBits, 2017}, {noRate, 2017}};
  for (const auto& [spec, code] : cases) {
    RewrapJob job(spec);
    job.Silence(0);
    ExpectUntouched(job, code);
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
  job.app.mxf.timecode.rateIndex = 8;
  ExpectUntouched(job, 2004);
}

TEST_P(Rewrap, IsRefusedWhileAnotherHoldsTheClip) {
  RewrapJob job{ClipSpec()};
  job.Silence(0);
  const auto other = platform::File::Open(job.path, platform::OpenMode::kReadShared);
  EXPECT_EQ(job.Run(), Code(2006));
  EXPECT_TRUE(job.Now() == job.clip.bytes);
}

// What stands where audio should be, in frame 6 of 10 on track 1.
TEST_P(Rewrap, TouchesNothingUnlessEveryValueIsAnAudioElement) {
  const std::pair<std::int32_t, std::function<void(Bytes&, const KlvPlace&)>> damages[] = {
      {2019, [](Bytes& b, const KlvPlace& e) { b[e.key] ^= 1; }},
      {2019, [](Bytes& b, const KlvPlace& e) { b[e.key + 12] = 0x15; }},
      {2019, [](Bytes& b, const KlvPlace& e) { b[e.key + 14] = 0x01; }},
      {2019, [](Bytes& b, const KlvPlace& e) { b[e.key + 16] = 0x87; }},
      // A sample less, and a sample more, than the frame has.
      {2018,
       [](Bytes& b, const KlvPlace& e) {
         Patch(b, e.key + 17, {0, 0x16, 0x7D});
       }},
      {2018,
       [](Bytes& b, const KlvPlace& e) {
         Patch(b, e.key + 17, {0, 0x16, 0x83});
       }},
      {2020, [](Bytes& b, const KlvPlace& e) { b.resize(e.value + 100); }},
      {2020, [](Bytes& b, const KlvPlace&) { b.push_back(0); }},
  };
  for (const auto& [code, damage] : damages) {
    RewrapJob job{ClipSpec()};
    job.Put(1, Wav(1, 24, kPlenty));
    damage(job.clip.bytes, job.clip.layout.frames[6].audio[1]);
    ASSERT_TRUE(WriteBytes(platform::ToUtf8(job.path), job.clip.bytes));
    ExpectUntouched(job, code);
    EXPECT_EQ(job.app.tracks.fault.frame, code == 2020 ? kNoFrame : 6u);
    EXPECT_EQ(job.app.tracks.fault.framesBegun, 0u);
  }
}

TEST_P(Rewrap, TouchesNothingWhenTheIndexLeadsAstray) {
  using Segments = std::vector<IndexSegment>;
  const std::function<void(Segments&)> edits[] = {
      [](Segments& s) { s[1].deltas[3] = s[1].deltas[2]; },     // a neighbour's element
      [](Segments& s) { s[1].deltas[3].elementDelta += 512; },  // behind its key
      [](Segments& s) { s[1].deltas.resize(3); },               // no entry for the track
      [](Segments& s) { s[1].entries[3] = s[1].entries[2]; },   // one frame twice
      [](Segments& s) { std::swap(s[1].entries[3], s[1].entries[1]); },
      [](Segments& s) { s[1].entries[2].sliceOffset -= 512; },
      [](Segments& s) { s[1].entries.pop_back(); },  // fewer frames than the clip lasts
      [](Segments& s) {                              // one frame lost, the rest closed up
        s[0].entries.erase(s[0].entries.begin());
        s[1].startPosition = 4;
      },
      [](Segments& s) { s[0].startPosition = 5; },  // the first frames are missing
      [](Segments& s) { s[1].startPosition = 6; },  // a gap
      // No entry for the system element, so that each delta leads to the next track.
      [](Segments& s) {
        for (IndexSegment& segment : s)
          segment.deltas.erase(segment.deltas.begin());
      },
      // Other frames than the ones they stand for.
      [](Segments& s) {
        for (std::size_t i = 0; i < 5; ++i) {
          s[0].entries[i].streamOffset = s[1].entries[i].streamOffset;
        }
      },
  };
  constexpr std::int32_t codes[] = {2019, 2019, 2019, 2031, 2031, 2019,
                                    2031, 2031, 2031, 2031, 2019, 2031};
  for (std::size_t i = 0; i < std::size(edits); ++i) {
    ClipSpec spec;
    spec.indexEdits.push_back(edits[i]);
    RewrapJob job(spec);
    job.Silence(1);
    SCOPED_TRACE(i);
    ExpectUntouched(job, codes[i]);
  }
}

// A clip whose index ends early can be filled as far as the index goes, but only when each segment
// holds what it says.
TEST_P(Rewrap, TrustsAnIndexThatEndsEarlyAsFarAsItGoes) {
  for (const bool sound : {true, false}) {
    ClipSpec spec;
    spec.frames = 10;
    spec.indexEdits.push_back([&](std::vector<IndexSegment>& s) {
      s[1].entries.pop_back();
      if (sound) --s[1].duration;
    });
    RewrapJob job(spec);
    job.Put(1, Wav(1, 24, kPlenty));
    job.Range(2, 9);  // with the frame that has no entry
    ExpectUntouched(job, 2031);
    job.Range(2, 8);
    SCOPED_TRACE(sound);
    if (sound) {
      ExpectExactly(job);
    } else {
      ExpectUntouched(job, 2031);
    }
  }
}

// Bytes in a picture that look like what may be written.
TEST_P(Rewrap, IsNotTakenInByAPicture) {
  ClipSpec spec;
  spec.sliceCount = 0;
  spec.pictureSize = 9000;
  std::uint32_t delta = 0;
  {
    const Clip probe = BuildClip(spec);
    const FramePlace& frame = probe.layout.frames[0];
    delta = static_cast<std::uint32_t>(frame.picture.value + 100 - frame.offset);
  }
  spec.indexEdits.push_back([&](std::vector<IndexSegment>& all) {
    for (IndexSegment& segment : all)
      segment.deltas[2].elementDelta = delta;
  });
  RewrapJob job(spec);
  for (const FramePlace& frame : job.clip.layout.frames) {
    const auto header = job.clip.bytes.begin() + static_cast<long>(frame.audio[0].key);
    Patch(job.clip.bytes, frame.offset + delta, Bytes(header, header + kElementHeaderBytes));
  }
  ASSERT_TRUE(WriteBytes(platform::ToUtf8(job.path), job.clip.bytes));
  job.Silence(0);
  ExpectUntouched(job, 2019);

  ClipSpec umids;
  RewrapJob lookalike(umids);
  Bytes& bytes = lookalike.clip.bytes;
  const FramePlace& frame = lookalike.clip.layout.frames[3];
  Patch(bytes, frame.picture.value, {kSourceUmid.begin(), kSourceUmid.end()});
  Patch(bytes, pack::kHeaderByteCount, Big64(bytes.size() - 1));
  ASSERT_TRUE(WriteBytes(platform::ToUtf8(lookalike.path), bytes));
  (*lookalike.app.mxf.base.partitionTable)[0].headerByteCount = bytes.size() - 1;
  lookalike.Silence(1);
  ExpectExactly(lookalike);
}

TEST_P(Rewrap, TouchesNothingWhenTheElementsAreOfAnotherWidthOrRate) {
  ClipSpec narrow;  // elements of 24 bits under a descriptor of 16
  narrow.sliceCount = 0;
  narrow.SetTag(SetKind::kAes3Descriptor, 0, tag::kQuantizationBits, Big32(16));
  narrow.SetTag(SetKind::kAes3Descriptor, 0, tag::kBlockAlign, Big16(2));
  ClipSpec slow;  // frames of 1602 and 1601 samples under a picture of 30/1
  slow.rate = Rate::k29_97;
  slow.SetTag(SetKind::kMpegVideoDescriptor, 0, tag::kSampleRate, {0, 0, 0, 30, 0, 0, 0, 1});
  for (const ClipSpec& spec : {narrow, slow}) {
    RewrapJob job(spec);
    job.Silence(1);
    ExpectUntouched(job, 2018);
  }
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
  ClipSpec huge;
  huge.indexEdits.push_back([](auto& all) { all[0].duration = 0x7FFFFFFFFFFFFFFF; });
  RewrapJob job(huge);
  job.Put(0, Wav(1, 24, kPlenty));
  if (GetParam()) return ExpectExactly(job);
  ExpectUntouched(job, 2011);
}

// A stream's header, whose file is taken to its end.
TEST_P(Rewrap, TakesAStreamToItsEnd) {
  RewrapJob job{ClipSpec()};
  WavSpec stream = Wav(2, 24, 9000);
  stream.dataSize = 0xFFFFFFFF;
  job.Put(0, stream);
  ExpectExactly(job);
}

TEST_P(Rewrap, KeepsUmidsThatAreNotThirtyTwoBytesOnlyWhenAskedTo) {
  ClipSpec spec;
  spec.umidSize = 64;
  RewrapJob job(spec);
  job.Put(0, Wav(1, 24, kPlenty));
  ExpectUntouched(job, kUmidTooLong);
  job.app.tracks.keepUmids = 1;
  EXPECT_EQ(job.Run(), kDoneWithNotice);
  EXPECT_EQ(job.app.tracks.umidState, kUmidsKept);
  EXPECT_TRUE(job.Now() == job.Expected(false));
  spec.umidSize = 48;
  RewrapJob odd(spec);
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

// A false Source Package in the fill behind the pack, whose length and tags lead into the picture.
TEST_P(Rewrap, StampsNoPackageThatTheAnalysisDidNotAccept) {
  RewrapJob job{ClipSpec()};
  Bytes& bytes = job.clip.bytes;
  const std::uint64_t value = 300;
  const std::uint64_t target = job.clip.layout.frames[0].picture.value;
  const std::uint64_t item = target - value - 4;
  ASSERT_LT(item, 0x10000u);
  const std::uint64_t packEnd = 20 + job.app.mxf.partitionTable[0].packLength;
  ASSERT_LT(packEnd, value - 24);
  Patch(bytes, packEnd, {0, 0, 0, 0});  // the fill is none any more
  Patch(bytes, value - 24, {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01, 0x0D, 0x01, 0x01, 0x01,
                            0x01, 0x01, 0x37, 0x00, 0x87, 0,    0,    0,    0,    1,    0,    0});
  Patch(bytes, value, Big16(0x1234));
  Patch(bytes, value + 2, Big16(static_cast<std::uint16_t>(item)));
  Patch(bytes, target, Big16(tag::kPackageModifiedDate));
  Patch(bytes, target + 2, Big16(8));
  ASSERT_TRUE(WriteBytes(platform::ToUtf8(job.path), bytes));
  job.Silence(1);
  ASSERT_EQ(job.Run(), 0);
  EXPECT_TRUE(job.Now() == job.Expected());
}

std::string clipPath;

// The bytes went somewhere else than to the clip of that name.
TEST_P(Rewrap, IsNotDoneWhenAnotherFileStandsUnderThePathOfTheClip) {
  RewrapJob job{ClipSpec()};
  job.Silence(0);
  clipPath = platform::ToUtf8(job.path);
  platform::SetFaultSeam([](platform::SystemCall call) {
    if (call == platform::SystemCall::kFlush && !std::filesystem::exists(clipPath + ".old")) {
      std::filesystem::rename(clipPath, clipPath + ".old");
      std::filesystem::copy_file(clipPath + ".old", clipPath);
    }
    return platform::CallOutcome::kAsEver;
  });
  const std::int32_t result = job.Run();
  platform::SetFaultSeam(nullptr);
  EXPECT_EQ(result, Code(2020));
}

platform::SystemCall lostCall;

// Storage that fails from some moment on, for one kind of call.
TEST_P(Rewrap, SaysWhatItLeavesOnStorageThatFailsForGood) {
  using platform::SystemCall;
  struct Case {
    SystemCall call;
    std::int32_t code;
    UmidState umids;
    bool renewed;
  };
  const Case cases[] = {{SystemCall::kGatheredWrite, 2024, kUmidsRenewed, false},
                        {SystemCall::kFlush, 2026, kUmidsRenewed, false},
                        {SystemCall::kWrite, kDoneWithNotice, kUmidsOld, false},
                        {SystemCall::kClose, 2027, kUmidsRenewed, true}};
  for (const Case& c : cases) {
    RewrapJob job{ClipSpec()};
    job.Silence(0);
    lostCall = c.call;
    platform::SetFaultSeam([](SystemCall call) {
      return call == lostCall ? platform::CallOutcome::kFails : platform::CallOutcome::kAsEver;
    });
    const std::int32_t result = job.Run();
    platform::SetFaultSeam(nullptr);
    SCOPED_TRACE(c.code);
    EXPECT_EQ(result, c.code == kDoneWithNotice ? c.code : Code(c.code));
    EXPECT_EQ(job.app.tracks.umidState, c.umids);
    EXPECT_EQ(job.app.tracks.fault.framesBegun, c.call == SystemCall::kGatheredWrite ? 1u : 10u);
    if (c.call == SystemCall::kGatheredWrite) {
      EXPECT_TRUE(job.Now() == job.clip.bytes);
    } else {
      EXPECT_TRUE(job.Now() == job.Expected(c.renewed));
    }
    if (c.call != SystemCall::kFlush) continue;
    job.app.tracks.noFlush = 1;
    EXPECT_EQ(job.Run(), 0) << "nobody waits for the medium";
  }
}

TEST_P(Rewrap, SetsTheTimesAndKeepsTheCreation) {
  RewrapJob job{ClipSpec()};
  job.Silence(0);
  {
    platform::File file = platform::File::Open(job.path, platform::OpenMode::kRewrite);
    platform::FileTimes old = *file.Times();
    old.lastWrite = old.lastAccess = 130000000000000000;
    ASSERT_TRUE(file.SetTimes(old));
  }
  const auto before = platform::QueryFileInfo(job.path);
  ASSERT_EQ(job.Run(), 0);
  const auto after = platform::QueryFileInfo(job.path);
  EXPECT_GT(after->times.lastWrite, before->times.lastWrite);
  EXPECT_EQ(after->times.creation, before->times.creation);
}

// Blocks of the shortest row, a minute: ranges below, at and above its multiples.
TEST(RewrapFileIo, WritesTheSameWhateverTheBlock) {
  RewrapJob::fileIo = true;
  ClipSpec spec = LongClip();
  spec.rate = Rate::k24;
  spec.frames = 2900;
  constexpr std::uint32_t block = 24 * 60;
  const auto run = [](const ClipSpec& description, std::uint32_t row, std::uint32_t in,
                      std::uint32_t frames, std::uint64_t samples) {
    RewrapJob job(description);
    job.Put(0, Wav(1, 16, samples));
    job.Range(in, in + frames - 1);
    job.app.tracks.wavBufferIndex = row;
    SCOPED_TRACE(row * 10000 + frames);
    ExpectExactly(job);
  };
  // Files that end behind the range, with a block, and within one.
  run(spec, 0, 7, block - 1, 5999999);
  run(spec, 0, 7, block, std::uint64_t{block} * 2000);
  run(spec, 0, 7, block + 1, std::uint64_t{block} * 2000);
  run(spec, 0, 0, 2 * block, std::uint64_t{block} * 2000 - 1);
  run(spec, 0, 7, 2 * block + 1, 5999999);
  ClipSpec small;
  small.bits = 16;
  for (std::uint32_t row = 1; row < kWavBufferRows.size(); ++row)
    run(small, row, 1, 8, 9000);
}

TEST(RewrapFileIo, TouchesNothingWhenTheBlockIsTooLarge) {
  RewrapJob::fileIo = true;
  ClipSpec spec;
  spec.tracks = 24;
  RewrapJob job(spec);
  job.Put(0, Wav(1, 24, kPlenty));
  for (const std::uint32_t row : {13u, 14u}) {
    job.app.tracks.wavBufferIndex = row;
    ExpectUntouched(job, 2010);
  }
  job.app.tracks.wavBufferIndex = 7;
  ExpectExactly(job);
}

TEST_P(Rewrap, StopsBehindTheFrameOfACancelAndKeepsTheOldIdentity) {
  for (int attempt = 0;; ++attempt) {
    ASSERT_LT(attempt, 20) << "never caught it at work";
    RewrapJob job(LongClip());
    job.Silence(0);
    job.app.tracks.cancel = 1;  // left over from before: no effect
    std::int32_t result = -1;
    std::thread worker([&] { result = job.Run(); });
    while (job.app.tracks.currentFrame < 10) {
    }
    job.app.tracks.cancel = 1;
    worker.join();
    if (result == 0) continue;
    ASSERT_EQ(result, kCancelled);
    const std::uint32_t done = job.app.tracks.currentFrame + 1;
    EXPECT_EQ(job.app.tracks.cancel, 0u);
    job.Range(0, done - 1);
    EXPECT_TRUE(job.Now() == job.Expected(false));
    break;
  }
}

TEST_P(Rewrap, TouchesNothingWhenItIsCancelledBeforeItWrites) {
  RewrapJob job(LongClip());
  job.Silence(0);
  std::atomic<bool> ended = false;
  std::thread operatorThread([&] {
    while (!ended)
      job.app.tracks.cancel = 1;
  });
  EXPECT_EQ(job.Run(), kCancelled);
  ended = true;
  operatorThread.join();
  EXPECT_TRUE(job.Now() == job.clip.bytes);
}

TEST_P(Rewrap, SurvivesAFileThatIsCutShortWhileItIsWritten) {
  for (int attempt = 0;; ++attempt) {
    ASSERT_LT(attempt, 20) << "never caught it at work";
    RewrapJob job(LongClip());
    job.Silence(0);
    std::int32_t result = -1;
    std::thread worker([&] { result = job.Run(); });
    while (job.app.tracks.currentFrame < 10) {
    }
    std::filesystem::resize_file(platform::ToUtf8(job.path), 4096);
    worker.join();
    if (result == 0) continue;
    EXPECT_EQ(result, Code(2024));
    EXPECT_TRUE(platform::File::Open(job.path, platform::OpenMode::kRewrite).IsOpen());
    break;
  }
}

TEST_P(Rewrap, IsNotDoneWhenASourceHasChangedMeanwhile) {
  for (int attempt = 0;; ++attempt) {
    ASSERT_LT(attempt, 20) << "never caught it at work";
    RewrapJob job(LongClip());
    job.Put(0, Wav(1, 16, 20000 * 800));
    const std::string source = platform::ToUtf8(job.folder.PathOf("track0.wav"));
    std::int32_t result = -1;
    std::thread worker([&] { result = job.Run(); });
    while (job.app.tracks.currentFrame < 10) {
    }
    std::fstream(source, std::ios::in | std::ios::out | std::ios::binary).seekp(1000) << "take 2";
    worker.join();
    if (result == 0) continue;
    EXPECT_EQ(result, Code(2025));
    EXPECT_EQ(job.app.tracks.fault.framesBegun, job.spec.frames);
    job.Expected(false);  // the UMIDs are the old ones
    break;
  }
}

TEST_P(Rewrap, SurvivesASourceThatIsCutShortWhileItIsRead) {
  // One whose bytes go into the clip as they are, and one that has to be split.
  const std::uint16_t channels[] = {1, 2};
  ClipSpec spec = LongClip();
  spec.tracks = 2;
  int caught = 0;
  for (int attempt = 0; caught < 2; ++attempt) {
    ASSERT_LT(attempt, 20) << "never caught it at work";
    RewrapJob job(spec);
    job.Put(0, Wav(channels[caught], 16, 20000 * 800));
    std::int32_t result = -1;
    std::thread worker([&] { result = job.Run(); });
    while (job.app.tracks.currentFrame < 10) {
    }
    std::filesystem::resize_file(platform::ToUtf8(job.folder.PathOf("track0.wav")), 4096);
    worker.join();
    if (result == 0) continue;
    EXPECT_EQ(result, Code(2025));
    EXPECT_TRUE(platform::File::Open(job.path, platform::OpenMode::kRewrite).IsOpen());
    ++caught;
  }
}

}  // namespace
}  // namespace quorvan
