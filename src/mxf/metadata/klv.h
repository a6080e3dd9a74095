// KLV access (SMPTE 336M, SMPTE 377): one search over an open file, one search over a block in
// memory, the reader of a key with its length field, and the walk over the local items of a set.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/file.h"

namespace quorvan {

inline constexpr std::size_t kKlvKeyBytes = 16;
using KlvKey = std::array<std::uint8_t, kKlvKeyBytes>;

// Bytes 0 to 3 of every SMPTE universal label.
inline constexpr std::array<std::uint8_t, 4> kUlPrefix = {0x06, 0x0E, 0x2B, 0x34};

// First byte of a length field of four bytes, the usual form.
inline constexpr std::uint8_t kFourByteLength = 0x83;

// The keys for which the readers search. A byte 0xFF in such a key matches any byte.
namespace keys {
constexpr KlvKey Set(std::uint8_t kind) {
  return {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01,
          0x0D, 0x01, 0x01, 0x01, 0x01, 0x01, kind, 0x00};
}
inline constexpr KlvKey kRandomIndexPack = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01,
                                            0x0D, 0x01, 0x02, 0x01, 0x01, 0x11, 0x01, 0x00};
inline constexpr KlvKey kPrimerPack = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01,
                                       0x0D, 0x01, 0x02, 0x01, 0x01, 0x05, 0x01, 0x00};
inline constexpr KlvKey kPreface = Set(0x2F);
inline constexpr KlvKey kIdentification = Set(0x30);
inline constexpr KlvKey kContentStorage = Set(0x18);
inline constexpr KlvKey kEssenceContainerData = Set(0x23);
inline constexpr KlvKey kMaterialPackage = Set(0x36);
inline constexpr KlvKey kTimelineTrack = Set(0x3B);
inline constexpr KlvKey kSequence = Set(0x0F);
inline constexpr KlvKey kTimecodeComponent = Set(0x14);
inline constexpr KlvKey kSourcePackage = Set(0x37);
inline constexpr KlvKey kMultipleDescriptor = Set(0x44);
inline constexpr KlvKey kMpegVideoDescriptor = Set(0x51);
inline constexpr KlvKey kCdciDescriptor = Set(0x28);
inline constexpr KlvKey kAvcSubDescriptor = Set(0x6E);
inline constexpr KlvKey kAes3AudioDescriptor = Set(0x47);
inline constexpr KlvKey kWaveAudioDescriptor = Set(0x48);
inline constexpr KlvKey kIndexTableSegment = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0xFF, 0x01, 0x01,
                                              0x0D, 0x01, 0x02, 0x01, 0x01, 0x10, 0x01, 0x00};
inline constexpr KlvKey kFill = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0xFF,
                                 0x03, 0x01, 0x02, 0x10, 0x01, 0x00, 0x00, 0x00};
inline constexpr KlvKey kAes3Element = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x02, 0x01, 0x01,
                                        0x0D, 0x01, 0x03, 0x01, 0x16, 0xFF, 0x03, 0xFF};
inline constexpr KlvKey kWaveElement = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x02, 0x01, 0x01,
                                        0x0D, 0x01, 0x03, 0x01, 0x16, 0xFF, 0x01, 0xFF};
inline constexpr KlvKey kAncillaryElement = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x02, 0x01, 0x01,
                                             0x0D, 0x01, 0x03, 0x01, 0x17, 0x01, 0x02, 0x01};
}  // namespace keys

// Each returns the big-endian number of 16, 24, 32 or 64 bits that starts at `p`. All of its bytes
// must be there.
constexpr std::uint16_t ReadBe16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] << 8 | p[1]);
}
constexpr std::uint32_t ReadBe24(const std::uint8_t* p) {
  return std::uint32_t{p[0]} << 16 | std::uint32_t{p[1]} << 8 | p[2];
}
constexpr std::uint32_t ReadBe32(const std::uint8_t* p) {
  return std::uint32_t{p[0]} << 24 | ReadBe24(p + 1);
}
constexpr std::uint64_t ReadBe64(const std::uint8_t* p) {
  return std::uint64_t{ReadBe32(p)} << 32 | ReadBe32(p + 4);
}

