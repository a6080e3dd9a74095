// The index table segments of a clip as they stand in the file (SMPTE ST 377-1).

#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "mxf/analysis.h"
#include "mxf/records.h"
#include "platform/file.h"

namespace quorvan {

// Most frames of a whole index table: more than three days at 60 frames a second. No real clip
// reaches them; a larger table is damaged.
inline constexpr std::uint64_t kMostFrames = 1u << 24;

// Result of the reader of the index table when the memory for the table or its entries is not
// there.
inline constexpr std::int32_t kIndexNoMemory =
    static_cast<std::int32_t>(kStageIndexTable) + kStageNoMemory;

// Sizes in bytes of the items of a delta entry array, and of an index entry without its slice
// offsets and PosTable values; of each of these; and the place of StreamOffset in an index entry.
inline constexpr std::size_t kDeltaEntryBytes = 6;
inline constexpr std::size_t kFixedEntryBytes = 11;
inline constexpr std::size_t kSliceOffsetBytes = 4;
inline constexpr std::size_t kPosTableBytes = 8;
inline constexpr std::size_t kStreamOffsetPlace = 3;

// An index entry as it stands in the file.
struct SegmentEntry {
  std::int8_t temporalOffset;
  std::int8_t keyFrameOffset;
  std::uint8_t flags;
  std::uint64_t streamOffset;  // bytes from the start of the essence
  std::uint32_t sliceOffset;   // of the last slice, bytes; 0 without slices
};

// An index table segment.
struct IndexSegment {
  std::uint64_t start = 0;          // frame number
  std::uint64_t duration = 0;       // frames, as the segment claims
  std::uint32_t editUnitBytes = 0;  // bytes of every frame; 0 when frames differ
  std::uint32_t bodySid = 0;
  std::uint8_t sliceCount = 0;
  std::uint8_t posTableCount = 0;
  std::uint32_t deltaCount = 0;
  std::array<DELTA_ENTRY, kMaxDeltaEntries> delta{};
  std::vector<SegmentEntry> entries;
  const MXF_PARTITION_INFO* foundIn = nullptr;  // the partition that holds the segment
};

// The segments of all partitions, in the order in which they were read.
struct SegmentList {
  std::vector<IndexSegment> segments;
  std::uint64_t frames = 0;     // index entries of all segments
  std::uint64_t bytesRead = 0;  // bytes of the index tables read so far
};

// Reads the local items of the index table segment with the value `set` into `*segment`. Returns 0;
// 607 for more than 26 delta entries; 608 when the set cannot hold the entries that it claims, or
// holds more than kMostFrames; 600 plus kStageNoMemory when the memory for the entries is not
// there; kCancelled when the stop request of `source`, the file of the set or null, came. Throws
// std::bad_alloc.
std::int32_t ReadIndexSegment(std::span<const std::uint8_t> set, IndexSegment* segment,
                              const platform::File* source = nullptr);

// Reads the segments of all partitions of `mxf` that have an IndexSID, in the order of the
// partition table. Returns what ReadIndexSegment returns; 608 also when the table is larger than
// that of any real clip, or when the tables of all partitions are together longer than the file;
// kCancelled when the stop request of `file` came. Throws std::bad_alloc.
std::int32_t ReadIndexSegments(const platform::File& file, const MXF_BASE_INFO& mxf,
                               SegmentList* list);

}  // namespace quorvan
