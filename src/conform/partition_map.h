// Finds the parts of each partition of a clip: the header metadata, the index table and the essence
// (SMPTE 377). Accepts lengths of every BER form, which the readers of the analysis do not.

#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "conform/klv_field.h"
#include "mxf/metadata/partition_pack.h"
#include "platform/file.h"

namespace quorvan {

// Key and value of one partition pack. The value holds at least pack_field::kFixedBytes bytes.
struct PartitionPack {
  KlvKey key;
  std::vector<std::uint8_t> value;

  // The number at byte offset `field` of the value.
  std::uint32_t U32(std::size_t field) const { return ReadBe32(value.data() + field); }
  std::uint64_t U64(std::size_t field) const { return ReadBe64(value.data() + field); }
};

// One partition of the clip that is copied. Offsets are file offsets.
struct SourcePartition {
  PartitionPack pack;
  std::uint64_t offset;                // first byte of the pack's key
  std::uint64_t end;                   // first byte behind the partition
  std::vector<KlvSpan> metadata;       // primer pack and metadata sets, without fill
  std::vector<KlvSpan> indexSegments;  // index table segments, without fill
  std::uint64_t essenceStart;          // first byte of the essence; `end` when there is none
};

// Reads the partitions of `file`, which is `fileSize` bytes long, into `*map`, in file order. Takes
// the partitions from the random index when the index agrees with the packs, else from a walk over
// every KLV of the file. The walk ends when `cancel` is not 0. Returns false when the walk was
// cancelled, when a read fails, or when the clip cannot be laid out anew: a run-in, an open
// partition, no footer partition, byte counts that do not end at a KLV, or more metadata than real
// clips have. `*reason` then tells why, in English. Throws std::bad_alloc.
bool ReadPartitionMap(const platform::File& file, std::uint64_t fileSize,
                      const std::atomic<std::uint32_t>& cancel, std::vector<SourcePartition>* map,
                      std::string* reason);

}  // namespace quorvan
