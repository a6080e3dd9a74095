// Where the parts of a conformed clip stand, decided before the first byte is written (SMPTE 377).

#pragma once

#include <cstdint>
#include <vector>

#include "conform/partition_map.h"

namespace quorvan {

// Least number of bytes behind the last metadata set of a partition, as much as cameras leave. The
// readers stop one KAG before the end of the header metadata, so the sets must end before that.
inline constexpr std::uint64_t kRoomBehindSets = 8 * 1024;

// One partition of the copy. Its parts follow each other without a gap: pack with fill (one KAG),
// header metadata, index table, essence.
struct TargetPartition {
  std::uint64_t offset;           // file offset of the pack's key
  std::uint64_t headerByteCount;  // bytes of primer, sets and the fill behind them
  std::uint64_t indexByteCount;   // bytes of index segments and the fill behind them
  std::uint64_t essenceBytes;     // the same as in the source
};

struct ConformLayout {
  std::uint32_t kagSize;                    // bytes; the same in every partition
  std::vector<TargetPartition> partitions;  // in the order of the source partitions
  std::uint64_t randomIndexOffset;          // file offset of the random index
  std::uint64_t fileSize;                   // bytes of the copy
};

// Lays out the copy of the clip with the partitions `map`, at least one. Keeps the KAG size of the
// header partition when it is at most 2^20 and every pack, with a fill or alone, makes exactly one
// KAG; else takes the smallest multiple of 512 with which every pack does. Throws std::bad_alloc.
ConformLayout LayOutClip(const std::vector<SourcePartition>& map);

// Makes the bytes of the pack of partition `index` (zero-based) with its new offsets and byte
// counts, and the fill behind the pack: layout.kagSize bytes. Throws std::bad_alloc.
std::vector<std::uint8_t> WritePack(const std::vector<SourcePartition>& map,
                                    const ConformLayout& layout, std::size_t index);

// Makes the bytes of the random index of the copy, key and length included. Throws std::bad_alloc.
std::vector<std::uint8_t> WriteRandomIndex(const std::vector<SourcePartition>& map,
                                           const ConformLayout& layout);

// Number of bytes of `klvs` when they are written with headers of AppendKlvHeader, without fill.
std::uint64_t WrittenBytes(const std::vector<KlvSpan>& klvs);

}  // namespace quorvan
