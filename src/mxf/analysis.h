// The analysis of an MXF file: all readers in their fixed order.

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "platform/file.h"

namespace quorvan {

// Values of MXF_BASE_INFO.processCode, in the order in which an analysis passes them.
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

// Results that mean the same for every stage.
inline constexpr std::int32_t kSuccess = 0;
inline constexpr std::int32_t kCancelled = 99;

// Failures that every stage of an analysis can have, added to its process code: the file cannot be
// read, memory is out.
inline constexpr std::int32_t kStageUnreadable = 13;
inline constexpr std::int32_t kStageNoMemory = 14;

// What a refused analysis returns.
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

// Runs all readers over the open `file` and fills the records of `mxf`, of which
// `timecode->useFileIo` must be set; nothing of a file that was analysed before survives in them.
// Returns 0, or the AnalysisCode of the first stage that refuses, or its process code plus
// kStageUnreadable or kStageNoMemory, or kCancelled when the stop request of `file` came;
// `processCode` is left at that stage, at 600 on success. The file is only read. What earlier
// stages filled stays until UnloadMxf. Throws nothing.
std::int32_t AnalyzeMxfFile(platform::File* file, MXF_BASE_INFO* mxf);

}  // namespace quorvan
