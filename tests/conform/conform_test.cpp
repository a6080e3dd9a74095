#include "conform/conform.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "mxf/analysis.h"
#include "mxf/metadata/klv.h"
#include "support/clip_builder.h"
#include "support/temp_folder.h"

namespace quorvan::test {
namespace {

std::size_t FilesIn(const TempFolder& folder) {
  const std::filesystem::directory_iterator files(folder.Path());
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

ConformResult Conform(const TempFolder& folder, const Bytes& clip) {
  JobProgress progress;
  std::filesystem::remove(folder.Path() / "out.mxf");
  return ConformClip(folder.Write("in.mxf", clip), folder.PathOf("out.mxf"), &progress);
}

// The conformed form of `clip`, which must have one.
Bytes Conformed(const Bytes& clip) {
  const TempFolder folder;
  const ConformResult result = Conform(folder, clip);
  EXPECT_TRUE(result.done) << result.reason;
  EXPECT_EQ(FilesIn(folder), result.done ? 2U : 1U);
  return result.done ? ReadAll(folder.Path() / "out.mxf") : Bytes();
}

// Frames of the conformed clip, as the analysis finds them, against those of the built one.
void ExpectSameFrames(const Clip& clip, const Bytes& conformed) {
  const TempFolder folder;
  auto file =
      platform::File::Open(folder.Write("c.mxf", conformed), platform::OpenMode::kReadAlone);
  MxfRecords records;
  records.timecode.useFileIo = 1;
  ASSERT_EQ(AnalyzeMxfFile(&file, &records.base), 0);
  ASSERT_EQ(records.timecode.frameCount, clip.layout.frames.size());
  for (std::size_t i = 0; i < clip.layout.frames.size(); ++i) {
    const FramePlace& frame = clip.layout.frames[i];
    Bytes read(frame.bytes);
    ASSERT_EQ(file.ReadAt(records.indexEntries[i].fileOffset, read.data(), read.size()),
              read.size());
    const auto built = clip.bytes.begin() + static_cast<std::ptrdiff_t>(frame.offset);
    EXPECT_TRUE(std::equal(read.begin(), read.end(), built)) << "frame " << i;
  }
}

// Walks the random index and compares what the packs say of places with where they stand.
void ExpectTrueOffsets(const Bytes& clip) {
  const std::size_t overall = ReadBe32(&clip[clip.size() - 4]);
  const std::uint8_t* entry = &clip[clip.size() - overall + 20];
  const std::uint64_t footer = ReadBe64(&clip[clip.size() - 4 - 8]);
  std::uint64_t previous = 0;
  for (std::size_t left = (overall - 20) / 12; left != 0; --left, entry += 12) {
    const std::uint64_t offset = ReadBe64(entry + 4);
    ASSERT_LE(offset + 100, clip.size());
    const std::uint8_t* partition = &clip[offset];
    EXPECT_EQ(ReadBe32(entry), ReadBe32(partition + pack::kBodySid));
    EXPECT_EQ(ReadBe64(partition + pack::kThisPartition), offset);
    EXPECT_EQ(ReadBe64(partition + pack::kPreviousPartition), previous);
    EXPECT_EQ(ReadBe64(partition + pack::kFooterPartition), footer);
    previous = offset;
  }
  EXPECT_EQ(previous, footer);
}

TEST(Conform, KeepsEveryFrameWhereverTheIndexStands) {
  for (const IndexPlacement placement :
       {IndexPlacement::kFollowingPartition, IndexPlacement::kOwnPartition, IndexPlacement::kFooter,
        IndexPlacement::kFollowingAndFooter}) {
    SCOPED_TRACE(static_cast<int>(placement));
    ClipSpec spec;
    spec.indexPlacement = placement;
    spec.fillBetweenSegments = true;
    const Clip clip = BuildClip(spec);
    const Bytes conformed = Conformed(clip.bytes);
    ExpectSameFrames(clip, conformed);
    ExpectTrueOffsets(conformed);
    EXPECT_EQ(Conformed(conformed), conformed);
  }
}

TEST(Conform, KeepsAFillThatTheBodyOffsetsCountAsEssence) {
  Clip clip = BuildClip(ClipSpec());
  Bytes fill(keys::kFill.begin(), keys::kFill.end());
  fill[7] = 2;
  Patch(clip.bytes, clip.layout.frames[0].system.key, fill);
  ExpectSameFrames(clip, Conformed(clip.bytes));
}

// Variants of one clip that say the same in another way, and so have the same conformed form.
TEST(Conform, MakesTheSameCopyOfWhateverCountsAndOffsetsTellTheSameClip) {
  const Clip clip = BuildClip(ClipSpec());
  const Bytes expected = Conformed(clip.bytes);
  const auto& partitions = clip.layout.partitions;
  const std::uint64_t packBytes = 20 + ReadBe24(&clip.bytes[17]);

  Bytes withoutIndex = clip.bytes;
  withoutIndex.resize(clip.layout.randomIndex.key);
  EXPECT_EQ(Conformed(withoutIndex), expected) << "no random index";

  Bytes staleIndex = clip.bytes;
  Patch(staleIndex, clip.layout.randomIndex.value + 12 + 4, Big64(partitions[2].offset));
  EXPECT_EQ(Conformed(staleIndex), expected) << "random index that names a partition twice";

  Bytes withFill = clip.bytes;
  Patch(withFill, pack::kHeaderByteCount, Big64(partitions[0].headerByteCount + 512 - packBytes));
  EXPECT_EQ(Conformed(withFill), expected) << "count from the fill behind the pack on";

  const SetPlace& lastSet = clip.layout.sets.back();
  Bytes withoutFill = clip.bytes;
  Patch(withoutFill, pack::kHeaderByteCount,
        Big64(lastSet.klv.value + lastSet.klv.valueBytes - 512));
  EXPECT_EQ(Conformed(withoutFill), expected) << "count up to the last set";

  Bytes otherKag = clip.bytes;
  for (const PartitionPlace& partition : partitions) {
    Patch(otherKag, partition.offset + pack::kKagSize, Big32(1));
    Patch(otherKag, partition.offset + pack::kThisPartition, Big64(77));
  }
  EXPECT_EQ(Conformed(otherKag), expected) << "KAG that holds no pack";
}

TEST(Conform, RefusesWhatCannotBeMadeLoadableAndLeavesNoFile) {
  const Clip clip = BuildClip(ClipSpec());
  const auto patched = [&clip](std::uint64_t offset, const Bytes& value) {
    Bytes bytes = clip.bytes;
    Patch(bytes, offset, value);
    return bytes;
  };
  const auto behind = [&clip](Bytes front) {
    front.insert(front.end(), clip.bytes.begin(), clip.bytes.end());
    return front;
  };
  const auto& partitions = clip.layout.partitions;
  Bytes trailing = clip.bytes;
  trailing.resize(trailing.size() + 100);
  // A segment that means the whole essence, which the readers place in one partition.
  ClipSpec oneSegment;
  oneSegment.indexPlacement = IndexPlacement::kFooter;
  oneSegment.indexEdits.push_back([](std::vector<IndexSegment>& segments) {
    segments[0].entries.insert(segments[0].entries.end(), segments[1].entries.begin(),
                               segments[1].entries.end());
    segments[0].duration += segments[1].duration;
    segments.pop_back();
  });
  ClipSpec noPackage;
  noPackage.DropSet(SetKind::kMaterialPackage);
  struct Row {
    const char* fault;
    Bytes clip;
    std::int32_t analysisCode;
  };
  const Row rows[] = {
      {"empty", {}, 0},
      {"run-in", behind(Bytes(64)), 0},
      {"open header", patched(pack::kStatus, {1}), 0},
      {"open body", patched(partitions[1].offset + pack::kStatus, {3}), 0},
      {"no footer", patched(partitions.back().offset + pack::kKind, {3}), 0},
      {"footer in the middle", patched(partitions[1].offset + pack::kKind, {4}), 0},
      {"data behind the random index", trailing, 0},
      {"header count into a set", patched(pack::kHeaderByteCount, Big64(1000)), 0},
      {"header count behind all", patched(pack::kHeaderByteCount, Big64(~0ULL)), 0},
      {"header count of nothing", patched(pack::kHeaderByteCount, Big64(0)), 0},
      {"no version of ours", patched(partitions.back().offset + pack::kMajorVersion, {0, 2, 0, 4}),
       kPartitionVersion},
      {"no material package", BuildClip(noPackage).bytes, kMaterialPackageNotFound},
      {"index of several partitions in one", BuildClip(oneSegment).bytes, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.fault);
    const TempFolder folder;
    const ConformResult result = Conform(folder, row.clip);
    EXPECT_FALSE(result.done);
    EXPECT_FALSE(result.cancelled);
    EXPECT_FALSE(result.reason.empty());
    EXPECT_EQ(result.analysisCode, row.analysisCode) << result.reason;
    EXPECT_EQ(FilesIn(folder), 1U);
  }
}

TEST(Conform, NeverReplacesAFileAndEndsWhenToldTo) {
  const TempFolder folder;
  const Bytes clip = BuildClip(ClipSpec()).bytes;
  const std::u16string in = folder.Write("in.mxf", clip);
  const std::u16string taken = folder.Write("taken.mxf", {1, 2, 3});
  JobProgress progress;
  EXPECT_FALSE(ConformClip(in, in, &progress).done);
  EXPECT_FALSE(ConformClip(in, taken, &progress).done);
  EXPECT_FALSE(ConformClip(in, folder.PathOf("no/out.mxf"), &progress).done);
  EXPECT_FALSE(ConformClip(folder.PathOf("none.mxf"), folder.PathOf("out.mxf"), &progress).done);
  EXPECT_EQ(ReadAll(folder.Path() / "in.mxf"), clip);
  EXPECT_EQ(ReadAll(folder.Path() / "taken.mxf"), Bytes({1, 2, 3}));
  progress.cancel = 1;
  const ConformResult result = ConformClip(in, folder.PathOf("out.mxf"), &progress);
  EXPECT_TRUE(result.cancelled && !result.done);
  EXPECT_EQ(FilesIn(folder), 2U);
  progress.cancel = 0;
  EXPECT_TRUE(ConformClip(in, folder.PathOf("out.mxf"), &progress).done);
  EXPECT_EQ(progress.done, progress.total);
  EXPECT_EQ(progress.done, ReadAll(folder.Path() / "out.mxf").size());
}

TEST(Conform, SurvivesATruncationAtEveryKlv) {
  const Clip clip = BuildClip(ClipSpec());
  std::vector<std::uint64_t> ends;
  for (std::uint64_t at = 0; at < clip.layout.randomIndex.key;) {
    ends.insert(ends.end(), {at, at + 16, at + 18, at + 20});
    at += 20 + ReadBe24(&clip.bytes[at + 17]);
  }
  ends.push_back(clip.bytes.size() - 1);
  const TempFolder folder;
  for (const std::uint64_t end : ends) {
    Bytes cut = clip.bytes;
    cut.resize(end);
    // All that is missing behind the last KLV of the footer is the random index, which is made
    // anew.
    EXPECT_FALSE(Conform(folder, cut).done) << "cut to " << end;
    ASSERT_EQ(FilesIn(folder), 1U);
  }
}

TEST(Conform, SurvivesWrongBytesInTheMetadata) {
  const Clip clip = BuildClip(ClipSpec());
  std::vector<std::uint64_t> places;
  const auto add = [&places](std::uint64_t from, std::uint64_t bytes) {
    for (std::uint64_t i = 0; i < bytes; ++i)
      places.push_back(from + i);
  };
  for (const PartitionPlace& partition : clip.layout.partitions)
    add(partition.offset, 128);
  for (const SetPlace& set : clip.layout.sets)
    add(set.klv.key, 24);
  for (const IndexPlace& index : clip.layout.indexSegments)
    add(index.set.klv.key, 100);
  add(clip.layout.randomIndex.key, clip.bytes.size() - clip.layout.randomIndex.key);
  std::mt19937 random(20240);
  const TempFolder folder;
  for (const std::uint64_t place : places) {
    if (random() % 8 != 0) continue;
    Bytes wrong = clip.bytes;
    wrong[place] ^= static_cast<std::uint8_t>(random() % 2 == 0 ? 0x80 : 1 + random() % 255);
    const bool done = Conform(folder, wrong).done;
    ASSERT_EQ(FilesIn(folder), done ? 2U : 1U) << "byte " << place;
  }
}

}  // namespace
}  // namespace quorvan::test
