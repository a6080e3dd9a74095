// The analysis of an MXF file: runs all readers of mxf/metadata/readers.h in their fixed order.

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "platform/file.h"

namespace quorvan {

// Values of MXF_BASE_INFO.processCode: the stages of an analysis in the order in which they run,
// then the continuity check and the other jobs.
enum ProcessCode : std::uint32_t {
  kStageFileSize = 100,
  kStageRandomIndex = 200,
  kStagePreface = 300,
  kStageIdentification = 900,
  kStageContentStorage = 700,
  kStageEssenceContainerData = 800,
  kStageMaterialPackage = 400,
  kStageSourcePackage = 500,
  kStageIndexTable = 600,
  kStageTimecodeContinuity = 1000,
  kStageRewrapMapped = 2000,
  kStageRewrapFileIo = 3000,
  kStageExportMapped = 4000,
  kStageExportFileIo = 5000,
  kStageLoudness = 6000,
};

// Results that have the same meaning in every stage and job.
inline constexpr std::int32_t kSuccess = 0;
inline constexpr std::int32_t kCancelled = 99;

// Failures that every stage of an analysis can have. The result is the process code of the stage
// plus the number.
inline constexpr std::int32_t kStageUnreadable = 13;  // the file cannot be read
inline constexpr std::int32_t kStageNoMemory = 14;    // memory is out

// Results of an analysis that refuses the file. 1 to 7: an argument is missing. All others: the
// process code of the stage that refuses, plus 1 to 11.
enum AnalysisCode : std::int32_t {
  kNoFileHandle = 1,
  kNoBaseInfo = 2,
  kNoPartitionCell = 3,
  kNoTimecodeInfo = 4,
  kNoIndexCell = 5,
  kNoVideoInfo = 6,
  kNoAudioInfo = 7,

  kRandomIndexNoFile = 201,
  kRandomIndexNoBaseInfo = 202,
  kRandomIndexNoCell = 203,
  kRandomIndexNotFound = 204,
  kRandomIndexNoMemory = 205,
  kPartitionTableNoMemory = 206,
  kPartitionOpen = 207,
  kNoFooterPartition = 208,
  kPartitionVersion = 209,

  kPrefaceNoFile = 301,
  kPrefaceNoBaseInfo = 302,
  kPrefaceNoCell = 303,
  kPrefaceNotFound = 304,
  kPrefaceNoMemory = 305,
  kNotOp1a = 306,
  kNotFrameWrapped = 307,
  kPrefaceVersion = 308,

  kMaterialNoFile = 401,
  kMaterialNoBaseInfo = 402,
  kMaterialNoCell = 403,
  kMaterialNoAudioInfo = 404,
  kMaterialPackageNotFound = 405,
  kTimelineTrackMissing = 406,
  kSequenceMissing = 407,
  kTimecodeComponentMissing = 408,
  kDurationZero = 409,
  kNoSoundTrack = 410,

  kSourceNoFile = 501,
  kSourceNoBaseInfo = 502,
  kSourceNoCell = 503,
  kSourceNoAudioInfo = 504,
  kSourcePackageNotFound = 505,
  kMultipleDescriptorNotFound = 506,
  kNotMultipleEssence = 507,
  kPictureDescriptorNotFound = 508,
  kUnknownVideoCoding = 509,
  kAudioDescriptorUnfit = 510,
  kSamplingRateUnfit = 511,

  kIndexNoFile = 601,
  kIndexNoBaseInfo = 602,
  kIndexNoPartitionCell = 603,
  kIndexNoTimecodeInfo = 604,
  kIndexNoIndexCell = 605,
  kIndexNoAudioInfo = 606,
  kTooManyDeltaEntries = 607,
  kNoIndexTable = 608,
  kUnknownSamplePattern = 609,

  kContentStorageNoFile = 701,
  kContentStorageNotFound = 702,
  kPackagesUnfit = 703,
  kContentStorageTagsMissing = 704,

  kEssenceDataNoFile = 801,
  kEssenceDataNotFound = 802,
  kIndexSidZero = 803,
  kEssenceDataTagsMissing = 805,

  kIdentificationNoFile = 901,
  kIdentificationNoBaseInfo = 902,
  kIdentificationNoCell = 903,
};

// Runs all readers over the open `file` and fills the records of `mxf`. First clears them with
// ForgetMxf, so that no value of an earlier file remains. The file is only read.
//
// Returns kSuccess, with `mxf->processCode` at 600, or the result of the first stage that fails,
// with `mxf->processCode` at this stage:
// - an AnalysisCode when the stage refuses the file,
// - the process code of the stage plus kStageUnreadable or kStageNoMemory,
// - kCancelled when the stop request of `file` has come.
// After a failure the records keep what the stages have filled so far; UnloadMxf clears them. When
// an argument or a record is missing (1 to 7), nothing is changed. Throws nothing.
std::int32_t AnalyzeMxfFile(platform::File* file, MXF_BASE_INFO* mxf);

}  // namespace quorvan
