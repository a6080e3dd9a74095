// A clip's conformed copy, and what must hold for every one.

#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "conform/conform.h"
#include "mxf/analysis.h"
#include "mxf/metadata/klv.h"
#include "support/clip_builder.h"
#include "support/temp_folder.h"

namespace quorvan::test {

inline std::size_t FilesIn(const TempFolder& folder) {
  const std::filesystem::directory_iterator files(folder.Path());
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

// The names of what a copy mends, without the layout, which every such copy changes.
inline std::string MendedBy(const ConformResult& result) {
  std::string names;
  for (const MendNote& note : result.mended) {
    if (note.mend == Mend::kLayout) continue;
    names += (names.empty() ? "" : " ") + std::string(MendName(note.mend));
  }
  return names;
}

// Conforms `clip` from in.mxf to out.mxf, after a check, which must write nothing and say the same.
inline ConformResult Conform(const TempFolder& folder, const Bytes& clip) {
  JobProgress progress;
  std::filesystem::remove(folder.Path() / "out.mxf");
  ConformRequest request{.in = folder.Write("in.mxf", clip), .out = folder.PathOf("out.mxf")};
  request.checkOnly = true;
  const ConformResult checked = ConformClip(request, &progress);
  EXPECT_EQ(FilesIn(folder), 1U);
  request.checkOnly = false;
  ConformResult result = ConformClip(request, &progress);
  EXPECT_TRUE(checked.fault == result.fault) << checked.reason.en;
  EXPECT_EQ(checked.reason.en, result.reason.en);
  EXPECT_EQ(checked.analysisCode, result.analysisCode);
  EXPECT_EQ(checked.frames, result.frames);
  EXPECT_EQ(MendedBy(checked), MendedBy(result));
  return result;
}

// The conformed form of `clip`, which must have one.
inline Bytes Conformed(const Bytes& clip) {
  const TempFolder folder;
  const ConformResult result = Conform(folder, clip);
  EXPECT_TRUE(result.IsDone()) << result.reason.en;
  EXPECT_EQ(FilesIn(folder), result.IsDone() ? 2U : 1U);
  return result.IsDone() ? ReadAll(folder.Path() / "out.mxf") : Bytes();
}

// The `count` frames of the conformed clip, as the analysis finds them, against the first frames of
// the built one.
inline void ExpectSameFrames(const Clip& clip, const Bytes& conformed, std::size_t count) {
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
inline void ExpectTrueOffsets(const Bytes& clip) {
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

}  // namespace quorvan::test
