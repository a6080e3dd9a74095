// A built clip, run through the analysis.

#pragma once

#include "mxf/analysis.h"
#include "support/clip_builder.h"
#include "support/temp_folder.h"

namespace quorvan::test {

struct Analysed {
  MxfRecords records;
  std::int32_t result = 0;
};

// Also checks that the analysis leaves the file as it was: returns false for that.
inline bool Analyse(const Bytes& bytes, Analysed* analysed) {
  const TempFolder folder;
  const std::u16string path = folder.Write("clip.mxf", bytes);
  auto file = platform::File::Open(path, platform::OpenMode::kReadAlone);
  analysed->result = AnalyzeMxfFile(&file, &analysed->records.base);
  return ReadAll(path) == bytes;
}

}  // namespace quorvan::test
