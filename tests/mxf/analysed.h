// A built clip, run through the analysis, which must leave the file as it was.

#pragma once

#include <gtest/gtest.h>

#include "mxf/analysis.h"
#include "support/clip_builder.h"
#include "support/temp_folder.h"

namespace quorvan::test {

struct Analysed {
  explicit Analysed(const Bytes& bytes) {
    const TempFolder folder;
    const std::u16string path = folder.Write("clip.mxf", bytes);
    auto file = platform::File::Open(path, platform::OpenMode::kReadAlone);
    result = AnalyzeMxfFile(&file, &records.base);
    file.Close();
    EXPECT_TRUE(ReadAll(path) == bytes);
  }
  explicit Analysed(const ClipSpec& spec) : Analysed(BuildClip(spec).bytes) {}

  MxfRecords records;
  std::int32_t result = 0;
};

// Every place that the analysis finds, against where the builder put it.
inline void ExpectPlaces(const ClipSpec& spec) {
  const Clip clip = BuildClip(spec);
  const Analysed analysed(clip.bytes);
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
  EXPECT_EQ(r.audio.elementSize,
            spec.sliceCount == 0 ? 0 : clip.layout.frames[0].audio[0].totalBytes);
  EXPECT_EQ(r.audio.elementKind, spec.waveAudio ? kWaveElement : kAes3Element);
  EXPECT_EQ(r.base.hasAncillaryData, spec.dataTrack ? 1u : 0u);
  if (spec.dataElement) {
    EXPECT_EQ(r.base.ancillaryElementSize, clip.layout.frames[0].data->totalBytes);
  }
  EXPECT_EQ(r.timecode.startFrames, clip.layout.startFrames);
  EXPECT_EQ(WorkingLast(r.timecode) - WorkingStart(r.timecode) + 1, spec.frames);
}

}  // namespace quorvan::test
