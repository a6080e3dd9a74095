// The two readings of an index table: by the order of its segments, and by stream offsets.

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "analysed.h"
#include "mxf/metadata/index_segments.h"
#include "mxf/metadata/readers.h"
#include "support/call_hook.h"
#include "support/loaded_clip.h"

namespace quorvan {
namespace {

using namespace test;
using enum IndexPlacement;

// A clip in the reading by order.
struct ReadByOrder {
  explicit ReadByOrder(const Bytes& bytes) {
    const TempFolder folder;
    const std::u16string path = folder.Write("clip.mxf", bytes);
    auto file = platform::File::Open(path, platform::OpenMode::kReadAlone);
    AnalyzeMxfFile(&file, &records.base);
    records.timecode.frameCount = records.timecode.maxIndexDuration = 0;
    SegmentList list;
    result = ReadIndexTableByOrder(&file, &records.base, &list);
  }

  MxfRecords records;
  std::int32_t result = 0;
};

// All that a reading of the index table fills.
template <typename Read>
std::vector<std::uint64_t> Filled(const Read& read) {
  const MxfRecords& r = read.records;
  std::vector<std::uint64_t> numbers{static_cast<std::uint64_t>(read.result),
                                     r.timecode.frameCount,
                                     r.timecode.maxIndexDuration,
                                     r.audio.elementSize,
                                     r.audio.elementKind,
                                     r.audio.patternStart,
                                     r.base.ancillaryElementSize};
  for (std::uint32_t f = 0; r.indexEntries != nullptr && f < r.timecode.frameCount; ++f) {
    const INDEX_ENTRY_ARRAY& e = r.indexEntries[f];
    numbers.insert(numbers.end(), {e.partition->thisPartition, e.segmentStart, e.segmentDuration,
                                   e.fileOffset, e.sliceOffset, e.deltaCount, e.audioSamples,
                                   e.flags, static_cast<std::uint8_t>(e.temporalOffset),
                                   static_cast<std::uint8_t>(e.keyFrameOffset)});
    for (const DELTA_ENTRY& delta : e.delta)
      numbers.insert(numbers.end(), {delta.posTableIndex, delta.slice, delta.elementDelta});
  }
  return numbers;
}

TEST(IndexReading, IsThatByOrderWhereverTheFramesAgreeWithIt) {
  const ClipSpec layouts[] = {
      {},
      {.tracks = 24, .bits = 16, .posTableCount = 2},
      {.tracks = 1, .waveAudio = true, .dataTrack = true, .dataElement = true, .umidSize = 64},
      {.sliceCount = 0, .fillBetweenSegments = true}};
  for (int rate = 0; rate < 8; ++rate) {
    for (int placement = 0; placement < 4; ++placement) {
      for (ClipSpec spec : layouts) {
        spec.rate = static_cast<Rate>(rate);
        spec.indexPlacement = static_cast<IndexPlacement>(placement);
        spec.frames = 7;
        spec.framesPerPartition = 3;
        const Bytes clip = BuildClip(spec).bytes;
        const ReadByOrder byOrder(clip);
        EXPECT_EQ(byOrder.result, 0);
        EXPECT_EQ(Filled(Analysed(clip)), Filled(byOrder)) << rate << ' ' << placement;
      }
    }
  }
}

// Clips that the reading by order misplaces or refuses.
const std::pair<const char*, ClipSpec> kByOffset[] = {
    {"one body of many segments",
     {.rate = Rate::k29_97,
      .framesPerPartition = 0,
      .framesPerSegment = 3,
      .indexPlacement = kFooter}},
    {"segments through partitions",
     {.frames = 13, .framesPerPartition = 3, .framesPerSegment = 5, .indexPlacement = kFooter}},
    {"more partitions than segments",
     {.framesPerPartition = 2, .framesPerSegment = 9, .indexPlacement = kFollowingAndFooter}},
    {"constant bytes", {.rate = Rate::k59_94, .sliceCount = 0, .constantBytes = true}},
    {"constant bytes in one body",
     {.framesPerPartition = 0,
      .framesPerSegment = 4,
      .indexPlacement = kOwnPartition,
      .sliceCount = 0,
      .constantBytes = true}},
};

TEST(IndexReading, GoesByOffsetWhereEveryFrameProvesIt) {
  for (const auto& [name, spec] : kByOffset) {
    SCOPED_TRACE(name);
    ExpectPlaces(spec);
    const Bytes clip = BuildClip(spec).bytes;
    EXPECT_NE(Filled(Analysed(clip)), Filled(ReadByOrder(clip)));
  }
}

TEST(IndexReading, StaysByOrderWhereOneFrameContradictsTheOther) {
  for (const auto& [name, spec] : kByOffset) {
    SCOPED_TRACE(name);
    for (const std::uint32_t track : {0U, spec.tracks - 1}) {
      Clip clip = BuildClip(spec);
      const std::uint64_t key = clip.layout.frames[spec.frames / 2].audio[track].key;
      Patch(clip.bytes, key + 12, {0x17});
      EXPECT_EQ(Filled(Analysed(clip.bytes)), Filled(ReadByOrder(clip.bytes))) << track;
    }
  }
}

// From a medium: what is in memory is read without the calls that are counted here.
TEST(IndexReading, ReadsAFrameTwiceAtMostAndAGoodIndexWithoutItsFrames) {
  const auto reads = [](std::uint32_t frames, std::uint32_t inPartition, std::uint32_t inSegment) {
    ClipSpec spec = LongClip(frames);
    spec.framesPerPartition = inPartition;
    spec.framesPerSegment = inSegment;
    const TempFolder folder;
    const std::u16string path = folder.Write("clip.mxf", BuildClip(spec).bytes);
    auto file = platform::File::Open(path, platform::OpenMode::kReadAlone);
    DropFromMemory(path);
    MxfRecords records;
    int count = 0;
    const CallHook hook(platform::SystemCall::kRead, 0, [&] { ++count; });
    EXPECT_EQ(AnalyzeMxfFile(&file, &records.base), 0);
    EXPECT_EQ(records.timecode.frameCount, frames);
    return count;
  };
  // For each frame, a read at its start and a read at its audio.
  EXPECT_LT(reads(30000, 0, 4000), 30000 * 5 / 2);
  EXPECT_LT(reads(7500, 4000, 0), 200);
}

// Where in the pattern of five frames a clip starts; 5 where its frames follow none.
TEST(IndexReading, TellsWhereTheSamplePatternStarts) {
  constexpr std::uint32_t kNone = kUnknownPatternStart;
  const std::tuple<Rate, std::uint32_t, std::uint32_t, std::int32_t> rows[] = {
      {Rate::k29_97, 0, 0, 0},   {Rate::k29_97, 1, 1, 609}, {Rate::k29_97, 2, 2, 0},
      {Rate::k29_97, 3, 3, 609}, {Rate::k29_97, 4, 4, 0},   {Rate::k59_94, 0, 0, 0},
      {Rate::k59_94, 1, 1, 0},   {Rate::k59_94, 2, 2, 0},   {Rate::k59_94, 3, 3, 0},
      {Rate::k59_94, 4, 4, 0},   {Rate::k25, 3, 0, 0},
  };
  for (const auto& [rate, start, told, code] : rows) {
    SCOPED_TRACE(start);
    Clip clip = BuildClip({.rate = rate, .patternStart = start});
    const Analysed analysed(clip.bytes);
    EXPECT_EQ(analysed.result, code);
    EXPECT_EQ(analysed.records.audio.patternStart, told);
    // A length that no pattern has.
    Patch(clip.bytes, clip.layout.frames[4].audio[0].key + 17, {0, 0x13, 0x8B});
    EXPECT_EQ(Analysed(clip.bytes).records.audio.patternStart, kNone);
  }
}

}  // namespace
}  // namespace quorvan
