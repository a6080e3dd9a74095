// Finds the parts of each partition of a clip: the header metadata, the index table and the essence
// (SMPTE ST 377-1). Accepts lengths of every BER form, which the readers of the analysis do not,
// and clips that were never finished or were cut off.

#pragma once

#include <cstdint>
#include <vector>

#include "conform/klv_field.h"
#include "conform/reason.h"
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

  std::uint8_t Kind() const { return key[kPackKindByte]; }
  std::uint8_t Status() const { return key[kPackStatusByte]; }
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

struct SourceClip {
  std::vector<SourcePartition> partitions;  // in file order
  bool hasRandomIndex = false;              // a Random Index Pack that agrees with the packs
  std::uint64_t bytesBehind = 0;            // bytes behind the Random Index Pack
  std::uint32_t unfinished = 0;             // partitions that are open or incomplete
  std::uint32_t wrongCounts = 0;            // partitions whose byte counts are wrong
  std::uint64_t cutBytes = 0;  // bytes behind the last whole KLV of a clip that was cut off

  bool HasFooter() const { return partitions.back().pack.Kind() == kFooterPackKind; }
};

// Reads the partitions of `file`, which is `fileSize` bytes long, into `*clip`. Takes the
// partitions from the random index when the index agrees with the packs, else from a walk over
// every KLV of the file. Takes the parts of a partition by its byte counts when these end at a KLV,
// else by the keys of the KLVs. Returns false when a read fails or is stopped, or when the clip
// cannot be laid out anew: a run-in, partitions out of order, bytes in the middle that are no KLV,
// no header metadata, or more metadata than real clips have. `*reason` then tells why.
// Throws std::bad_alloc.
bool ReadSourceClip(const platform::File& file, std::uint64_t fileSize, SourceClip* clip,
                    Reason* reason);

}  // namespace quorvan
