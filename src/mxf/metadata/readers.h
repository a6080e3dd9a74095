// The readers of the analysis, one for each stage. Each takes the open file and the records, fills
// the fields of its stage and returns 0 or its stage's code (see AnalysisCode in analysis.h); a
// null or closed `file`, a null `mxf` or a missing record is answered before the file is touched.
// All metadata is searched in the first partition of the table.

#pragma once

#include <cstdint>
#include <span>

#include "mxf/metadata/klv.h"
#include "mxf/records.h"
#include "platform/file.h"

namespace quorvan {

// Reads the Random Index Pack that the last four of the file's `fileSize` bytes lead to, and every
// partition pack that it lists, into the table behind `mxf->partitionTable` (SMPTE 377). 201 to
// 209.
std::int32_t ReadRandomIndexAndPartitions(platform::File* file, std::uint64_t fileSize,
                                          MXF_BASE_INFO* mxf);

// The format gate: OP1a, frame wrapped, a version that can be rewritten. 301 to 308.
std::int32_t ReadPrefaceSet(platform::File* file, MXF_BASE_INFO* mxf);

// Names of the writer, as printable ASCII. A file without them passes as "unknown". 901 to 903.
std::int32_t ReadIdentification(platform::File* file, MXF_BASE_INFO* mxf);

// Checks the Content Storage set whose key starts in [startOffset, limitOffset). 701 to 704.
std::int32_t CheckContentStorage(platform::File* file, std::uint64_t startOffset,
                                 std::uint64_t limitOffset);

// Checks the Essence Container Data set in the same way. 801 to 805.
std::int32_t CheckEssenceContainerData(platform::File* file, std::uint64_t startOffset,
                                       std::uint64_t limitOffset);

// Identity, dates, tracks by kind, and start, length and base of the timecode. 401 to 410.
std::int32_t ReadMaterialPackage(platform::File* file, MXF_BASE_INFO* mxf);

// Of a loaded clip, only identity and dates again, from the value of its Material Package as it
// stands in the file now. Tracks and timecode, which other threads may be reading, are not touched.
void RefreshMaterialPackage(std::span<const std::uint8_t> set, MXF_BASE_INFO* mxf);

// The top-level Source Package with the picture and the first audio descriptor. 501 to 511.
std::int32_t ReadSourcePackage(platform::File* file, MXF_BASE_INFO* mxf);

// Finds the Primer Pack in [startOffset, limitOffset) and in it the local tag of `label`. Returns
// true and the tag, or false and leaves `*outTag` alone.
bool LookupPrimerTag(platform::File* file, const KlvKey* label, std::uint16_t* outTag,
                     std::uint64_t startOffset, std::uint64_t limitOffset);

// The index table as one entry a frame, the sample pattern over it, and the size of the elements as
// the first frame shows it. 601 to 609. More than 26 delta entries end with 607; entries that lead
// behind the end of the file, counts that their set cannot hold and a table without entries with
// 608.
std::int32_t ReadIndexTable(platform::File* file, MXF_BASE_INFO* mxf);

}  // namespace quorvan
