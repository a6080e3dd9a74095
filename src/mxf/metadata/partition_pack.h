// The partition pack and the Random Index Pack as they stand in a file (SMPTE 377).

#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvan {

// Byte offsets of fields in a partition pack's value.
namespace pack_field {
inline constexpr std::size_t kMajorVersion = 0;         // u16
inline constexpr std::size_t kMinorVersion = 2;         // u16
inline constexpr std::size_t kKagSize = 4;              // u32
inline constexpr std::size_t kThisPartition = 8;        // u64
inline constexpr std::size_t kPreviousPartition = 16;   // u64
inline constexpr std::size_t kFooterPartition = 24;     // u64
inline constexpr std::size_t kHeaderByteCount = 32;     // u64
inline constexpr std::size_t kIndexByteCount = 40;      // u64
inline constexpr std::size_t kIndexSid = 48;            // u32
inline constexpr std::size_t kBodyOffset = 52;          // u64
inline constexpr std::size_t kBodySid = 60;             // u32
inline constexpr std::size_t kOperationalPattern = 64;  // label of 16 bytes
inline constexpr std::size_t kFixedBytes = 88;  // bytes in front of the items of EssenceContainers
}  // namespace pack_field

// Places in the pack's key (zero-based) of the registry version, which may have any value, and of
// the bytes that tell the kind of the partition and its status.
inline constexpr std::size_t kPackVersionByte = 7;
inline constexpr std::size_t kPackKindByte = 13;
inline constexpr std::size_t kPackStatusByte = 14;
inline constexpr std::uint8_t kHeaderPackKind = 2;
inline constexpr std::uint8_t kBodyPackKind = 3;
inline constexpr std::uint8_t kFooterPackKind = 4;
inline constexpr std::uint8_t kClosedCompletePack = 4;  // status

// True when the status byte `status` says that the partition is open: incomplete (1) or complete
// (3).
constexpr bool IsOpenPartition(std::uint8_t status) {
  return status == 1 || status == 3;
}

// True when the status byte `status` says that the partition is open or incomplete. The status of a
// generic stream partition says neither (SMPTE ST 410).
constexpr bool IsUnfinishedPartition(std::uint8_t status) {
  return status >= 1 && status < kClosedCompletePack;
}

// Sizes in the Random Index Pack, in bytes: of the entry of each partition, which consists of
// BodySID and ByteOffset, and of the length of the whole pack, which follows the last entry.
inline constexpr std::uint64_t kRandomIndexEntryBytes = 12;
inline constexpr std::uint64_t kOverallLengthBytes = 4;

}  // namespace quorvan
