#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "analysed.h"
#include "mxf/metadata/readers.h"
#include "support/clip_parts.h"
#include "support/mxf_tags.h"

namespace quorvan {
namespace {

using namespace test;

// What is special about a clip, said before it is laid out or done to its bytes afterwards, and
// what the analysis answers: a code, or 0 for one that only looks wrong.
struct Verdict {
  Verdict(const char* n, std::int32_t c, std::function<void(ClipSpec&)> describe)
      : name(n), code(c), build([=] {
          ClipSpec spec;
          describe(spec);
          return BuildClip(spec).bytes;
        }) {}
  Verdict(const char* n, std::int32_t c, std::function<void(Clip&)> damage)
      : name(n), code(c), build([=] {
          Clip clip = BuildClip(ClipSpec());
          damage(clip);
          return clip.bytes;
        }) {}

  const char* name;
  std::int32_t code;
  std::function<Bytes()> build;
};
void PrintTo(const Verdict& verdict, std::ostream* out) {
  *out << verdict.name;
}

using Edit = std::function<void(ClipSpec&)>;
using Damage = std::function<void(Clip&)>;

constexpr std::size_t kFooter = 3;  // of the clip's partitions

Edit Without(SetKind kind) {
  return [=](ClipSpec& spec) {
    spec.headerEdits.push_back([=](HeaderSets& sets) {
      std::erase_if(sets, [=](const MetadataSet& set) { return set.kind == kind; });
    });
  };
}
Edit Without(SetKind kind, std::uint16_t tag) {
  return [=](ClipSpec& spec) { spec.RemoveTag(kind, 0, tag); };
}
Edit With(SetKind kind, std::uint16_t tag, const Bytes& value) {
  return [=](ClipSpec& spec) { spec.SetTag(kind, 0, tag, value); };
}
// A batch that holds `bytes` zeros whatever count and size it claims.
Edit WithBatch(SetKind kind, std::uint16_t tag, std::size_t count, std::size_t size,
               std::size_t bytes) {
  return With(kind, tag, Batch(count, size, Bytes(bytes)));
}
Edit WithContainers(const std::vector<Label>& labels) {
  return With(SetKind::kPreface, tag::kEssenceContainers, LabelBatch(labels));
}
Edit WithIndex(const std::function<void(IndexSegment&)>& edit) {
  return [=](ClipSpec& spec) {
    spec.indexEdits.push_back([=](std::vector<IndexSegment>& segments) { edit(segments[0]); });
  };
}
Damage WithPackField(std::size_t partition, std::size_t place, const Bytes& value) {
  return [=](Clip& clip) {
    Patch(clip.bytes, clip.layout.partitions[partition].offset + place, value);
  };
}
Damage WithTrailer(std::uint32_t overall) {
  return [=](Clip& clip) { Patch(clip.bytes, clip.bytes.size() - 4, Big32(overall)); };
}
Damage WithFirstPartitionAt(const std::function<std::uint64_t(const Clip&)>& offset) {
  return [=](Clip& clip) {
    Patch(clip.bytes, clip.layout.randomIndex.value + 4, Big64(offset(clip)));
  };
}

Label Container(std::uint8_t version, std::uint8_t family, std::uint8_t form, std::uint8_t wrap) {
  return {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, version, 0x0D, 1, 3, 1, 2, family, form, wrap};
}
const Label kOtherContainer = Container(3, 0x7F, 1, 0);

const Verdict kVerdicts[] = {
    {"NothingAtAll", 204, [](Clip& c) { c.bytes.clear(); }},
    {"ThreeBytes", 204, [](Clip& c) { c.bytes.resize(3); }},
    {"NoRandomIndex", 204, [](Clip& c) { c.bytes.resize(c.layout.randomIndex.key); }},
    {"BytesBehindTheRandomIndex", 204, [](Clip& c) { c.bytes.push_back(0); }},
    {"RandomIndexLongerThanTheFile", 204, WithTrailer(0x7FFFFFFF)},
    {"RandomIndexShorterThanItsKey", 204, WithTrailer(10)},
    {"PartitionBehindTheFile", 204, WithFirstPartitionAt([](auto&) { return 1ull << 62; })},
    {"PackCutShort", 204, WithFirstPartitionAt([](auto& c) { return c.bytes.size() - 99; })},
    {"PackOfNoKnownKind", 204, WithPackField(1, pack::kKind, {5})},
    {"PackWithAShortLengthForm", 204, WithPackField(1, 16, {0x81})},
    {"PartitionThatClaimsAPlaceBehindTheFile", 204,
     WithPackField(1, pack::kThisPartition, Big64(1ull << 40))},
    {"OpenIncompleteHeader", 207, WithPackField(0, pack::kStatus, {1})},
    {"OpenCompleteBody", 207, WithPackField(2, pack::kStatus, {3})},
    {"ClosedIncompleteHeader", 0, WithPackField(0, pack::kStatus, {2})},
    {"NoFooter", 208, WithPackField(kFooter, pack::kKind, {3})},
    {"FooterOfVersion1_9", 0, WithPackField(kFooter, pack::kMajorVersion, {0, 1, 0, 9})},
    {"FooterOfVersion2_3", 0, WithPackField(kFooter, pack::kMajorVersion, {0, 2, 0, 3})},
    {"FooterOfVersion2_4", 209, WithPackField(kFooter, pack::kMajorVersion, {0, 2, 0, 4})},
    {"BodyOfVersion2_4", 0, WithPackField(2, pack::kMajorVersion, {0, 2, 0, 4})},

    {"NoPreface", 304, Without(SetKind::kPreface)},
    {"NoOperationalPattern", 0, Without(SetKind::kPreface, tag::kOperationalPattern)},
    {"NotOp1a", 306, With(SetKind::kPreface, tag::kOperationalPattern, Bytes(16, 1))},
    {"NoEssenceContainer", 307, WithContainers({})},
    {"ClipWrapped", 307, WithContainers({kOtherContainer, Container(2, 4, 0x60, 2)})},
    {"OldMpegFrames", 0, WithContainers({kOtherContainer, Container(1, 4, 0x60, 1)})},
    {"MpegFrames", 0, WithContainers({Container(2, 4, 0x60, 1)})},
    {"AvcFrames", 0, WithContainers({kOtherContainer, Container(10, 16, 0x60, 1)})},
    {"MoreContainersThanTheSetHolds", 307,
     WithBatch(SetKind::kPreface, tag::kEssenceContainers, ~0u, 16, 16)},
    {"PrefaceOfVersion1_9", 0, With(SetKind::kPreface, tag::kVersion, {1, 9})},
    {"PrefaceOfVersion2_3", 0, With(SetKind::kPreface, tag::kVersion, {2, 3})},
    {"PrefaceOfVersion2_4", 308, With(SetKind::kPreface, tag::kVersion, {2, 4})},
    {"PrefaceWithALongLength", 0,
     [](ClipSpec& s) {
       s.headerEdits.push_back(
           [](auto& sets) { SetOf(sets, SetKind::kPreface).longLength = true; });
     }},

    {"NoContentStorage", 702, Without(SetKind::kContentStorage)},
    {"ThreePackages", 703, WithBatch(SetKind::kContentStorage, tag::kPackages, 3, 32, 96)},
    {"TwoLongPackages", 0, WithBatch(SetKind::kContentStorage, tag::kPackages, 2, 32, 64)},
    {"EssenceDataBatch", 704,
     WithBatch(SetKind::kContentStorage, tag::kEssenceContainerData, 1, 32, 32)},
    {"NoEssenceDataTag", 704, Without(SetKind::kContentStorage, tag::kEssenceContainerData)},
    {"NoEssenceContainerData", 802, Without(SetKind::kEssenceContainerData)},
    {"IndexSidZero", 803, With(SetKind::kEssenceContainerData, tag::kIndexSid, Big32(0))},
    {"NoBodySidTag", 805, Without(SetKind::kEssenceContainerData, tag::kBodySid)},

    {"NoMaterialPackage", 405, Without(SetKind::kMaterialPackage)},
    {"MoreTracksThanTheFileHolds", 406,
     WithBatch(SetKind::kMaterialPackage, tag::kTracks, ~0u, 16, 16)},
    {"NoSequence", 407, Without(SetKind::kSequence)},
    {"NoTimecodeComponent", 408, Without(SetKind::kTimecodeComponent)},
    {"UnknownDuration", 409, With(SetKind::kTimecodeComponent, tag::kDuration, Bytes(8, 0xFF))},
    {"NoDuration", 409, With(SetKind::kTimecodeComponent, tag::kDuration, Bytes(8, 0))},
    {"NoSoundTrack", 410, [](ClipSpec& s) { s.tracks = 0; }},

    {"NoSourcePackage", 505, Without(SetKind::kSourcePackage)},
    {"NoMultipleDescriptor", 506, Without(SetKind::kMultipleDescriptor)},
    {"NotMultipleEssence", 507,
     With(SetKind::kMultipleDescriptor, tag::kEssenceContainer, Bytes(16, 1))},
    {"NoPictureDescriptor", 508, Without(SetKind::kMpegVideoDescriptor)},
    {"UnknownCoding", 509,
     With(SetKind::kMpegVideoDescriptor, tag::kPictureEssenceCoding, Bytes(16, 1))},
    {"NoAudioDescriptor", 510, Without(SetKind::kAes3Descriptor)},
    {"TwentyBits", 510, With(SetKind::kAes3Descriptor, tag::kQuantizationBits, Big32(20))},
    {"OtherSamplingRate", 511,
     With(SetKind::kAes3Descriptor, tag::kAudioSamplingRate, Batch(44100, 1, {}))},

    {"TwentySixDeltas", 0, [](ClipSpec& s) { s.extraDeltas = 20; }},
    {"TwentySevenDeltas", 607, [](ClipSpec& s) { s.extraDeltas = 21; }},
    {"NoIndexSegment", 608,
     [](Clip& c) {
       for (std::size_t i = 0; i < c.layout.partitions.size(); ++i)
         WithPackField(i, pack::kIndexSid, Big32(0))(c);
     }},
    {"SegmentsWithoutEntries", 608,
     [](ClipSpec& s) {
       s.indexEdits.push_back([](auto& all) { all[0].entries = all[1].entries = {}; });
     }},
    {"SegmentOfEndlessDuration", 0,
     WithIndex([](IndexSegment& s) { s.duration = 0x7FFFFFFFFFFFFFFF; })},
    {"MoreEntriesThanTheSegmentHolds", 608,
     WithIndex([](IndexSegment& s) { s.claimedEntryCount = 0x40000000; })},
    {"MoreDeltasThanTheSegmentHolds", 608,
     WithIndex([](IndexSegment& s) { s.claimedDeltaCount = 26; })},
    {"EntryBehindTheFile", 608,
     WithIndex([](IndexSegment& s) { s.entries[1].streamOffset = 1ull << 40; })},
    {"OffsetThatWraps", 608,
     WithIndex([](IndexSegment& s) { s.entries[1].streamOffset = ~0ull - 100000; })},
    {"SliceBehindTheFile", 608,
     WithIndex([](IndexSegment& s) { s.entries[1].sliceOffset = 0xFFFFFFFF; })},
    {"LastDeltaBehindTheFile", 608,
     WithIndex([](IndexSegment& s) { s.deltas.back().elementDelta = 0xFFFFFFF0; })},
    {"FirstDeltaBehindTheFile", 608,
     WithIndex([](IndexSegment& s) { s.deltas[0].elementDelta = 0xFFFFFFF0; })},
    {"OddSampleCount", 609,
     [](Clip& c) { Patch(c.bytes, c.layout.frames[0].audio[0].key + 17, {0, 0x16, 0x7D}); }},
    {"NoBlockAlign", 609, With(SetKind::kAes3Descriptor, tag::kBlockAlign, Big16(0))},
};

class AnalysisVerdict : public ::testing::TestWithParam<Verdict> {};

TEST_P(AnalysisVerdict, IsItsCodeAndLeavesTheFileAlone) {
  const std::int32_t code = GetParam().code;
  const Analysed analysed(GetParam().build());
  EXPECT_EQ(analysed.result, code);
  EXPECT_EQ(analysed.records.base.processCode,
            code == 0 ? kStageIndexTable : static_cast<std::uint32_t>(code / 100 * 100));
}

INSTANTIATE_TEST_SUITE_P(All, AnalysisVerdict, ::testing::ValuesIn(kVerdicts),
                         [](const auto& verdict) { return std::string(verdict.param.name); });

// The header's byte count, read as an offset, ends each search; a set whose key starts one byte in
// front of it is found.
TEST(AnalysisSearch, FindsTheSetsThatStartBeforeTheEndOfTheHeader) {
  const struct {
    SetKind kind;
    std::int32_t outside, inside;                  // the next one is outside then
    std::uint64_t base = 0;                        // from which the limit counts
  } rows[] = {{SetKind::kPreface, 304, 702, 512},  // to the end of the header in the file
              {SetKind::kContentStorage, 702, 802},
              {SetKind::kEssenceContainerData, 802, 405},
              {SetKind::kMaterialPackage, 405, 406},
              {SetKind::kTimelineTrack, 406, 407},
              {SetKind::kSequence, 407, 408},
              {SetKind::kTimecodeComponent, 408, 406},
              {SetKind::kSourcePackage, 505, 506},
              {SetKind::kMultipleDescriptor, 506, 508},
              {SetKind::kMpegVideoDescriptor, 508, 510},
              {SetKind::kAes3Descriptor, 510, 0}};
  Clip clip = BuildClip(ClipSpec());
  for (const auto& row : rows) {
    const std::uint64_t limit = clip.layout.Set(row.kind).klv.key - row.base;
    Patch(clip.bytes, pack::kHeaderByteCount, Big64(limit));
    EXPECT_EQ(Analysed(clip.bytes).result, row.outside);
    Patch(clip.bytes, pack::kHeaderByteCount, Big64(limit + 1));
    EXPECT_EQ(Analysed(clip.bytes).result, row.inside);
  }
}

// The searches begin behind the header's pack, whose bytes KAGSize counts; those for the Preface
// and the names at the start of the file.
TEST(AnalysisSearch, FindsTheSetsThatStartBehindThePack) {
  const struct {
    SetKind kind;
    std::int32_t code;
  } rows[] = {{SetKind::kContentStorage, 702},  {SetKind::kEssenceContainerData, 802},
              {SetKind::kMaterialPackage, 405}, {SetKind::kSourcePackage, 505},
              {SetKind::kPreface, 0},           {SetKind::kIdentification, 0}};
  for (const auto& row : rows) {
    ClipSpec spec;
    spec.headerEdits.push_back([&](HeaderSets& sets) {
      const auto at = sets.begin() + (&SetOf(sets, row.kind) - sets.data());
      std::rotate(sets.begin(), at, at + 1);
    });
    Clip clip = BuildClip(spec);
    EXPECT_EQ(Analysed(clip.bytes).result, 0);
    Patch(clip.bytes, pack::kKagSize, Big32(513));
    const Analysed late(clip.bytes);
    EXPECT_EQ(late.result, row.code);
    EXPECT_EQ(std::u16string(late.records.base.companyName), u"Northlight");
  }
}

TEST(AnalysisGuards, NameTheMissingPiece) {
  const TempFolder folder;
  const auto path = folder.Write("clip.mxf", BuildClip(ClipSpec()).bytes);
  auto open = platform::File::Open(path, platform::OpenMode::kReadAlone);
  platform::File closed;
  MxfRecords records;
  MXF_BASE_INFO& mxf = records.base;
  using Codes = std::array<std::int32_t, 6>;
  const auto codes = [](platform::File* file, MXF_BASE_INFO* r) {
    const auto preface = ReadPrefaceSet(file, r), names = ReadIdentification(file, r);
    const auto material = ReadMaterialPackage(file, r), source = ReadSourcePackage(file, r);
    return Codes{
        preface, names, material, source, ReadIndexTable(file, r), AnalyzeMxfFile(file, r)};
  };
  EXPECT_EQ(codes(&closed, &mxf), (Codes{301, 901, 401, 501, 601, 1}));
  EXPECT_EQ(codes(&open, nullptr), (Codes{302, 902, 402, 502, 602, 2}));
  EXPECT_EQ(codes(&open, &mxf), (Codes{303, 903, 403, 503, 603, 0})) << "no table but the last";
  mxf.audio = nullptr;
  EXPECT_EQ(codes(&open, &mxf), (Codes{0, 0, 404, 504, 606, 7}));
  mxf.video = nullptr;
  EXPECT_EQ(codes(&open, &mxf), (Codes{0, 0, 404, 504, 606, 6}));
  mxf.indexEntries = nullptr;
  EXPECT_EQ(codes(&open, &mxf), (Codes{0, 0, 404, 504, 605, 5}));
  mxf.timecode = nullptr;
  EXPECT_EQ(codes(&open, &mxf), (Codes{0, 0, 404, 504, 604, 4}));
  mxf.partitionTable = nullptr;
  EXPECT_EQ(codes(&open, &mxf), (Codes{303, 903, 403, 503, 603, 3}));

  EXPECT_EQ(ReadRandomIndexAndPartitions(&closed, 9, &mxf), 201);
  EXPECT_EQ(ReadRandomIndexAndPartitions(&open, 9, nullptr), 202);
  EXPECT_EQ(ReadRandomIndexAndPartitions(&open, 9, &mxf), 203);
  EXPECT_EQ(CheckContentStorage(&closed, 0, 9), 701);
  EXPECT_EQ(CheckEssenceContainerData(&closed, 0, 9), 801);
}

// More than a damaged length should make the program ask the system for.
TEST(AnalysisOfAHugeSet, IsRefusedLikeOneWithoutMemory) {
  ClipSpec spec;
  spec.headerEdits.push_back([](auto& sets) { SetOf(sets, SetKind::kPreface).longLength = true; });
  Clip clip = BuildClip(spec);
  Patch(clip.bytes, clip.layout.Set(SetKind::kPreface).klv.value - 7, {0, 0, 0, 0x12, 0, 0, 0});
  const TempFolder folder;
  auto file =
      platform::File::Open(folder.Write("clip.mxf", clip.bytes), platform::OpenMode::kRewrite);
  const std::size_t index = clip.layout.randomIndex.key;
  ASSERT_TRUE(file.WriteAt(300u << 20, &clip.bytes[index], clip.bytes.size() - index));
  MxfRecords records;
  EXPECT_EQ(AnalyzeMxfFile(&file, &records.base), 305);
}

}  // namespace
}  // namespace quorvan
