#include "mxf/analysis.h"

#include <new>

#include "mxf/metadata/metadata_set.h"
#include "mxf/metadata/readers.h"

namespace quorvan {
namespace {

std::int32_t MissingAnalysisArgument(const platform::File* file, const MXF_BASE_INFO* mxf) {
  if (!IsUsable(file)) return kNoFileHandle;
  if (mxf == nullptr) return kNoBaseInfo;
  if (mxf->partitionTable == nullptr) return kNoPartitionCell;
  if (mxf->timecode == nullptr) return kNoTimecodeInfo;
  if (mxf->indexEntries == nullptr) return kNoIndexCell;
  if (mxf->video == nullptr) return kNoVideoInfo;
  if (mxf->audio == nullptr) return kNoAudioInfo;
  return kSuccess;
}

struct Stage {
  ProcessCode code;
  std::int32_t (*read)(platform::File* file, MXF_BASE_INFO* mxf);
};

// Runs one stage and decides its result. A reader may take a failed read or a stop request for the
// end of the file or for a missing set, so its own result counts only when neither has happened.
std::int32_t RunStage(const Stage& stage, platform::File* file, MXF_BASE_INFO* mxf) {
  const auto base = static_cast<std::int32_t>(stage.code);
  std::int32_t result = kSuccess;
  try {
    result = stage.read(file, mxf);
  } catch (const std::bad_alloc&) {
    return base + kStageNoMemory;
  }
  if (file->Trouble() == platform::ReadTrouble::kFailed) return base + kStageUnreadable;
  return file->StopAsked() ? kCancelled : result;
}

std::int32_t ReadFileSize(platform::File* file, MXF_BASE_INFO* mxf) {
  mxf->fileSize = file->Size().value_or(0);
  return kSuccess;
}

const MXF_PARTITION_INFO& FirstPartition(const MXF_BASE_INFO& mxf) {
  return mxf.partitionTable->get()[0];
}

constexpr Stage kStages[] = {
    {kStageFileSize, ReadFileSize},
    {kStageRandomIndex,
     [](platform::File* file, MXF_BASE_INFO* mxf) {
       return ReadRandomIndexAndPartitions(file, mxf->fileSize, mxf);
     }},
    {kStagePreface, ReadPrefaceSet},
    {kStageIdentification, ReadIdentification},
    {kStageContentStorage,
     [](platform::File* file, MXF_BASE_INFO* mxf) {
       const MXF_PARTITION_INFO& first = FirstPartition(*mxf);
       return CheckContentStorage(file, first.kagSize, first.headerByteCount);
     }},
    {kStageEssenceContainerData,
     [](platform::File* file, MXF_BASE_INFO* mxf) {
       const MXF_PARTITION_INFO& first = FirstPartition(*mxf);
       return CheckEssenceContainerData(file, first.kagSize, first.headerByteCount);
     }},
    {kStageMaterialPackage, ReadMaterialPackage},
    {kStageSourcePackage, ReadSourcePackage},
    {kStageIndexTable, ReadIndexTable},
};

}  // namespace

std::int32_t AnalyzeMxfFile(platform::File* file, MXF_BASE_INFO* mxf) {
  if (const std::int32_t refused = MissingAnalysisArgument(file, mxf)) return refused;

  ForgetMxf(mxf);
  for (const Stage& stage : kStages) {
    mxf->processCode = stage.code;
    const std::int32_t result = RunStage(stage, file, mxf);
    if (result > 0) return result;
  }
  return kSuccess;
}

}  // namespace quorvan