// True when the 16 bytes at `candidate` equal `wanted` in every byte that is not 0xFF in `wanted`.
bool KeyMatches(const std::uint8_t* candidate, const KlvKey& wanted);

// True when the 16 bytes at `key` are the key of an element of the generic container: a picture,
// sound, data or system element (SMPTE ST 379).
bool IsContainerElement(const std::uint8_t* key);

// Searches `file` for the first KLV with the key `key` that starts in [startOffset, limitOffset).
// Both are file offsets in bytes and are compared as signed 64-bit numbers. Where a KLV with
// another key starts, the search goes on behind its value, so it does not look into values. Where
// no KLV starts, it goes on at the next byte that could start one. Only length fields with the
// first byte 0x83 (4 bytes) or 0x87 (8 bytes) are known. A key with another length field is never
// found; the search goes on directly behind this key.
//
// Returns 1 when the key was found. The file pointer is then on the first byte of the value, and
// `*outLength` is the length of the value in bytes, as the file claims it. Returns 0 when the key
// was not found, when `file` is null or closed, or when a read fails. `*outLength` is then 0, and
// the file pointer is where the search ended. `outLength` may be null. Throws nothing.
int FindKlvKey(platform::File* file, const KlvKey& key, std::uint64_t startOffset,
               std::uint64_t limitOffset, std::uint64_t* outLength);

// Searches the block of `bufferLength` bytes at `buffer` for `key`, in the same way as FindKlvKey.
// The key and its length field must lie in the block.
//
// Returns 1 when the key was found. `*outValueOffset` is then the offset of the value in the block,
// and `*outLength` the length that the KLV claims, both in bytes: the value may reach behind the
// end of the block. Returns 0 when the key was not found. `*outLength` is then 0, and
// `*outValueOffset` is where the search ended: at the end of the block or, by the length of a KLV,
// behind the end; 0 for a block of fewer than 20 bytes. `source` is the file from which the block
// was read, or null: when a stop of this file is asked for, the search ends as if the key were not
// there. Throws nothing.
int FindKlvKeyInBuffer(const KlvKey& key, const std::uint8_t* buffer, std::size_t bufferLength,
                       std::uint64_t* outValueOffset, std::uint64_t* outLength,
                       const platform::File* source = nullptr);

// Most bytes of a key with its length field, in any BER form.
inline constexpr std::size_t kMostKlvHeaderBytes = 25;

// Reads the header of a KLV (the key and a length field of any BER form) at the start of `bytes`.
// Returns the number of bytes of the header and puts the length of the value, in bytes, into
// `*length`. Returns 0 when `bytes` does not start with a SMPTE label, when the length field is not
// a length of at most 8 bytes, or when `bytes` ends within the header; `*length` is then without
// meaning.
std::size_t ReadKlvHeader(std::span<const std::uint8_t> bytes, std::uint64_t* length);

// One item of a local set.
struct LocalItem {
  std::uint16_t tag;
  std::span<const std::uint8_t> value;  // lies in the set
};

// Walks over the items of a local set: a tag and a length of 16 bits each, then the value. The walk
// ends at the end of the set, or at an item that claims to reach behind it. `set` is the value of
// the set and must outlive the walk and its items.
class LocalSetWalk {
 public:
  explicit LocalSetWalk(std::span<const std::uint8_t> set) : set_(set) {}

  // Puts the next item into `*item` and returns true. Returns false, with `*item` unchanged, when
  // the walk has ended.
  bool Next(LocalItem* item);

  // Offset in the set of the value that Next has given last, in bytes. Without meaning after Next
  // has returned false.
  std::size_t valueOffset() const { return valueOffset_; }

 private:
  std::span<const std::uint8_t> set_;
  std::size_t next_ = 0;
  std::size_t valueOffset_ = 0;
};

}  // namespace quorvan
