#include "conform/conform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

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
  return ConformClip({.in = folder.Write("in.mxf", clip), .out = folder.PathOf("out.mxf")},
                     &progress);
}

// The conformed form of `clip`, which must have one.
Bytes Conformed(const Bytes& clip) {
  const TempFolder folder;
  const ConformResult result = Conform(folder, clip);
  EXPECT_TRUE(result.IsDone()) << result.reason;
  EXPECT_EQ(FilesIn(folder), result.IsDone() ? 2U : 1U);
  return result.IsDone() ? ReadAll(folder.Path() / "out.mxf") : Bytes();
}

// The `count` frames of the conformed clip, as the analysis finds them, against the first frames of
// the built one.
void ExpectSameFrames(const Clip& clip, const Bytes& conformed, std::size_t count) {
  const TempFolder folder;
  auto file =
      platform::File::Open(folder.Write("c.mxf", conformed), platform::OpenMode::kReadAlone);
  MxfRecords records;
  records.timecode.useFileIo = Method::kGenericFileIo;
  ASSERT_EQ(AnalyzeMxfFile(&file, &records.base), 0);
  ASSERT_EQ(records.timecode.frameCount, count);
  EXPECT_EQ(records.timecode.duration, count);
  for (std::size_t i = 0; i < count; ++i) {
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
  for (int placement = 0; placement < 4; ++placement) {
    SCOPED_TRACE(placement);
    ClipSpec spec{.indexPlacement = static_cast<IndexPlacement>(placement),
                  .fillBetweenSegments = true};
    const Clip clip = BuildClip(spec);
    const Bytes conformed = Conformed(clip.bytes);
    ExpectSameFrames(clip, conformed, clip.layout.frames.size());
    ExpectTrueOffsets(conformed);
    EXPECT_EQ(Conformed(conformed), conformed);
  }
}

TEST(Conform, KeepsAFillThatTheBodyOffsetsCountAsEssence) {
  Clip clip = BuildClip(ClipSpec());
  Bytes fill(keys::kFill.begin(), keys::kFill.end());
  fill[7] = 2;
  Patch(clip.bytes, clip.layout.frames[0].system.key, fill);
  ExpectSameFrames(clip, Conformed(clip.bytes), clip.layout.frames.size());
}

Bytes Patched(Bytes bytes, std::uint64_t offset, const Bytes& value) {
  Patch(bytes, offset, value);
  return bytes;
}

Bytes Resized(Bytes bytes, std::uint64_t size) {
  bytes.resize(size);
  return bytes;
}

// Variants of one clip that say the same in another way, and so have the same conformed form.
TEST(Conform, MakesTheSameCopyOfWhateverCountsAndOffsetsTellTheSameClip) {
  const Clip clip = BuildClip(ClipSpec());
  const auto& [bytes, layout] = clip;
  const std::uint64_t packBytes = 20 + ReadBe24(&bytes[17]);
  const KlvPlace& lastSet = layout.sets.back().klv;
  Bytes otherKag = bytes;
  for (const PartitionPlace& partition : layout.partitions) {
    Patch(otherKag, partition.offset + pack::kKagSize, Big32(1));
    Patch(otherKag, partition.offset + pack::kThisPartition, Big64(77));
  }
  const std::pair<const char*, Bytes> variants[] = {
      {"no random index", Resized(bytes, layout.randomIndex.key)},
      {"random index that names a partition twice",
       Patched(bytes, layout.randomIndex.value + 12 + 4, Big64(layout.partitions[2].offset))},
      {"count from the fill behind the pack on",
       Patched(bytes, pack::kHeaderByteCount, Big64(layout.headerByteCount + 512 - packBytes))},
      {"count up to the last set",
       Patched(bytes, pack::kHeaderByteCount, Big64(lastSet.value + lastSet.valueBytes - 512))},
      {"KAG that holds no pack", otherKag},
  };
  const Bytes expected = Conformed(bytes);
  for (const auto& [name, variant] : variants)
    EXPECT_EQ(Conformed(variant), expected) << name;
}

// The names of what a copy mends, without the layout, which every such copy changes.
std::string MendedBy(const ConformResult& result) {
  std::string names;
  for (const MendNote& note : result.mended) {
    if (note.mend == Mend::kLayout) continue;
    names += (names.empty() ? "" : " ") + std::string(MendName(note.mend));
  }
  return names;
}

TEST(Conform, MendsWhatWasNeverFinishedOrCutOff) {
  const Clip clip = BuildClip({.references = true});
  const auto& [bytes, layout] = clip;
  const auto patched = [&](auto offset, auto value) { return Patched(clip.bytes, offset, value); };
  const auto& partitions = layout.partitions;
  const std::uint64_t footer = partitions.back().offset;
  const std::string noEnd = "randomIndex footer durations index cutOff";
  const std::tuple<const char*, Bytes, std::string, std::size_t> rows[] = {
      {"open header", patched(pack::kStatus, Bytes{1}), "openPartitions", 10},
      {"open body", patched(partitions[1].offset + pack::kStatus, Bytes{3}), "openPartitions", 10},
      {"no footer", patched(footer + pack::kKind, Bytes{3}), "footer index", 10},
      {"data behind the random index", Resized(bytes, bytes.size() + 100),
       "randomIndex bytesBehind", 10},
      {"cut in the random index", Resized(bytes, bytes.size() - 1), "randomIndex index cutOff", 10},
      {"cut in the footer's index", Resized(bytes, partitions.back().indexOffset + 29),
       "byteCounts randomIndex index cutOff", 10},
      {"cut behind the footer's pack", Resized(bytes, partitions.back().indexOffset),
       "byteCounts randomIndex index", 10},
      {"cut in the second body", Resized(bytes, layout.frames[7].audio[2].value + 1), noEnd, 7},
      {"cut in a frame", Resized(bytes, layout.frames[3].picture.value),
       "randomIndex footer durations noIndex cutOff", 3},
      {"cut in a key", Resized(bytes, layout.frames[3].picture.key + 7),
       "randomIndex footer durations noIndex cutOff", 3},
      {"header count into a set", patched(pack::kHeaderByteCount, Big64(1000)), "byteCounts", 10},
      {"header count behind all", patched(pack::kHeaderByteCount, Big64(~0ULL)), "byteCounts", 10},
      {"header count of nothing", patched(pack::kHeaderByteCount, Big64(0)), "byteCounts", 10},
  };
  for (const auto& [fault, broken, mended, frames] : rows) {
    SCOPED_TRACE(fault);
    const TempFolder folder;
    const ConformResult result = Conform(folder, broken);
    ASSERT_TRUE(result.IsDone()) << result.reason;
    EXPECT_EQ(MendedBy(result), mended);
    EXPECT_EQ(result.frames, frames);
    const Bytes copy = ReadAll(folder.Path() / "out.mxf");
    ExpectTrueOffsets(copy);
    ExpectSameFrames(clip, copy, frames);
    EXPECT_EQ(Conformed(copy), copy);
  }
}

TEST(Conform, RefusesWhatCannotBeMadeLoadableAndLeavesNoFile) {
  const Clip clip = BuildClip(ClipSpec());
  const auto patched = [&](auto offset, auto value) { return Patched(clip.bytes, offset, value); };
  Bytes runIn(64);
  runIn.insert(runIn.end(), clip.bytes.begin(), clip.bytes.end());
  const auto& partitions = clip.layout.partitions;
  // Without a footer, so that a walk finds the frames.
  const Bytes open = Resized(clip.bytes, partitions.back().offset);
  const std::uint64_t secondSid = partitions[2].offset + pack::kBodySid;
  Bytes dataInFront = open;
  dataInFront[clip.layout.frames[0].system.key + 8] = 0x0E;
  Bytes fill(keys::kFill.begin(), keys::kFill.end());
  fill[7] = 2;
  ClipSpec noPackage;
  noPackage.DropSet(SetKind::kMaterialPackage);
  const std::tuple<const char*, Bytes, std::int32_t> rows[] = {
      {"empty", {}, kRandomIndexNotFound},
      {"run-in", runIn, kRandomIndexNotFound},
      {"footer in the middle", patched(partitions[1].offset + pack::kKind, Bytes{4}), 0},
      {"no key in the middle",
       Resized(patched(clip.layout.frames[3].audio[1].key, Bytes(16)), clip.bytes.size() - 1),
       kRandomIndexNotFound},
      {"cut before a frame is whole", Resized(clip.bytes, clip.layout.frames[0].audio[3].key),
       kRandomIndexNotFound},
      {"no version of ours",
       patched(partitions.back().offset + pack::kMajorVersion, Bytes{0, 2, 0, 4}),
       kPartitionVersion},
      {"frames behind other data", dataInFront, kRandomIndexNotFound},
      {"frames with another BodySID", Patched(open, secondSid, Big32(2)), kRandomIndexNotFound},
      {"frames without a BodySID", Patched(open, secondSid, Big32(0)), kRandomIndexNotFound},
      {"damaged length in the middle",
       Patched(open, clip.layout.frames[3].picture.key + 17, Bytes{0xFF}), kRandomIndexNotFound},
      {"no system element in the first frame only",
       Patched(open, clip.layout.frames[0].system.key, fill), kRandomIndexNotFound},
      {"no material package", BuildClip(noPackage).bytes, kMaterialPackageNotFound},
  };
  for (const auto& [fault, bytes, code] : rows) {
    SCOPED_TRACE(fault);
    const TempFolder folder;
    const ConformResult result = Conform(folder, bytes);
    EXPECT_FALSE(result.IsDone() || result.reason.empty());
    EXPECT_EQ(result.analysisCode, code) << result.reason;
    EXPECT_EQ(FilesIn(folder), 1U);
  }
}

TEST(Conform, MakesNoLargeCopyOfSmallPartitions) {
  const Clip clip = BuildClip(ClipSpec());
  const std::uint64_t packBytes = 20 + ReadBe24(&clip.bytes[17]);
  Bytes bytes = Patched(Resized(clip.bytes, clip.layout.partitions.back().offset), pack::kKagSize,
                        Big32(1 << 20));
  const auto body =
      clip.bytes.begin() + static_cast<std::ptrdiff_t>(clip.layout.partitions[1].offset);
  Bytes small(body, body + static_cast<std::ptrdiff_t>(packBytes));
  Patch(small, pack::kIndexByteCount, Big64(0));
  Patch(small, pack::kBodySid, Big32(3));
  small.insert(small.end(), keys::kAvcSubDescriptor.begin(), keys::kAvcSubDescriptor.end());
  small.insert(small.end(), {1, 0});
  for (int i = 0; i < 100; ++i)
    bytes.insert(bytes.end(), small.begin(), small.end());
  EXPECT_LT(Conformed(bytes).size(), 2 * bytes.size());
}

TEST(Conform, NeverReplacesAFileAndEndsWhenToldTo) {
  const TempFolder folder;
  const Bytes clip = BuildClip(ClipSpec()).bytes;
  const std::u16string in = folder.Write("in.mxf", clip);
  const std::u16string taken = folder.Write("taken.mxf", {1, 2, 3});
  JobProgress progress;
  EXPECT_FALSE(ConformClip({.in = in, .out = in}, &progress).IsDone());
  EXPECT_FALSE(ConformClip({.in = in, .out = taken}, &progress).IsDone());
  EXPECT_FALSE(ConformClip({.in = in, .out = folder.PathOf("no/out.mxf")}, &progress).IsDone());
  EXPECT_FALSE(
      ConformClip({.in = folder.PathOf("none.mxf"), .out = folder.PathOf("out.mxf")}, &progress)
          .IsDone());
  EXPECT_EQ(ReadAll(folder.Path() / "in.mxf"), clip);
  EXPECT_EQ(ReadAll(folder.Path() / "taken.mxf"), Bytes({1, 2, 3}));
  progress.cancel = 1;
  const ConformResult result = ConformClip({.in = in, .out = folder.PathOf("out.mxf")}, &progress);
  EXPECT_TRUE(result.fault == ConformFault::kStopped);
  EXPECT_EQ(FilesIn(folder), 2U);
  progress.cancel = 0;
  EXPECT_TRUE(ConformClip({.in = in, .out = folder.PathOf("out.mxf")}, &progress).IsDone());
  EXPECT_EQ(progress.done, progress.total);
  EXPECT_GT(progress.done, ReadAll(folder.Path() / "out.mxf").size());
}

}  // namespace
}  // namespace quorvan::test
