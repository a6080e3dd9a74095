#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <tuple>

#include "analysed.h"
#include "mxf/metadata/readers.h"
#include "support/golden.h"

namespace quorvan {
namespace {

using namespace test;
using enum SetKind;

// What is special about a clip: in its index before it is laid out, or done to its bytes.
using Edit = std::function<void(std::vector<IndexSegment>&)>;
using Damage = std::function<void(Clip&)>;

// What the analysis answers: a code, or 0 for a clip that only looks wrong.
template <typename Change>
struct Verdict {
  const char* name;
  std::int32_t code;
  Change change;
};

Damage WithTrailer(std::uint32_t overall) {
  return [=](Clip& clip) { Patch(clip.bytes, clip.bytes.size() - 4, Big32(overall)); };
}
Damage WithFirstPartitionAt(const std::function<std::uint64_t(const Clip&)>& offset) {
  return [=](Clip& clip) {
    Patch(clip.bytes, clip.layout.randomIndex.value + 4, Big64(offset(clip)));
  };
}

const Verdict<Damage> kDamaged[] = {
    {"NothingAtAll", 204, [](Clip& c) { c.bytes.clear(); }},
    {"ThreeBytes", 204, [](Clip& c) { c.bytes.resize(3); }},
    {"NoRandomIndex", 204, [](Clip& c) { c.bytes.resize(c.layout.randomIndex.key); }},
    {"BytesBehindTheRandomIndex", 204, [](Clip& c) { c.bytes.push_back(0); }},
    {"RandomIndexLongerThanTheFile", 204, WithTrailer(0x7FFFFFFF)},
    {"RandomIndexShorterThanItsKey", 204, WithTrailer(10)},
    {"PartitionBehindTheFile", 204, WithFirstPartitionAt([](auto&) { return 1ull << 62; })},
    {"PackCutShort", 204, WithFirstPartitionAt([](auto& c) { return c.bytes.size() - 99; })},
    {"NoIndexSegment", 608,
     [](Clip& c) {
       for (const PartitionPlace& partition : c.layout.partitions)
         Patch(c.bytes, partition.offset + pack::kIndexSid, Big32(0));
     }},
    {"OddSampleCount", 609,
     [](auto& c) {
       Patch(c.bytes, c.layout.frames[0].audio[0].key + 17, {0, 0x16, 0x7D});
     }},
};

const Verdict<Edit> kDescribed[] = {
    {"TwentySixDeltas", 0, [](auto& s) { s[0].deltas.resize(26, s[0].deltas.back()); }},
    {"TwentySevenDeltas", 607, [](auto& s) { s[0].deltas.resize(27, s[0].deltas.back()); }},
    {"SegmentsWithoutEntries", 608, [](auto& s) { s[0].entries = s[1].entries = {}; }},
    {"SegmentOfEndlessDuration", 0, [](auto& s) { s[0].duration = 0x7FFFFFFFFFFFFFFF; }},
    {"MoreEntriesThanTheSegmentHolds", 608,
     [](auto& s) { s[0].missingEntries = 0x40000000 - s[0].entries.size(); }},
    {"MoreDeltasThanTheSegmentHolds", 608, [](auto& s) { s[0].missingDeltas = 20; }},
    {"EntryBehindTheFile", 608, [](auto& s) { s[0].entries[1].streamOffset = 1ull << 40; }},
    {"OffsetThatWraps", 608, [](auto& s) { s[0].entries[1].streamOffset = ~0ull - 100000; }},
    {"SliceBehindTheFile", 608, [](auto& s) { s[0].entries[1].sliceOffset = 0xFFFFFFFF; }},
    {"LastDeltaBehindTheFile", 608, [](auto& s) { s[0].deltas.back().elementDelta = 0xFFFFFFF0; }},
    {"FirstDeltaBehindTheFile", 608, [](auto& s) { s[0].deltas[0].elementDelta = 0xFFFFFFF0; }},
};

void ExpectVerdict(const Bytes& clip, std::int32_t code) {
  const Analysed analysed(clip);
  EXPECT_EQ(analysed.result, code);
  EXPECT_EQ(analysed.records.base.processCode,
            code == 0 ? kStageIndexTable : static_cast<std::uint32_t>(code / 100 * 100));
}

TEST(AnalysisVerdict, IsItsCodeAndLeavesTheFileAlone) {
  for (const auto& row : kDamaged) {
    SCOPED_TRACE(row.name);
    Clip clip = BuildClip(ClipSpec());
    row.change(clip);
    ExpectVerdict(clip.bytes, row.code);
  }
  for (const auto& row : kDescribed) {
    SCOPED_TRACE(row.name);
    ClipSpec spec;
    spec.indexEdits.push_back(row.change);
    ExpectVerdict(BuildClip(spec).bytes, row.code);
  }
  ClipSpec silent{.tracks = 0};
  ExpectVerdict(BuildClip(silent).bytes, 410);
}

// A line has a partition, a place in its pack and the bytes that stand there.
TEST(AnalysisVerdict, IsThatOfTheGoldenTableWhenAPackIsAnother) {
  ForEachGoldenLine("mxf/golden/pack_verdicts.txt", [](auto& cells) {
    std::string name;
    std::int32_t code = -1;
    std::size_t partition = 0, place = 0;
    cells >> name >> code >> partition >> place;
    Clip clip = BuildClip(ClipSpec());
    Patch(clip.bytes, clip.layout.partitions.at(partition).offset + place, HexBytes(cells));
    ExpectVerdict(clip.bytes, code);
  });
}

// A line names the kind of a set and a tag in it with its new value, in hexadecimal; without a
// value the item is left out, with tag 0 all sets of the kind.
TEST(AnalysisVerdict, IsThatOfTheGoldenTableWhenAHeaderIsAnother) {
  ForEachGoldenLine("mxf/golden/header_verdicts.txt", [](auto& cells) {
    std::string name;
    std::int32_t code = -1;
    std::uint32_t kind = 0;
    std::uint16_t tag = 0;
    cells >> name >> code >> std::hex >> kind >> tag;
    const Bytes value = HexBytes(cells);
    const auto set = static_cast<SetKind>(kind);
    ClipSpec spec;
    if (tag == 0) {
      spec.headerEdits.push_back([=](HeaderSets& sets) {
        std::erase_if(sets, [=](auto& other) { return other.kind == set; });
      });
    } else if (value.empty()) {
      spec.RemoveTag(set, 0, tag);
    } else {
      spec.SetTag(set, 0, tag, value);
    }
    ExpectVerdict(BuildClip(spec).bytes, code);
  });
}

// The header's byte count, read as an offset, ends each search; a set whose key starts one byte in
// front of it is found.
TEST(AnalysisSearch, FindsTheSetsThatStartBeforeTheEndOfTheHeader) {
  // The code when the set lies outside, and when it does not; the next set is outside then.
  const std::tuple<SetKind, std::int32_t, std::int32_t> rows[] = {{kPreface, 304, 702},
                                                                  {kContentStorage, 702, 802},
                                                                  {kEssenceContainerData, 802, 405},
                                                                  {kMaterialPackage, 405, 406},
                                                                  {kTimelineTrack, 406, 407},
                                                                  {kSequence, 407, 408},
                                                                  {kTimecodeComponent, 408, 406},
                                                                  {kSourcePackage, 505, 506},
                                                                  {kMultipleDescriptor, 506, 508},
                                                                  {kMpegVideoDescriptor, 508, 510},
                                                                  {kAes3Descriptor, 510, 0}};
  Clip clip = BuildClip(ClipSpec());
  for (const auto& [kind, outside, inside] : rows) {
    // The Preface is looked for up to the end of the header in the file.
    const std::uint64_t limit = clip.layout.Set(kind).klv.key - (kind == kPreface ? 512 : 0);
    Patch(clip.bytes, pack::kHeaderByteCount, Big64(limit));
    EXPECT_EQ(Analysed(clip.bytes).result, outside);
    Patch(clip.bytes, pack::kHeaderByteCount, Big64(limit + 1));
    EXPECT_EQ(Analysed(clip.bytes).result, inside);
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
}

}  // namespace
}  // namespace quorvan
