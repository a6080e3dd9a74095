// The readers of the analysis, one for each stage.
//
// A reader takes the open file and the records, fills the fields of its stage in the records, and
// returns 0 or a code of its stage (see AnalysisCode in analysis.h). It returns the codes for a
// null or closed `file`, a null `mxf` or a missing record before it reads anything. The readers run
// in the order of the stages, because they use what the stages before have filled. They search the
// header metadata by the first partition of the table: a set must start before the file offset
// headerByteCount of this partition, and the Preface before its essenceBase.
//
// A reader may take a failed read for the end of the file or for a missing set; its caller asks
// File::Trouble. A reader throws only std::bad_alloc, when memory is out.

#pragma once

#include <cstdint>
#include <span>

#include "mxf/metadata/klv.h"
#include "mxf/records.h"
#include "platform/file.h"

namespace quorvan {

struct SegmentList;

// Reads the Random Index Pack, and every partition pack that it lists, into the table of
// `mxf->partitionTable`, in the order of the Random Index Pack (SMPTE 377). The last four of the
// `fileSize` bytes of the file lead to the Random Index Pack. Returns 0 or 201 to 209. The table is
// empty after a failure, except after 207 (an open partition). Throws nothing.
std::int32_t ReadRandomIndexAndPartitions(platform::File* file, std::uint64_t fileSize,
                                          MXF_BASE_INFO* mxf);

// Reads the Preface and refuses a file that is not OP1a, not frame wrapped, or of a version that
// cannot be rewritten. Fills `versionMajor` and `versionMinor`. A test whose item is not in the
// Preface passes. Returns 0 or 301 to 308. Throws nothing.
std::int32_t ReadPrefaceSet(platform::File* file, MXF_BASE_INFO* mxf);

// Reads the names, version and platform of the program that wrote the file, as printable ASCII. A
// company name, product name or platform that the file does not have becomes "unknown"; a missing
// product version is left as it is. Returns 0, also without an Identification set, or 901 to 903.
std::int32_t ReadIdentification(platform::File* file, MXF_BASE_INFO* mxf);

// Checks the Content Storage set whose key starts in [startOffset, limitOffset), both file offsets
// in bytes. Accepts a set that holds two items with the tag Packages or EssenceContainerData, when
// each of these items is a batch that counts two references or whose references have 16 bytes.
// Returns 0 or 701 to 704.
std::int32_t CheckContentStorage(platform::File* file, std::uint64_t startOffset,
                                 std::uint64_t limitOffset);

// Checks the Essence Container Data set whose key starts in [startOffset, limitOffset), both file
// offsets in bytes. Accepts a set with three items out of LinkedPackageUID, IndexSID and BodySID,
// whose IndexSID is not 0. Returns 0, 801, 802, 803 or 805.
std::int32_t CheckEssenceContainerData(platform::File* file, std::uint64_t startOffset,
                                       std::uint64_t limitOffset);

// Reads the Material Package and its tracks: UMID and dates, the number of sound tracks, whether
// there is a data track, and start, duration, base and drop frame of the timecode. Returns 0 or 401
// to 410. A package without a timecode track is accepted and leaves `timecode` as it is.
std::int32_t ReadMaterialPackage(platform::File* file, MXF_BASE_INFO* mxf);

// Reads only UMID and dates of a loaded clip again. `set` is the value of its Material Package as
// it is in the file now. An item that `set` does not hold leaves its field as it is. Tracks and
// timecode are not touched, because other threads may be reading them. Throws nothing.
void RefreshMaterialPackage(std::span<const std::uint8_t> set, MXF_BASE_INFO* mxf);

// Reads the UMID of the first Source Package, refuses a Multiple Descriptor that names a container
// other than that of multiple wrappings, and reads the picture descriptor, the edit rate and the
// first audio descriptor, which stands for all tracks. Returns 0 or 501 to 511.
std::int32_t ReadSourcePackage(platform::File* file, MXF_BASE_INFO* mxf);

// Looks up the local tag of the label `*label` in the Primer Pack whose key starts in [startOffset,
// limitOffset), both file offsets in bytes (SMPTE 377). Puts the tag into `*outTag` and returns
// true. Returns false, with `*outTag` unchanged, when there is no Primer Pack or the label is not
// in it, or when `file` is null or closed or a pointer is null. Moves the file pointer.
bool LookupPrimerTag(platform::File* file, const KlvKey* label, std::uint16_t* outTag,
                     std::uint64_t startOffset, std::uint64_t limitOffset);

// Measures the audio and ancillary elements of the first frame of the index, and finds where in the
// sample pattern the clip starts. Returns 0, or 609 as ReadIndexTable does.
std::int32_t MeasureFirstFrame(platform::File* file, MXF_BASE_INFO* mxf);

// Reads the index table by the order of the segments: the frames of the n-th segment lie in the
// n-th partition with its BodySID. Fills `*list` with the segments that count. Else as
// ReadIndexTable, but compares nothing with the frames.
std::int32_t ReadIndexTableByOrder(platform::File* file, MXF_BASE_INFO* mxf, SegmentList* list);

// Reads the index table into the array of `mxf->indexEntries`, one entry for each frame, gives each
// frame its number of samples, and measures the audio and ancillary elements of the first frame
// (SMPTE 377). Returns 0; 601 to 606; 607 for more than 26 delta entries in a segment; 608 when
// there are no entries, when an entry leads behind the end of the file, when a set cannot hold the
// entries that it claims, when the table is larger than that of any real clip, or when the tables
// of all partitions are together longer than the file; 609 when the audio element of the first
// frame does not hold the samples of a first frame at any rate, or the clip has no block size; 600
// plus kStageNoMemory when the memory for the table or for the entries is not there; or kCancelled
// when the stop request of `file` came.
//
// The frames are placed by the order of the segments, as ReadIndexTableByOrder does. When this
// leads behind the end of the file, or when the keys of the first or last frame of a segment
// contradict it, the frames are placed by their stream offsets among the BodyOffsets of the
// partitions, and segments without entries count with their EditUnitByteCount. This second reading
// is kept only when a walk over every frame finds the audio elements where it says; else the result
// of the first reading stands.
std::int32_t ReadIndexTable(platform::File* file, MXF_BASE_INFO* mxf);

}  // namespace quorvan
