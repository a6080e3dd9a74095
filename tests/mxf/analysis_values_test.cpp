#include <gtest/gtest.h>

#include <algorithm>

#include "analysed.h"
#include "mxf/metadata/readers.h"
#include "support/mxf_tags.h"

namespace quorvan {
namespace {

using namespace test;

// Every place that the analysis finds, against where the builder put it.
void ExpectPlaces(const ClipSpec& spec) {
  const Clip clip = BuildClip(spec);
  Analysed analysed;
  ASSERT_TRUE(Analyse(clip.bytes, &analysed));
  ASSERT_EQ(analysed.result, 0);
  const MxfRecords& r = analysed.records;
  ASSERT_EQ(r.timecode.frameCount, spec.frames);
  ASSERT_EQ(r.partitionTable[0].partitionCount, clip.layout.partitions.size());
  for (std::size_t i = 0; i < clip.layout.partitions.size(); ++i) {
    EXPECT_EQ(r.partitionTable[i].thisPartition, clip.layout.partitions[i].offset);
    EXPECT_EQ(r.partitionTable[i].kind + 2, clip.layout.partitions[i].keyKind);
  }
  for (std::uint32_t f = 0; f < spec.frames; ++f) {
    const INDEX_ENTRY_ARRAY& entry = r.indexEntries[f];
    const FramePlace& frame = clip.layout.frames[f];
    ASSERT_EQ(entry.fileOffset, frame.offset) << f;
    ASSERT_EQ(entry.audioSamples, frame.samples) << f;
    EXPECT_EQ(entry.partition->thisPartition, clip.layout.partitions[frame.partition].offset);
    for (std::uint32_t t = 0; t < spec.tracks && t + 2 < entry.deltaCount; ++t) {
      ASSERT_EQ(entry.fileOffset + entry.sliceOffset + entry.delta[t + 2].elementDelta,
                frame.audio[t].key);
    }
  }
  EXPECT_EQ(r.audio.trackCount, spec.tracks);
  EXPECT_EQ(r.audio.quantizationBits, spec.bits);
  // Only a slice that opens with audio is measured.
  EXPECT_EQ(r.audio.elementSize, spec.sliceCount == 0 ? 0 : clip.layout.audioElementBytes);
  EXPECT_EQ(r.audio.elementKind, spec.waveAudio ? kWaveElement : kAes3Element);
  EXPECT_EQ(r.base.hasAncillaryData, spec.dataTrack ? 1u : 0u);
  if (spec.dataElement) {
    EXPECT_EQ(r.base.ancillaryElementSize, clip.layout.frames[0].data->totalBytes);
  }
  EXPECT_EQ(r.timecode.startFrames, clip.layout.startFrames);
  EXPECT_EQ(WorkingLast(r.timecode) - WorkingStart(r.timecode) + 1, spec.frames);
}

TEST(Analysis, FindsEveryElementAtEveryRate) {
  for (const Rate rate : {Rate::k24, Rate::k25, Rate::k30, Rate::k50, Rate::k60, Rate::k23_98,
                          Rate::k29_97, Rate::k59_94}) {
    for (const bool drop : {false, true}) {
      ClipSpec spec;
      spec.rate = rate;
      spec.dropFrame = drop;
      spec.bits = drop ? 16 : 24;
      spec.waveAudio = drop;
      spec.frames = 13;
      SCOPED_TRACE(static_cast<int>(rate));
      ExpectPlaces(spec);
    }
  }
}

TEST(Analysis, FindsEveryElementWhereverTheIndexStands) {
  for (const auto placement : {IndexPlacement::kFollowingPartition, IndexPlacement::kOwnPartition,
                               IndexPlacement::kFooter, IndexPlacement::kFollowingAndFooter}) {
    for (const bool slices : {false, true}) {
      ClipSpec spec;
      spec.indexPlacement = placement;
      spec.sliceCount = slices ? 1 : 0;
      spec.posTableCount = slices ? 1 : 0;
      spec.fillBetweenSegments = slices;
      spec.frames = 23;
      SCOPED_TRACE(static_cast<int>(placement));
      ExpectPlaces(spec);
    }
  }
}

TEST(Analysis, FindsEveryElementWithAncillaryDataAndWithoutFill) {
  ClipSpec spec;
  spec.dataTrack = spec.dataElement = true;
  ExpectPlaces(spec);
  spec.dataFill = false;
  ExpectPlaces(spec);
  spec.elementKag = 0;
  ExpectPlaces(spec);
}

TEST(Analysis, TakesOneToTwentyFourTracksAndCountsThoseBehind) {
  for (const std::uint32_t tracks : {1u, 2u, 8u, 24u}) {
    ClipSpec spec;
    spec.tracks = tracks;
    spec.frames = 3;
    ExpectPlaces(spec);
  }
  ClipSpec many;
  many.tracks = 30;
  many.frames = 2;
  many.indexEdits.push_back([](std::vector<IndexSegment>& segments) {
    for (IndexSegment& segment : segments)
      segment.deltas.resize(26);
  });
  ExpectPlaces(many);
}

TEST(Analysis, ReadsWhatTheWriterSaysOfItself) {
  ClipSpec spec;
  spec.product = u"Ｑ nine";
  spec.company = std::u16string(90, u'c');
  spec.SetTag(SetKind::kIdentification, 0, tag::kPlatform, {0, 'a', 0, 'b', 0x30});
  spec.SetTag(SetKind::kMaterialPackage, 0, tag::kPackageCreationDate,
              {0x07, 0xEA, 11, 22, 9, 8, 7, 0});
  Analysed analysed;
  ASSERT_TRUE(Analyse(BuildClip(spec).bytes, &analysed));
  ASSERT_EQ(analysed.result, 0);
  const MXF_BASE_INFO& mxf = analysed.records.base;
  EXPECT_EQ(std::u16string(mxf.productName), u"  nine");
  EXPECT_EQ(std::u16string(mxf.companyName), std::u16string(63, u'c'));
  EXPECT_EQ(std::u16string(mxf.platform), u"ab ");
  EXPECT_EQ(std::u16string(mxf.creationDateText), u"2026/11/22  09:08:07");
  EXPECT_EQ(mxf.materialUmid, kMaterialUmid);
  EXPECT_EQ(mxf.sourceUmid, kSourceUmid);

  ClipSpec anonymous;
  anonymous.DropSet(SetKind::kIdentification);
  Analysed unknown;
  ASSERT_TRUE(Analyse(BuildClip(anonymous).bytes, &unknown));
  EXPECT_EQ(unknown.result, 0);
  EXPECT_EQ(std::u16string(unknown.records.base.platform), u"unknown");
}

TEST(Analysis, ReadsThePictureByItsCoding) {
  const struct {
    std::uint32_t codec, width, rate;
    std::uint8_t layout;
    const char16_t* name;
    std::uint32_t height, bitRate;
  } cases[] = {{0, 1920, 50, 0, u"MPEG2 HD MP@HL", 540, 50},
               {1, 1920, 50, 1, u"MPEG2 HD422P@HL", 1080, 50},
               {4, 1440, 35, 1, u"MPEG2 i MP@H14L", 1080, 35},
               {5, 1920, 300, 1, u"XAVC Intra", 540, 300},
               {5, 3840, 300, 1, u"XAVC Intra", 540, 600},
               {6, 3840, 140, 1, u"XAVC L422 QFHD", 540, 140}};
  for (const auto& c : cases) {
    ClipSpec spec;
    spec.codec = c.codec;
    spec.width = c.width;
    spec.frameLayout = c.layout;
    spec.bitRate = c.rate * 1000000;
    Analysed analysed;
    ASSERT_TRUE(Analyse(BuildClip(spec).bytes, &analysed));
    ASSERT_EQ(analysed.result, 0);
    const MXF_VIDEO_INFO& video = analysed.records.video;
    EXPECT_EQ(std::u16string(video.codecName), c.name);
    EXPECT_EQ(video.codecIndex, c.codec);
    EXPECT_EQ(video.height, c.height);
    EXPECT_EQ(video.bitRate, c.bitRate * 1000000);
  }
  ClipSpec taken;  // another row of the descriptor owns the tag
  taken.bitRateTag = 0x800D;
  Analysed analysed;
  ASSERT_TRUE(Analyse(BuildClip(taken).bytes, &analysed));
  EXPECT_EQ(analysed.records.video.bitRate, 0u);
}

TEST(Analysis, CountsOneHourOnWhenTheClipStartsInTheLastHour) {
  ClipSpec spec;
  spec.frames = 100;
  spec.framesPerPartition = 50;
  spec.tracks = 1;
  spec.start = {23, 59, 58, 0};
  Analysed analysed;
  ASSERT_TRUE(Analyse(BuildClip(spec).bytes, &analysed));
  const MXF_TIMECODE_INFO& t = analysed.records.timecode;
  EXPECT_EQ(t.startHour23, 1u);
  EXPECT_EQ(t.startShifted, 59u * 1500 + 58 * 25);
  EXPECT_EQ(t.lastShifted, t.startShifted + 99);
  EXPECT_EQ(t.lastFrames, 49u);
}

// What a file does not tell is unknown, whatever the file before told.
TEST(Analysis, InheritsNothingFromTheFileBefore) {
  ClipSpec mute;
  mute.timecodeTracks = 0;
  mute.SetTag(SetKind::kMpegVideoDescriptor, 0, tag::kSampleRate,
              {0, 0, 0xBB, 0x80, 0, 0, 3, 0xE9});
  mute.RemoveTag(SetKind::kAes3Descriptor, 0, tag::kQuantizationBits);
  ClipSpec other;
  other.start = {23, 0, 0, 0};
  other.dropFrame = true;
  other.rate = Rate::k29_97;
  other.dataTrack = other.dataElement = true;
  const TempFolder folder;
  MxfRecords records;
  for (const ClipSpec& spec : {other, mute}) {
    auto file = platform::File::Open(folder.Write("clip.mxf", BuildClip(spec).bytes),
                                     platform::OpenMode::kReadAlone);
    ASSERT_EQ(AnalyzeMxfFile(&file, &records.base), 0);
    EXPECT_EQ(HasRange(records.timecode), &spec != &mute && spec.timecodeTracks == 1);
  }
  const MXF_TIMECODE_INFO& timecode = records.timecode;
  EXPECT_EQ(timecode.rateIndex, kUnknownRateIndex);
  EXPECT_EQ(timecode.fpsIndex, kUnknownFpsIndex);
  EXPECT_EQ(timecode.startHour23, 0u);
  EXPECT_EQ(timecode.startFrames + timecode.duration + timecode.dropFrame, 0u);
  EXPECT_EQ(records.audio.quantizationBits, 0u);
  EXPECT_EQ(records.base.hasAncillaryData, 0u);
}

TEST(Analysis, KnowsNoRangeOnATimecodeBaseThatIsNone) {
  ClipSpec spec;
  spec.SetTag(SetKind::kTimecodeComponent, 0, tag::kRoundedTimecodeBase, Big16(48));
  Analysed analysed;
  ASSERT_TRUE(Analyse(BuildClip(spec).bytes, &analysed));
  EXPECT_EQ(analysed.result, 0);
  EXPECT_EQ(analysed.records.timecode.roundedBase, 48u);
  EXPECT_FALSE(HasRange(analysed.records.timecode));
}

TEST(Analysis, PassesFormsThatOnlyLookWrong) {
  const std::function<void(ClipSpec&)> forms[] = {
      [](ClipSpec& s) {
        s.SetTag(SetKind::kPreface, 0, tag::kVersion, {1, 9});
      },
      [](ClipSpec& s) {
        s.SetTag(SetKind::kPreface, 0, tag::kVersion, {2, 3});
      },
      [](ClipSpec& s) { s.RemoveTag(SetKind::kPreface, 0, tag::kOperationalPattern); },
      [](ClipSpec& s) {
        Bytes packages = {0, 0, 0, 2, 0, 0, 0, 32};
        packages.resize(72);
        s.SetTag(SetKind::kContentStorage, 0, tag::kPackages, packages);
      },
      [](ClipSpec& s) { s.extraDeltas = 20; },
      [](ClipSpec& s) {
        s.headerEdits.push_back(
            [](HeaderSets& sets) { SetOf(sets, SetKind::kPreface).longLength = true; });
      },
      [](ClipSpec& s) {
        s.indexEdits.push_back([](auto& all) { all[0].duration = 0x7FFFFFFFFFFFFFFF; });
      },
  };
  for (const auto& form : forms) {
    ClipSpec spec;
    form(spec);
    Analysed analysed;
    ASSERT_TRUE(Analyse(BuildClip(spec).bytes, &analysed));
    EXPECT_EQ(analysed.result, 0);
  }
}

TEST(Unload, EmptiesTheCellsAndKeepsTheTimecode) {
  Analysed analysed;
  ASSERT_TRUE(Analyse(BuildClip(ClipSpec()).bytes, &analysed));
  MXF_BASE_INFO& mxf = analysed.records.base;
  UnloadMxf(&mxf);
  EXPECT_EQ(*mxf.partitionTable, nullptr);
  EXPECT_EQ(*mxf.indexEntries, nullptr);
  EXPECT_EQ(mxf.audio->trackCount, 0);
  EXPECT_EQ(mxf.companyName[0], 0);
  EXPECT_EQ(mxf.timecode->frameCount, 10u);
}

}  // namespace
}  // namespace quorvan
