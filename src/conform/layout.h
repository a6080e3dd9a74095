// What a conformed copy holds and where its parts stand, decided before the first byte is written
// (SMPTE ST 377-1).

#pragma once

#include <cstdint>
#include <vector>

#include "conform/frame_map.h"
#include "conform/metadata_sets.h"
#include "conform/partition_map.h"

namespace quorvan {

// Least number of bytes behind the last metadata set of a partition, as much as cameras leave. The
// readers stop one KAG before the end of the header metadata, so the sets must end before that.
inline constexpr std::uint64_t kRoomBehindSets = 8 * 1024;

// One partition of the copy. Its parts follow each other without a gap: pack with fill (one KAG),
// header metadata, index table, essence.
struct CopyPartition {
  PartitionPack pack;  // of the clip; WritePack gives it the offsets and byte counts of the copy
  MetadataSets metadata{};
  std::vector<LoadedKlv> indexSegments{};

  // The essence is a stretch of the clip (file offset and bytes); in a plan that lays frames anew,
  // it is the frames from `firstFrame` on, if there are any, that stand in this stretch.
  std::uint64_t sourceOffset = 0;
  std::uint64_t sourceBytes = 0;
  std::uint32_t firstFrame = 0;
  std::uint32_t frames = 0;

  // Decided by PlaceParts. `offset` is the file offset of the pack's key in the copy, the others
  // are bytes.
  std::uint64_t offset = 0;
  std::uint64_t headerByteCount = 0;  // primer, sets and the fill behind them
  std::uint64_t indexByteCount = 0;   // index segments and the fill behind them
  std::uint64_t essenceBytes = 0;
};

struct CopyPlan {
  std::vector<CopyPartition> partitions;
  const FrameMap* laidFrames = nullptr;  // the frames that are laid anew; null for none
  std::uint32_t kagSize = 0;             // bytes; the same in every partition
  std::uint64_t randomIndexOffset = 0;   // file offset of the Random Index Pack
  std::uint64_t fileSize = 0;            // bytes of the copy

  // File offset of the essence of `partition` in the copy.
  std::uint64_t EssenceOffset(const CopyPartition& partition) const {
    return partition.offset + kagSize + partition.headerByteCount + partition.indexByteCount;
  }
};

// Gives the frames `map` of a clip an index table (SMPTE ST 377-1): divides the body partitions of
// `plan` so that an index segment can list the frames of each, in the same order, and puts all
// segments into the last partition, which must be a footer. `rate` is the edit rate, `indexSid` the
// IndexSID. Throws std::bad_alloc.
void WriteIndex(const FrameMap& map, Fraction rate, std::uint32_t indexSid, CopyPlan* plan);

// Places the parts of the copy. `plan` has at least one partition. Keeps the KAG size of the header
// partition when it is at most 2^20, all packs together take at most 64 MiB with it, and every
// pack, with a fill or alone, makes exactly one KAG; else takes the smallest multiple of 512 with
// which every pack does. Throws std::bad_alloc.
void PlaceParts(CopyPlan* plan);

// Makes the bytes of the pack of partition `index` (zero-based) with its new offsets and byte
// counts, closed and complete when it was not, and the fill behind the pack: plan.kagSize bytes.
// Throws std::bad_alloc.
std::vector<std::uint8_t> WritePack(const CopyPlan& plan, std::size_t index);

// Makes the bytes of the Random Index Pack, key and length included. Throws std::bad_alloc.
std::vector<std::uint8_t> WriteRandomIndex(const CopyPlan& plan);

// Makes the bytes of `klvs` with headers of AppendKlvHeader, and a fill behind them up to `bytes`
// bytes in all. Throws std::bad_alloc.
std::vector<std::uint8_t> WriteKlvs(const std::vector<LoadedKlv>& klvs, std::uint64_t bytes);

}  // namespace quorvan
