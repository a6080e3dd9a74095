// Where everything of a conformed clip comes to stand, decided before the first byte is written.

#pragma once

#include <cstdint>
#include <vector>

#include "conform/partition_map.h"

namespace quorvan {

// Room behind the last metadata set of a partition, as cameras leave it: the readers stop one KAG
// short of the end of the header metadata.
inline constexpr std::uint64_t kRoomBehindSets = 8 * 1024;

struct TargetPartition {
  std::uint64_t offset;           // of the pack's key
  std::uint64_t headerByteCount;  // primer, sets and the fill behind them
  std::uint64_t indexByteCount;   // segments and the fill behind them
  std::uint64_t essenceBytes;
};

struct ConformLayout {
  std::uint32_t kagSize;                    // of every partition; a pack with its fill occupies one
  std::vector<TargetPartition> partitions;  // in the order of the map
  std::uint64_t randomIndexOffset;
  std::uint64_t fileSize;
};

// Lays out the clip of `map`, which holds at least one partition. The KAG stays what the header
// partition says where every pack and its fill fit exactly into one.
ConformLayout LayOutClip(const std::vector<SourcePartition>& map);

// The bytes of the pack of partition `index` at its new place, with the fill behind it.
std::vector<std::uint8_t> WritePack(const std::vector<SourcePartition>& map,
                                    const ConformLayout& layout, std::size_t index);

// The bytes of the random index.
std::vector<std::uint8_t> WriteRandomIndex(const std::vector<SourcePartition>& map,
                                           const ConformLayout& layout);

// Bytes that `klvs` occupy when written, without fill.
std::uint64_t WrittenBytes(const std::vector<KlvSpan>& klvs);

}  // namespace quorvan
