// Fuzz target: analyses the input as a clip, and fills an accepted clip with silence. Whatever the
// input claims, the records must lead to places inside the input, and the file must keep its
// length.

#include <cstdlib>

#include "memory_file.h"
#include "mxf/analysis.h"
#include "rewrite/rewrap_mapped.h"
#include "state/app_state_info.h"
#include "state/clip_state.h"

namespace quorvan {
namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

void RequireValidRecords(const MXF_BASE_INFO& mxf, std::size_t size) {
  Require(mxf.fileSize == size);
  Require(mxf.audio->trackCount >= 1 && mxf.timecode->frameCount >= 1);
  Require(mxf.timecode->rateIndex <= kUnknownRateIndex);
  Require(mxf.timecode->fpsIndex <= kUnknownFpsIndex);
  Require(!HasRange(*mxf.timecode) || mxf.timecode->fpsIndex < kUnknownFpsIndex);
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  for (std::uint32_t i = 0; i < mxf.timecode->frameCount; ++i) {
    const INDEX_ENTRY_ARRAY& entry = (*mxf.indexEntries)[i];
    Require(entry.fileOffset < size && entry.sliceOffset < size - entry.fileOffset);
    Require(entry.deltaCount <= kMaxDeltaEntries);
    Require(entry.partition >= table && entry.partition < table + table[0].partitionCount);
    for (std::uint32_t k = 0; k < entry.deltaCount; ++k) {
      Require(entry.delta[k].elementDelta < size - entry.fileOffset - entry.sliceOffset);
    }
  }
}

void WriteSilence(const std::u16string& path, AppState* app) {
  EnterLoadedState(&app->info);
  for (std::uint32_t t = 0; t < UsableTracks(app->mxf.audio); ++t) {
    app->tracks.rewrapSwitch[t] = kSwitchOn;
  }
  app->tracks.inFrame = FirstFramePoint(app->mxf.timecode);
  app->tracks.outFrame = LastFramePoint(app->mxf.timecode);
  app->tracks.noFlush = app->tracks.keepUmids = 1;
  RewrapMapped(path.c_str(), &app->tracks, app->info.mxf);
}

}  // namespace
}  // namespace quorvan

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvan;
  static fuzz::MemoryFile memory;
  memory.Replace(data, size);
  AppState app;
  platform::File file = platform::File::Open(memory.Path(), platform::OpenMode::kReadAlone);
  Require(file.IsOpen());
  const std::int32_t result = AnalyzeMxfFile(&file, app.info.mxf);
  Require(result >= 0 && result < 1000);
  Require(result % 100 != kStageUnreadable);
  file.Close();
  if (result != kSuccess) return 0;

  RequireValidRecords(app.mxf.base, size);
  WriteSilence(memory.Path(), &app);
  file = platform::File::Open(memory.Path(), platform::OpenMode::kReadAlone);
  Require(file.IsOpen() && file.Size() == size);
  return 0;
}
