// The partitions of a clip as they are, whatever forms its lengths have: what belongs to the header
// metadata, what to the index table, and where the essence starts and ends (SMPTE 377).

#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "conform/klv_field.h"
#include "conform/partition_pack.h"
#include "platform/file.h"

namespace quorvan {

struct SourcePartition {
  PartitionPack pack;
  std::uint64_t offset;                // of the pack's key
  std::uint64_t end;                   // first byte behind the partition
  std::vector<KlvSpan> metadata;       // primer and sets, without fill
  std::vector<KlvSpan> indexSegments;  // without fill
  std::uint64_t essenceStart;          // first byte that StreamOffsets count; `end` when none
};

// Reads the map of `file`, which is `fileSize` bytes long. Partitions come from the random index
// when that agrees with the packs, else from a walk over every KLV, which `*cancel` set to 1 ends.
// False when the clip is not one that can be laid out anew; `*reason` then tells why.
bool ReadPartitionMap(const platform::File& file, std::uint64_t fileSize,
                      const std::atomic<std::uint32_t>& cancel, std::vector<SourcePartition>* map,
                      std::string* reason);

}  // namespace quorvan
