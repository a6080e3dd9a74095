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
    EXPECT_TRUE(ReadAll(path) == bytes);
  }
  explicit Analysed(const ClipSpec& spec) : Analysed(BuildClip(spec).bytes) {}

  MxfRecords records;
  std::int32_t result = 0;
};

}  // namespace quorvan::test
