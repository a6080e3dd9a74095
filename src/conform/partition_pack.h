// The fields of a partition pack that are read or changed when a partition moves to another file
// offset (SMPTE 377).

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "mxf/metadata/klv.h"

namespace quorvan {

// Byte offsets of fields in the pack's value.
namespace pack_field {
inline constexpr std::size_t kKagSize = 4;             // u32
inline constexpr std::size_t kThisPartition = 8;       // u64
inline constexpr std::size_t kPreviousPartition = 16;  // u64
inline constexpr std::size_t kFooterPartition = 24;    // u64
inline constexpr std::size_t kHeaderByteCount = 32;    // u64
inline constexpr std::size_t kIndexByteCount = 40;     // u64
inline constexpr std::size_t kBodyOffset = 52;         // u64
inline constexpr std::size_t kBodySid = 60;            // u32
inline constexpr std::size_t kFixedBytes = 88;  // bytes in front of the items of EssenceContainers
}  // namespace pack_field

// Places in the pack's key (zero-based) of the bytes that tell the kind of the partition and its
// status: open or closed, incomplete or complete.
inline constexpr std::size_t kPackKindByte = 13;
inline constexpr std::size_t kPackStatusByte = 14;
inline constexpr std::uint8_t kHeaderPackKind = 2;
inline constexpr std::uint8_t kFooterPackKind = 4;

// The Random Index Pack: an entry for each partition, BodySID and ByteOffset, and behind the
// entries the length of the whole pack.
inline constexpr std::uint64_t kIndexEntryBytes = 12;
inline constexpr std::uint64_t kOverallLengthBytes = 4;

// Key and value of one pack. The value holds at least kFixedBytes bytes.
struct PartitionPack {
  KlvKey key;
  std::vector<std::uint8_t> value;

  // The number at byte offset `field` of the value.
  std::uint32_t U32(std::size_t field) const { return ReadBe32(value.data() + field); }
  std::uint64_t U64(std::size_t field) const { return ReadBe64(value.data() + field); }
};

}  // namespace quorvan
