#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <tuple>

#include "analysed.h"
#include "mxf/essence/segment_run.h"
#include "mxf/metadata/klv.h"
#include "support/golden.h"

namespace quorvan {
namespace {

using namespace test;
using enum SetKind;

TEST(Analysis, FindsEveryElementAtEveryRate) {
  for (int rate = 0; rate < 8; ++rate) {
    for (const bool drop : {false, true}) {
      ClipSpec spec{.rate = static_cast<Rate>(rate), .dropFrame = drop};
      spec.bits = drop ? 16 : 24;
      spec.waveAudio = drop;
      spec.frames = 13;
      spec.framesPerPartition = 4;  // the ring of five frames runs on across segments
      SCOPED_TRACE(rate);
      ExpectPlaces(spec);
    }
  }
}

TEST(Analysis, FindsEveryElementWhereverTheIndexStands) {
  for (int placement = 0; placement < 4; ++placement) {
    for (const bool slices : {false, true}) {
      ClipSpec spec{.indexPlacement = static_cast<IndexPlacement>(placement)};
      spec.sliceCount = spec.posTableCount = slices;
      spec.fillBetweenSegments = slices;
      spec.frames = 23;
      SCOPED_TRACE(placement);
      ExpectPlaces(spec);
    }
  }
}

TEST(Analysis, FindsEveryElementWithAncillaryDataAndWithoutFill) {
  ClipSpec spec;
  spec.dataTrack = spec.dataElement = true;
  ExpectPlaces(spec);
  spec.elementKag = 0;
  ExpectPlaces(spec);
}

TEST(Analysis, TakesOneToTwentyFourTracksAndCountsThoseBehind) {
  for (const std::uint32_t tracks : {1u, 24u, 30u}) {
    ClipSpec spec{.frames = 3, .tracks = tracks};
    spec.indexEdits.push_back([](std::vector<IndexSegment>& segments) {
      for (IndexSegment& segment : segments)
        segment.deltas.resize(std::min<std::size_t>(segment.deltas.size(), kMaxDeltaEntries));
    });
    ExpectPlaces(spec);
  }
}

// The element that a frame's last delta leads to is the one that ends the frame.
TEST(Analysis, ReachesToTheEndOfTheLastFrameOfARun) {
  for (const bool data : {false, true}) {
    ClipSpec spec;
    spec.dataTrack = spec.dataElement = data;
    spec.dataSize = 9000;
    const Clip clip = BuildClip(spec);
    Analysed analysed(clip.bytes);
    for (const std::uint32_t first : {0u, 7u}) {
      const SegmentRun run = NextRun(analysed.records.base, first, 100);
      const FramePlace& last = clip.layout.frames[first < 5 ? 4 : 9];
      EXPECT_EQ(run.start, clip.layout.frames[first].offset);
      EXPECT_EQ(run.start + run.length, last.offset + last.bytes);
      EXPECT_EQ(first + run.frames, first < 5 ? 5u : 10u);
    }
  }
}

// Sound written by a table with a gap, or with frames twice, would land in other frames.
TEST(Analysis, KnowsWhetherTheIndexCountsEveryFrame) {
  using Segments = std::vector<IndexSegment>;
  // The frames that the clip claims, where the table has 10, and whether it counts them.
  const std::tuple<std::uint32_t, bool, std::function<void(Segments&)>> rows[] = {
      {10, true, [](Segments&) {}},
      {10, true, [](Segments& s) { s[0].duration = 99; }},
      {10, false, [](Segments& s) { s[0].startPosition = 1; }},
      {10, false, [](Segments& s) { s[1].startPosition = 6; }},
      {10, false, [](Segments& s) { s[1].startPosition = 4; }},
      {10, false, [](Segments& s) { s[0].entries[3] = s[0].entries[2]; }},
      {10, false, [](Segments& s) { std::swap(s[1].entries[3], s[1].entries[2]); }},
      {11, true, [](Segments&) {}},
      {11, false, [](Segments& s) { s[0].duration = 6; }},
      {11, false, [](Segments& s) { s[1].duration = 6; }},
      {11, false, [](Segments& s) { s[1].duration = 4; }},
  };
  for (const auto& [frames, counts, edit] : rows) {
    ClipSpec spec;
    spec.SetTag(kTimecodeComponent, 0, tag::kDuration, Big64(frames));
    spec.indexEdits.push_back(edit);
    EXPECT_EQ(CountsEveryFrame(Analysed(spec).records.base), counts) << frames;
  }
}

// The order of the segments leads astray in these clips, and their stream offsets do not.
TEST(Analysis, FollowsStreamOffsetsOnlyThroughATableOfEveryFrame) {
  using Segments = std::vector<IndexSegment>;
  const auto addUnfinished = [](Segments& s, std::size_t entries) {
    IndexSegment early = s[0];
    early.entries.resize(entries);
    s.insert(s.begin(), early);
  };
  const std::tuple<const char*, std::int32_t, std::function<void(Segments&)>> rows[] = {
      {"as written", 0, [](Segments&) {}},
      {"in reverse", 0, [](Segments& s) { std::reverse(s.begin(), s.end()); }},
      {"once more, without entries", 0, [&](Segments& s) { addUnfinished(s, 0); }},
      {"once more, with fewer entries", 0, [&](Segments& s) { addUnfinished(s, 3); }},
      {"without the second", kNoIndexTable, [](Segments& s) { s.erase(s.begin() + 1); }},
      {"with a gap", kNoIndexTable, [](Segments& s) { s[1].startPosition = 6; }},
  };
  for (const auto& [name, verdict, edit] : rows) {
    SCOPED_TRACE(name);
    const Clip clip = BuildClip({.frames = 20,
                                 .framesPerPartition = 0,
                                 .framesPerSegment = 5,
                                 .indexPlacement = IndexPlacement::kFooter,
                                 .indexEdits = {edit}});
    Analysed analysed(clip.bytes);
    ASSERT_EQ(analysed.result, verdict);
    if (verdict != 0) continue;
    ASSERT_EQ(analysed.records.timecode.frameCount, 20U);
    for (std::size_t i = 0; i < 20; ++i)
      EXPECT_EQ(analysed.records.indexEntries[i].fileOffset, clip.layout.frames[i].offset);
  }
}

// The readers know one slice of audio: in these clips several tracks lead to one element.
TEST(Analysis, KnowsThatAudioInSeveralSlicesIsNotReached) {
  for (const std::uint32_t slices : {1u, 2u, 4u}) {
    const Analysed analysed(ClipSpec{.audioSlices = slices});
    EXPECT_EQ(analysed.result, 0);
    EXPECT_EQ(analysed.records.base.indexContradicted, slices == 1 ? 0U : 1U) << slices;
  }
}

// By their order the segments lead to no audio. By the stream offsets they do, but for one element.
TEST(Analysis, KeepsNothingThatWasMeasuredWithAnIndexThatIsNotBelieved) {
  Clip clip = BuildClip({.dataTrack = true,
                         .dataElement = true,
                         .indexPlacement = IndexPlacement::kFooter,
                         .indexEdits = {[](auto& s) { std::reverse(s.begin(), s.end()); }}});
  Patch(clip.bytes, clip.layout.frames[7].audio[2].key, Bytes(16));
  Analysed analysed(clip.bytes);
  ASSERT_EQ(analysed.result, 0);
  EXPECT_EQ(analysed.records.base.indexContradicted, 1U);
  EXPECT_EQ(analysed.records.audio.elementSize, 0U);
  EXPECT_EQ(analysed.records.audio.elementKind, kNoAudioElement);
  EXPECT_EQ(analysed.records.base.ancillaryElementSize, 0U);
}

// The elements of the first frame are looked for close to where the index leads, and no farther.
TEST(Analysis, MeasuresElementsThatStartNearTheirPlace) {
  const auto sizes = [](const auto& edit) {
    ClipSpec spec;
    spec.dataTrack = spec.dataElement = true;
    spec.indexEdits.push_back([&](auto& all) { edit(all[0]); });
    const Analysed analysed(spec);
    return std::pair(analysed.records.audio.elementSize,
                     analysed.records.base.ancillaryElementSize);
  };
  EXPECT_EQ(sizes([](auto& s) { s.entries[0].sliceOffset -= 27; }).first, 6144u);
  EXPECT_EQ(sizes([](auto& s) { s.entries[0].sliceOffset -= 28; }).first, 0u);
  EXPECT_EQ(sizes([](auto& s) { s.deltas.back().elementDelta -= 15; }).second, 512u);
  EXPECT_EQ(sizes([](auto& s) { s.deltas.back().elementDelta -= 16; }).second, 0u);

  // The fill behind a value, here one of 1600 samples.
  Clip clip = BuildClip(ClipSpec());
  const KlvPlace& audio = clip.layout.frames[0].audio[0];
  const auto filledSize = [&](std::uint64_t late) {
    Bytes bytes = clip.bytes;
    Patch(bytes, audio.key + 17, {0, 0x12, 0xC0});
    std::fill_n(bytes.begin() + static_cast<long>(audio.value) + 4800, 60, std::uint8_t{0});
    Patch(bytes, audio.value + 4800 + late, Bytes(keys::kFill.begin(), keys::kFill.end()));
    Patch(bytes, audio.value + 4800 + late + 16, {0x83, 0, 0, 10});
    return Analysed(bytes).records.audio.elementSize;
  };
  EXPECT_EQ(filledSize(0), 4850u);
  EXPECT_EQ(filledSize(15), 4850u);
  EXPECT_EQ(filledSize(16), 4820u);
}

TEST(Analysis, ReadsWhatTheWriterSaysOfItself) {
  ClipSpec spec;
  spec.SetTag(kIdentification, 0, tag::kProductName, {0xFF, 0x31, 0, ' ', 0, '9'});
  Bytes company;
  while (company.size() < 180)
    company.insert(company.end(), {0, 'c'});
  spec.SetTag(kIdentification, 0, tag::kCompanyName, company);
  spec.SetTag(kIdentification, 0, tag::kPlatform, {0, 'a', 0, 'b', 0x30});
  spec.SetTag(kMaterialPackage, 0, tag::kPackageCreationDate, {0x07, 0xEA, 11, 22, 9, 8, 7, 0});
  Clip clip = BuildClip(spec);
  const Analysed analysed(clip.bytes);
  ASSERT_EQ(analysed.result, 0);
  const MXF_BASE_INFO& mxf = analysed.records.base;
  EXPECT_EQ(std::u16string(mxf.productName), u"  9");
  EXPECT_EQ(std::u16string(mxf.companyName), std::u16string(63, u'c'));
  EXPECT_EQ(std::u16string(mxf.platform), u"ab ");
  EXPECT_EQ(std::u16string(mxf.creationDateText), u"2026/11/22  09:08:07");
  EXPECT_EQ(mxf.materialUmid, kMaterialUmid);
  EXPECT_EQ(mxf.sourceUmid, kSourceUmid);

  // Names behind the header are not the writer's.
  const std::uint64_t names = clip.layout.Set(kIdentification).klv.key;
  for (const std::uint64_t limit : {names, names + 1}) {
    Patch(clip.bytes, pack::kHeaderByteCount, Big64(limit));
    const Analysed cut(clip.bytes);
    EXPECT_EQ(std::u16string(cut.records.base.platform), limit == names ? u"unknown" : u"ab ");
  }
}

// A line has coding, width, frame layout and bit rate of the clip, then what the analysis makes of
// it: height, bit rate, name.
TEST(Analysis, ReadsThePictureByItsCoding) {
  ForEachGoldenLine("mxf/golden/pictures.txt", [](auto& cells) {
    ClipSpec spec;
    std::uint32_t layout = 0, height = 0, told = 0, bitRate = 0;
    std::string name;
    cells >> spec.codec >> spec.width >> layout >> told >> height >> bitRate;
    std::getline(cells >> std::ws, name);
    spec.frameLayout = static_cast<std::uint8_t>(layout);
    spec.bitRate = told;
    const Analysed analysed(spec);
    ASSERT_EQ(analysed.result, 0);
    const MXF_VIDEO_INFO& video = analysed.records.video;
    EXPECT_EQ(video.codecName, platform::ToUtf16(name));
    EXPECT_EQ(video.codecIndex, spec.codec);
    EXPECT_EQ(video.height, height);
    EXPECT_EQ(video.bitRate, bitRate);
  });
}

// Another row of the descriptor may own the tag.
TEST(Analysis, KnowsNoBitRateWhereNoneIsTold) {
  ClipSpec taken{.bitRateTag = 0x800D};
  EXPECT_EQ(Analysed(taken).records.video.bitRate, 0u);
}

std::vector<std::uint64_t> Numbers(const MxfRecords& records) {
  const auto& [t, v, audio] = std::tie(records.timecode, records.video, records.audio);
  return {t.editRateNumerator, t.rangeKnown,  t.roundedBase, t.dropFrame,
          t.rateIndex,         v.height,      v.width,       v.aspectNumerator,
          v.aspectDenominator, v.frameLayout, v.bitRate,     audio.avgBytesPerSecond};
}

// A value that is too short for its number is like none. A line has kind, tag and bytes of a whole
// value, and the result of the analysis when it is cut.
TEST(Analysis, TakesNoNumberFromAShortValue) {
  ForEachGoldenLine("mxf/golden/short_values.txt", [](auto& cells) {
    std::string name;
    std::uint32_t kind = 0;
    std::uint16_t tag = 0;
    std::size_t bytes = 0;
    std::int32_t result = -1;
    cells >> name >> std::hex >> kind >> tag >> std::dec >> bytes >> result;
    const auto set = static_cast<SetKind>(kind);
    ClipSpec whole{.dropFrame = true};
    if (set == kAvcSubDescriptor) whole.codec = 5;
    ClipSpec cut = whole, none = whole;
    const Analysed analysed(cut.SetTag(set, 0, tag, Bytes(bytes - 1, 1)));
    EXPECT_EQ(analysed.result, result);
    if (result != 0) return;
    EXPECT_EQ(Numbers(analysed.records), Numbers(Analysed(none.RemoveTag(set, 0, tag)).records));
    EXPECT_NE(Numbers(analysed.records), Numbers(Analysed(whole).records));
  });
}

// The hour is the written one, which drop frame reaches with fewer frames.
TEST(Analysis, CountsOneHourOnWhenTheClipStartsInTheLastHour) {
  using Row = std::tuple<Rate, ClipTimecode, std::uint32_t, std::uint32_t, std::uint32_t>;
  const Row rows[] = {{Rate::k25, {23, 59, 58, 0}, 1, 59 * 1500 + 58 * 25, 49},
                      {Rate::k25, {22, 59, 59, 24}, 0, 23 * 90000 + 89999, 23 * 90000 + 98},
                      {Rate::k25, {24, 0, 0, 0}, 0, 90000, 99},
                      {Rate::k29_97, {23, 0, 0, 0}, 1, 0, 23 * 107892 + 99},
                      {Rate::k29_97, {22, 59, 59, 29}, 0, 24 * 107892 - 1, 23 * 107892 + 98},
                      {Rate::k59_94, {23, 0, 0, 0}, 1, 0, 23 * 215784 + 99}};
  for (const auto& [rate, start, inLastHour, startShifted, lastFrames] : rows) {
    ClipSpec spec{.rate = rate,
                  .dropFrame = true,
                  .start = start,
                  .frames = 100,
                  .framesPerPartition = 50,
                  .tracks = 1};
    const Analysed analysed(spec);
    const MXF_TIMECODE_INFO& t = analysed.records.timecode;
    EXPECT_EQ(t.startHour23, inLastHour);
    EXPECT_EQ(t.startShifted, startShifted);
    EXPECT_EQ(t.lastShifted, t.startShifted + 99);
    EXPECT_EQ(t.lastFrames, lastFrames);
  }
}

// What a file does not tell is unknown, whatever the file before told.
TEST(Analysis, InheritsNothingFromTheFileBefore) {
  ClipSpec mute{.timecodeTracks = 0};
  mute.SetTag(kMpegVideoDescriptor, 0, tag::kSampleRate, {0, 0, 0xBB, 0x80, 0, 0, 3, 0xE9});
  mute.RemoveTag(kAes3Descriptor, 0, tag::kQuantizationBits);
  ClipSpec other{.rate = Rate::k29_97, .dropFrame = true, .start = {23, 0, 0, 0}};
  other.dataTrack = other.dataElement = true;
  const TempFolder folder;
  MxfRecords records;
  for (const ClipSpec& spec : {other, mute}) {
    auto file = platform::File::Open(folder.Write("clip.mxf", BuildClip(spec).bytes),
                                     platform::OpenMode::kReadAlone);
    ASSERT_EQ(AnalyzeMxfFile(&file, &records.base), 0);
    EXPECT_EQ(HasRange(records.timecode), spec.timecodeTracks == 1);
  }
  const MXF_TIMECODE_INFO& timecode = records.timecode;
  EXPECT_EQ(timecode.rateIndex, kUnknownRateIndex);
  EXPECT_EQ(timecode.fpsIndex, kUnknownFpsIndex);
  EXPECT_EQ(timecode.startFrames + timecode.duration + timecode.dropFrame + timecode.startHour23,
            0u);
  EXPECT_EQ(records.audio.quantizationBits + records.base.hasAncillaryData, 0u);
}

TEST(Analysis, KnowsNoRangeOnATimecodeBaseThatIsNone) {
  ClipSpec spec;
  spec.SetTag(kTimecodeComponent, 0, tag::kRoundedTimecodeBase, Big16(48));
  const Analysed analysed(spec);
  EXPECT_EQ(analysed.result, 0);
  EXPECT_EQ(analysed.records.timecode.roundedBase, 48u);
  EXPECT_FALSE(HasRange(analysed.records.timecode));
}

TEST(Unload, ForgetsTheClipAndKeepsTheTimecode) {
  ClipSpec spec;
  spec.dataTrack = spec.dataElement = true;
  Analysed analysed(spec);
  MXF_BASE_INFO& mxf = analysed.records.base;
  const auto texts = [&] {
    return std::u16string(mxf.companyName) + mxf.productName + mxf.productVersion + mxf.platform +
           mxf.creationDateText + mxf.modifiedDateText;
  };
  EXPECT_EQ(texts(), u"NorthlightBench Writer1.2.3Bench2024/03/05  14:07:092024/03/06  08:30:00");
  EXPECT_EQ(mxf.versionMajor * 10 + mxf.versionMinor, 13);
  UnloadMxf(&mxf);
  EXPECT_EQ(texts(), u"");
  EXPECT_TRUE(*mxf.partitionTable == nullptr && *mxf.indexEntries == nullptr);
  EXPECT_EQ(mxf.audio->trackCount + mxf.audio->sampleRate, 0u);
  EXPECT_EQ(mxf.video->width + mxf.video->codecName[0], 0u);
  EXPECT_EQ(mxf.versionMajor + mxf.versionMinor + mxf.hasAncillaryData + mxf.ancillaryElementSize,
            0u);
  EXPECT_EQ(mxf.timecode->frameCount, 10u);
}

}  // namespace
}  // namespace quorvan
