#include <gtest/gtest.h>

#include <tuple>

#include "conformed.h"
#include "mxf/essence/audio_element.h"

namespace quorvan::test {
namespace {

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

// `broken` is `clip` with a fault; its copy has the first `frames` frames.
void ExpectMended(const Clip& clip, const Bytes& broken, const std::string& mended,
                  std::size_t frames) {
  const TempFolder folder;
  const ConformResult result = Conform(folder, broken);
  ASSERT_TRUE(result.IsDone()) << result.reason.en;
  EXPECT_EQ(MendedBy(result), mended);
  EXPECT_EQ(result.frames, frames);
  const Bytes copy = ReadAll(folder.Path() / "out.mxf");
  ExpectTrueOffsets(copy);
  ExpectSameFrames(clip, copy, frames);
  EXPECT_EQ(Conformed(copy), copy);
}

TEST(Conform, MendsWhatWasNeverFinishedOrCutOff) {
  const Clip clip = BuildClip({.references = true});
  const auto& [bytes, layout] = clip;
  const auto patched = [&](auto offset, auto value) { return Patched(clip.bytes, offset, value); };
  const auto& partitions = layout.partitions;
  const std::uint64_t footer = partitions.back().offset;
  const std::string noEnd = "randomIndex footer durations index cutOff";
  ClipSpec sameUid{.setsInTurn = true};
  sameUid.headerEdits = {[](HeaderSets& sets) {
    for (const MetadataItem& item : SetOf(sets, SetKind::kMpegVideoDescriptor).items) {
      if (item.tag == tag::kInstanceUid)
        SetOf(sets, SetKind::kAes3Descriptor, 3).SetTag(tag::kInstanceUid, item.value);
    }
  }};
  const std::tuple<const char*, Bytes, std::string, std::size_t> rows[] = {
      {"open header", patched(pack::kStatus, Bytes{1}), "openPartitions", 10},
      {"open body", patched(partitions[1].offset + pack::kStatus, Bytes{3}), "openPartitions", 10},
      {"generic stream", patched(partitions[1].offset + pack::kStatus, Bytes{0x11}), "", 10},
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
      {"two sets with one UID", BuildClip(sameUid).bytes, "setOrder", 10},
      {"header count of nothing", patched(pack::kHeaderByteCount, Big64(0)), "byteCounts", 10},
  };
  for (const auto& [fault, broken, mended, frames] : rows) {
    SCOPED_TRACE(fault);
    ExpectMended(clip, broken, mended, frames);
  }
}

// Faults that only some layouts can have.
TEST(Conform, LosesNoFrameWhereAPackIsWrongOrAPartitionShort) {
  const Clip shortOnes = BuildClip({.framesPerPartition = 1});
  const auto& frames = shortOnes.layout.frames;
  ExpectMended(shortOnes, Resized(shortOnes.bytes, frames[3].picture.value),
               "randomIndex footer durations index cutOff", 3);

  const Clip everywhere = BuildClip({.metadataEverywhere = true});
  const std::uint64_t secondSet = everywhere.layout.sets[1].klv.key;
  for (const auto& [partition, count] : {std::pair(1, 0ULL), {2, 0ULL}, {0, secondSet - 512}}) {
    const auto& places = everywhere.layout.partitions;
    const std::uint64_t pack = places[static_cast<std::size_t>(partition)].offset;
    ExpectMended(everywhere, Patched(everywhere.bytes, pack + pack::kHeaderByteCount, Big64(count)),
                 "byteCounts", 10);
  }

  const Clip plain = BuildClip({});
  ExpectMended(plain, Patched(plain.bytes, pack::kBodyOffset, Big64(1 << 20)), "", 10);
}

TEST(Conform, WritesAnIndexThatCannotBeKeptAnew) {
  ClipSpec noSid, sidOfNone;
  noSid.RemoveTag(SetKind::kEssenceContainerData, 0, tag::kIndexSid);
  sidOfNone.SetTag(SetKind::kEssenceContainerData, 0, tag::kIndexSid, Big32(0));
  // Wherever this clip's frames have another length than the first one, they also have other
  // samples than their place in the pattern says.
  const ClipSpec otherPattern{.rate = Rate::k29_97, .patternStart = 4, .elementKag = 0};
  const std::pair<ClipSpec, std::string> rows[] = {
      {noSid, "index"}, {sidOfNone, "index"}, {otherPattern, "index frames"}};
  for (const auto& [spec, mended] : rows) {
    const TempFolder folder;
    const ConformResult result = Conform(folder, BuildClip(spec).bytes);
    EXPECT_TRUE(result.IsDone()) << result.reason.en;
    EXPECT_EQ(MendedBy(result), mended);
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
  // Frames that have to be laid anew.
  const Clip other = BuildClip({.mixedElementLengths = true});
  const FramePlace& frame = other.layout.frames[2];
  // Data elements instead of the last audio elements.
  const auto withData = [](Clip changed) {
    for (const FramePlace& each : changed.layout.frames)
      Patch(changed.bytes, each.audio.back().key + 12, {0x17, 1, 2, 1});
    return changed.bytes;
  };
  const std::tuple<const char*, Bytes, std::int32_t> rows[] = {
      {"empty", {}, kRandomIndexNotFound},
      {"run-in", runIn, kRandomIndexNotFound},
      {"footer in the middle", patched(partitions[1].offset + pack::kKind, Bytes{4}), 0},
      {"no key in the middle",
       Resized(patched(clip.layout.frames[3].audio[1].key, Bytes(16)), clip.bytes.size() - 1),
       kRandomIndexNotFound},
      {"no element at the start", patched(clip.layout.frames[0].system.key + 8, Bytes{1}), 0},
      {"no pack in front of all frames", patched(partitions[1].offset + 8, Bytes{1}),
       kRandomIndexNotFound},
      {"no pack between frames", patched(partitions[2].offset + 8, Bytes{1}), kRandomIndexNotFound},
      {"frames of another body", patched(partitions[2].offset + pack::kBodySid, Big32(7)),
       kNoIndexTable},
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
      {"no element in a frame", Patched(other.bytes, frame.picture.key + 8, Bytes(4)), 0},
      {"two kinds of audio", Patched(other.bytes, frame.audio[1].key + 14, {1}), 0},
      {"more tracks than audio elements", withData(clip), 0},
      {"more tracks than audio elements to lay anew", withData(other), 0},
  };
  for (const auto& [fault, bytes, code] : rows) {
    SCOPED_TRACE(fault);
    const TempFolder folder;
    const ConformResult result = Conform(folder, bytes);
    EXPECT_TRUE(result.fault == ConformFault::kUnfit && !result.reason.en.empty());
    EXPECT_EQ(result.analysisCode, code) << result.reason.en;
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
  // An element of a generic stream (SMPTE ST 410).
  small.insert(small.end(),
               {0x06, 0x0E, 0x2B, 0x34, 1, 1, 1, 0x0C, 0x0D, 1, 5, 9, 1, 0, 0, 0, 1, 0});
  for (int i = 0; i < 100; ++i)
    bytes.insert(bytes.end(), small.begin(), small.end());
  EXPECT_LT(Conformed(bytes).size(), 2 * bytes.size());
}

void Erase(std::uint64_t offset, std::uint64_t bytes, Bytes* from) {
  const auto first = from->begin() + static_cast<std::ptrdiff_t>(offset);
  from->erase(first, first + static_cast<std::ptrdiff_t>(bytes));
}

// Clips whose first frame begins with an element that has another length field than the readers
// follow: a system element, or an audio element.
TEST(Conform, LeadsToPictureAndAudioOfFramesThatAreLaidAnew) {
  for (const bool hasPicture : {true, false}) {
    const Clip clip = BuildClip(
        {.noFill = !hasPicture, .systemElement = hasPicture, .mixedElementLengths = true});
    std::vector<FramePlace> frames = clip.layout.frames;
    Bytes bytes = clip.bytes;
    for (auto frame = frames.rbegin(); frame != frames.rend() && !hasPicture; ++frame)
      Erase(frame->picture.key, frame->picture.totalBytes, &bytes);
    if (hasPicture) Erase(frames[0].offset, frames[0].bytes, &bytes);
    if (hasPicture) frames.erase(frames.begin());
    const Bytes copy = Conformed(bytes);
    const TempFolder folder;
    auto file = platform::File::Open(folder.Write("c.mxf", copy), platform::OpenMode::kReadAlone);
    MxfRecords records;
    ASSERT_EQ(AnalyzeMxfFile(&file, &records.base), 0);
    ASSERT_EQ(records.timecode.frameCount, frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
      const KlvPlace& built = frames[i].audio.back();
      const auto value = LocateElementValue(records.base, records.indexEntries[i], 3);
      ASSERT_TRUE(value && value->bytes() == built.valueBytes);
      EXPECT_TRUE(
          std::equal(&copy[value->fileOffset()], &copy[value->end()], &clip.bytes[built.value]));
    }
    constexpr std::uint8_t kPicture = 0x15, kAudio = 0x16;
    const INDEX_ENTRY_ARRAY& first = records.indexEntries[0];
    EXPECT_EQ(copy[first.fileOffset + first.delta[1].elementDelta + 12],
              hasPicture ? kPicture : kAudio);
  }
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
