#include <gtest/gtest.h>

#include "analysed.h"
#include "mxf/metadata/readers.h"
#include "support/mxf_tags.h"

namespace quorvan {
namespace {

using namespace test;

struct Fault {
  const char* name;
  std::int32_t code;
  std::function<void(ClipSpec&)> describe;  // before the clip is laid out
  std::function<void(Clip&)> damage;        // afterwards
};
void PrintTo(const Fault& fault, std::ostream* out) {
  *out << fault.name;
}

void PatchPack(Clip& clip, std::size_t partition, std::size_t place, const Bytes& value) {
  Patch(clip.bytes, clip.layout.partitions[partition].offset + place, value);
}

Bytes Rational(std::uint32_t numerator, std::uint32_t denominator) {
  Bytes bytes = Big32(numerator);
  const Bytes rest = Big32(denominator);
  bytes.insert(bytes.end(), rest.begin(), rest.end());
  return bytes;
}

Bytes Batch(std::uint32_t count, std::uint32_t size, std::size_t payload) {
  Bytes bytes = Rational(count, size);
  bytes.resize(bytes.size() + payload);
  return bytes;
}

std::function<void(ClipSpec&)> Drop(SetKind kind, std::size_t occurrence = 0) {
  return [=](ClipSpec& spec) { spec.DropSet(kind, occurrence); };
}
std::function<void(ClipSpec&)> Set(SetKind kind, std::uint16_t tag, const Bytes& value) {
  return [=](ClipSpec& spec) { spec.SetTag(kind, 0, tag, value); };
}
std::function<void(ClipSpec&)> EditIndex(const std::function<void(IndexSegment&)>& edit) {
  return [=](ClipSpec& spec) {
    spec.indexEdits.push_back([=](std::vector<IndexSegment>& segments) { edit(segments[0]); });
  };
}
std::function<void(Clip&)> PackField(std::size_t partition, std::size_t place, const Bytes& value) {
  return [=](Clip& clip) { PatchPack(clip, partition, place, value); };
}

const Fault kFaults[] = {
    {"NothingAtAll", 204, {}, [](Clip& c) { c.bytes.clear(); }},
    {"ThreeBytes", 204, {}, [](Clip& c) { c.bytes.resize(3); }},
    {"NoRandomIndex", 204, [](ClipSpec& s) { s.randomIndexPack = false; }, {}},
    {"BytesBehindTheRandomIndex", 204, [](ClipSpec& s) { s.trailingBytes = 1; }, {}},
    {"RandomIndexLongerThanTheFile",
     204,
     [](ClipSpec& s) { s.randomIndexLength = 0x7FFFFFFF; },
     {}},
    {"RandomIndexShorterThanItsKey", 204, [](ClipSpec& s) { s.randomIndexLength = 10; }, {}},
    {"PartitionBehindTheFile",
     204,
     {},
     [](Clip& c) { Patch(c.bytes, c.layout.randomIndex.value + 4, Big64(1ull << 62)); }},
    {"PackCutShort",
     204,
     {},
     [](Clip& c) { Patch(c.bytes, c.layout.randomIndex.value + 4, Big64(c.bytes.size() - 99)); }},
    {"PackOfNoKnownKind", 204, {}, PackField(1, pack::kKind, {5})},
    {"PackWithAShortLengthForm", 204, {}, PackField(1, 16, {0x81})},
    {"PartitionThatClaimsAPlaceBehindTheFile",
     204,
     {},
     PackField(1, pack::kThisPartition, Big64(1ull << 40))},
    {"OpenIncompleteHeader", 207, {}, PackField(0, pack::kStatus, {1})},
    {"OpenCompleteBody", 207, {}, PackField(2, pack::kStatus, {3})},
    {"NoFooter",
     208,
     {},
     [](Clip& c) { PatchPack(c, c.layout.partitions.size() - 1, pack::kKind, {3}); }},
    {"VersionOfTheLastPartition",
     209,
     {},
     [](Clip& c) {
       PatchPack(c, c.layout.partitions.size() - 1, pack::kMajorVersion, {0, 2, 0, 4});
     }},
    {"NoPreface", 304, Drop(SetKind::kPreface), {}},
    {"NotOp1a", 306, Set(SetKind::kPreface, tag::kOperationalPattern, Bytes(16, 1)), {}},
    {"NoEssenceContainer",
     307,
     Set(SetKind::kPreface, tag::kEssenceContainers, Batch(0, 16, 0)),
     {}},
    {"ClipWrapped", 307, Set(SetKind::kPreface, tag::kEssenceContainers, Batch(1, 16, 16)), {}},
    {"MoreContainersThanTheSetHolds",
     307,
     Set(SetKind::kPreface, tag::kEssenceContainers, Batch(0xFFFFFFFF, 16, 16)),
     {}},
    {"PrefaceVersion", 308, Set(SetKind::kPreface, tag::kVersion, {2, 4}), {}},
    {"NoContentStorage", 702, Drop(SetKind::kContentStorage), {}},
    {"ThreePackages", 703, Set(SetKind::kContentStorage, tag::kPackages, Batch(3, 32, 96)), {}},
    {"EssenceDataBatch",
     704,
     Set(SetKind::kContentStorage, tag::kEssenceContainerData, Batch(1, 32, 32)),
     {}},
    {"NoEssenceDataTag",
     704,
     [](ClipSpec& s) { s.RemoveTag(SetKind::kContentStorage, 0, tag::kEssenceContainerData); },
     {}},
    {"NoEssenceContainerData", 802, Drop(SetKind::kEssenceContainerData), {}},
    {"IndexSidZero", 803, Set(SetKind::kEssenceContainerData, tag::kIndexSid, Big32(0)), {}},
    {"NoBodySidTag",
     805,
     [](ClipSpec& s) { s.RemoveTag(SetKind::kEssenceContainerData, 0, tag::kBodySid); },
     {}},
    {"NoMaterialPackage", 405, Drop(SetKind::kMaterialPackage), {}},
    {"MoreTracksThanTheFileHolds",
     406,
     Set(SetKind::kMaterialPackage, tag::kTracks, Batch(0xFFFFFFFF, 16, 16)),
     {}},
    {"NoSequence",
     407,
     [](ClipSpec& s) {
       s.headerEdits.push_back([](HeaderSets& sets) {
         std::erase_if(sets, [](const MetadataSet& m) { return m.kind == SetKind::kSequence; });
       });
     },
     {}},
    {"NoTimecodeComponent",
     408,
     [](ClipSpec& s) {
       s.headerEdits.push_back([](HeaderSets& sets) {
         std::erase_if(sets,
                       [](const MetadataSet& m) { return m.kind == SetKind::kTimecodeComponent; });
       });
     },
     {}},
    {"UnknownDuration", 409, Set(SetKind::kTimecodeComponent, tag::kDuration, Bytes(8, 0xFF)), {}},
    {"NoDuration", 409, Set(SetKind::kTimecodeComponent, tag::kDuration, Bytes(8, 0)), {}},
    {"NoSoundTrack", 410, [](ClipSpec& s) { s.tracks = 0; }, {}},
    {"NoSourcePackage", 505, Drop(SetKind::kSourcePackage), {}},
    {"NoMultipleDescriptor", 506, Drop(SetKind::kMultipleDescriptor), {}},
    {"NotMultipleEssence",
     507,
     Set(SetKind::kMultipleDescriptor, tag::kEssenceContainer, Bytes(16, 1)),
     {}},
    {"NoPictureDescriptor", 508, Drop(SetKind::kMpegVideoDescriptor), {}},
    {"UnknownCoding",
     509,
     Set(SetKind::kMpegVideoDescriptor, tag::kPictureEssenceCoding, Bytes(16, 1)),
     {}},
    {"NoAudioDescriptor",
     510,
     [](ClipSpec& s) {
       s.headerEdits.push_back([](HeaderSets& sets) {
         std::erase_if(sets,
                       [](const MetadataSet& m) { return m.kind == SetKind::kAes3Descriptor; });
       });
     },
     {}},
    {"TwentyBits", 510, Set(SetKind::kAes3Descriptor, tag::kQuantizationBits, Big32(20)), {}},
    {"OtherSamplingRate",
     511,
     Set(SetKind::kAes3Descriptor, tag::kAudioSamplingRate, Rational(44100, 1)),
     {}},
    {"TwentySevenDeltas", 607, [](ClipSpec& s) { s.extraDeltas = 21; }, {}},
    {"NoIndexSegment",
     608,
     {},
     [](Clip& c) {
       for (std::size_t i = 0; i < c.layout.partitions.size(); ++i) {
         PatchPack(c, i, pack::kIndexSid, Big32(0));
       }
     }},
    {"SegmentsWithoutEntries",
     608,
     [](ClipSpec& s) {
       s.indexEdits.push_back([](std::vector<IndexSegment>& all) {
         for (IndexSegment& segment : all)
           segment.entries.clear();
       });
     },
     {}},
    {"MoreEntriesThanTheSegmentHolds",
     608,
     EditIndex([](IndexSegment& s) { s.claimedEntryCount = 0x40000000; }),
     {}},
    {"MoreDeltasThanTheSegmentHolds",
     608,
     EditIndex([](IndexSegment& s) { s.claimedDeltaCount = 26; }),
     {}},
    {"EntryBehindTheFile",
     608,
     EditIndex([](IndexSegment& s) { s.entries[1].streamOffset = 1ull << 40; }),
     {}},
    {"OffsetThatWraps",
     608,
     EditIndex([](IndexSegment& s) { s.entries[1].streamOffset = ~0ull - 100000; }),
     {}},
    {"SliceBehindTheFile",
     608,
     EditIndex([](IndexSegment& s) { s.entries[1].sliceOffset = 0xFFFFFFFF; }),
     {}},
    {"DeltaBehindTheFile",
     608,
     EditIndex([](IndexSegment& s) { s.deltas.back().elementDelta = 0xFFFFFFF0; }),
     {}},
    {"OddSampleCount",
     609,
     {},
     [](Clip& c) {
       const std::uint64_t length = c.layout.frames[0].audio[0].key + 17;
       Patch(c.bytes, length, {0, 0x16, 0x7D});
     }},
    {"NoBlockAlign", 609, Set(SetKind::kAes3Descriptor, tag::kBlockAlign, Big16(0)), {}},
};

class AnalysisRefusal : public ::testing::TestWithParam<Fault> {};

TEST_P(AnalysisRefusal, EndsWithItsCodeAndLeavesTheFileAlone) {
  const Fault& fault = GetParam();
  ClipSpec spec;
  if (fault.describe) fault.describe(spec);
  Clip clip = BuildClip(spec);
  if (fault.damage) fault.damage(clip);
  Analysed analysed;
  EXPECT_TRUE(Analyse(clip.bytes, &analysed));
  EXPECT_EQ(analysed.result, fault.code);
  EXPECT_EQ(analysed.records.base.processCode, static_cast<std::uint32_t>(fault.code / 100 * 100));
}

INSTANTIATE_TEST_SUITE_P(All, AnalysisRefusal, ::testing::ValuesIn(kFaults),
                         [](const auto& fault) { return std::string(fault.param.name); });

TEST(AnalysisGuards, NameTheMissingPiece) {
  const TempFolder folder;
  const auto path = folder.Write("clip.mxf", BuildClip(ClipSpec()).bytes);
  auto file = platform::File::Open(path, platform::OpenMode::kReadAlone);
  platform::File closed;
  MxfRecords r;
  EXPECT_EQ(AnalyzeMxfFile(&closed, &r.base), 1);
  EXPECT_EQ(AnalyzeMxfFile(&file, nullptr), 2);

  EXPECT_EQ(ReadRandomIndexAndPartitions(nullptr, 9, &r.base), 201);
  EXPECT_EQ(ReadRandomIndexAndPartitions(&file, 9, nullptr), 202);
  EXPECT_EQ(CheckContentStorage(nullptr, 0, 9), 701);
  EXPECT_EQ(CheckEssenceContainerData(nullptr, 0, 9), 801);
  const struct {
    std::int32_t (*read)(platform::File*, MXF_BASE_INFO*);
    std::int32_t base;
  } readers[] = {{ReadPrefaceSet, 300},
                 {ReadIdentification, 900},
                 {ReadMaterialPackage, 400},
                 {ReadSourcePackage, 500},
                 {ReadIndexTable, 600}};
  for (const auto& reader : readers) {
    EXPECT_EQ(reader.read(&closed, &r.base), reader.base + 1);
    EXPECT_EQ(reader.read(&file, nullptr), reader.base + 2);
    EXPECT_EQ(reader.read(&file, &r.base), reader.base + 3) << "table not read yet";
  }

  ASSERT_EQ(AnalyzeMxfFile(&file, &r.base), 0);
  r.base.audio = nullptr;
  EXPECT_EQ(AnalyzeMxfFile(&file, &r.base), 7);
  EXPECT_EQ(ReadMaterialPackage(&file, &r.base), 404);
  EXPECT_EQ(ReadSourcePackage(&file, &r.base), 504);
  EXPECT_EQ(ReadIndexTable(&file, &r.base), 606);
  r.base.video = nullptr;
  EXPECT_EQ(AnalyzeMxfFile(&file, &r.base), 6);
  r.base.indexEntries = nullptr;
  EXPECT_EQ(AnalyzeMxfFile(&file, &r.base), 5);
  EXPECT_EQ(ReadIndexTable(&file, &r.base), 605);
  r.base.timecode = nullptr;
  EXPECT_EQ(AnalyzeMxfFile(&file, &r.base), 4);
  EXPECT_EQ(ReadIndexTable(&file, &r.base), 604);
  r.base.partitionTable = nullptr;
  EXPECT_EQ(AnalyzeMxfFile(&file, &r.base), 3);
  EXPECT_EQ(ReadRandomIndexAndPartitions(&file, 9, &r.base), 203);
}

// More than a damaged length should make the program ask the system for.
TEST(AnalysisOfAHugeSet, IsRefusedLikeOneWithoutMemory) {
  ClipSpec spec;
  spec.headerEdits.push_back(
      [](HeaderSets& sets) { SetOf(sets, SetKind::kPreface).longLength = true; });
  Clip clip = BuildClip(spec);
  constexpr std::uint64_t hole = 300u << 20;
  Patch(clip.bytes, clip.layout.Set(SetKind::kPreface).klv.value - 7, {0, 0, 0, 0x12, 0, 0, 0});
  const auto pack = clip.bytes.begin() + static_cast<long>(clip.layout.randomIndex.key);
  const Bytes randomIndex(pack, clip.bytes.end());
  const TempFolder folder;
  const std::u16string path = folder.Write("clip.mxf", clip.bytes);
  auto file = platform::File::Open(path, platform::OpenMode::kRewrite);
  ASSERT_TRUE(file.WriteAt(hole, randomIndex.data(), randomIndex.size()));
  MxfRecords records;
  EXPECT_EQ(AnalyzeMxfFile(&file, &records.base), 305);
}

TEST(AnalysisOfATruncatedClip, NeverCrashesAndNeverAccepts) {
  ClipSpec spec;
  spec.frames = 2;
  spec.tracks = 1;
  const Clip clip = BuildClip(spec);
  for (std::size_t size = 0; size < clip.bytes.size(); size += 97) {
    Analysed analysed;
    EXPECT_TRUE(Analyse(Bytes(clip.bytes.begin(), clip.bytes.begin() + static_cast<long>(size)),
                        &analysed));
    EXPECT_EQ(analysed.result, 204);
  }
}

}  // namespace
}  // namespace quorvan
