// KLV access (SMPTE 336M, SMPTE 377): one search over an open file, one over a block in memory, and
// the walk over the local tags of a set.

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

// First byte of a length field of four bytes, the usual one.
inline constexpr std::uint8_t kFourByteLength = 0x83;

// A byte 0xFF in a wanted key matches any byte.
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

// Big-endian numbers in a block that holds them.
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

// True when the 16 bytes at `candidate` equal `wanted` wherever that is not 0xFF.
bool KeyMatches(const std::uint8_t* candidate, const KlvKey& wanted);

// Searches `file` for `key` from `startOffset`; a candidate's key must start before `limitOffset`
// (both absolute, compared as signed 64-bit numbers). The length of a candidate that does not match
// is followed, so the search goes from KLV to KLV while the stream is in step. Only lengths in the
// forms 0x83 (4 bytes) and 0x87 (8 bytes) are lengths.
// Returns 1 when found: the file pointer stands on the first byte of the value and `*outLength`,
// which may be absent, holds its length in bytes. Returns 0 when not: `*outLength` is 0 and the
// file pointer stands wherever the scan ended.
int FindKlvKey(platform::File* file, const KlvKey& key, std::uint64_t startOffset,
               std::uint64_t limitOffset, std::uint64_t* outLength);

// The same over the `bufferLength` bytes at `buffer`. Returns 1 when found, with the offset of the
// value relative to `buffer` and its length as it claims it: the value may reach behind the block.
// Returns 0 when not: `*outLength` is 0 and `*outValueOffset` is the position where the scan ended,
// which lies at or behind the end (0 for a block of fewer than 20 bytes). Gives up, as if not
// found, once a stop is asked of `source`, the file of the block, which may be absent.
int FindKlvKeyInBuffer(const KlvKey& key, const std::uint8_t* buffer, std::size_t bufferLength,
                       std::uint64_t* outValueOffset, std::uint64_t* outLength,
                       const platform::File* source = nullptr);

// Most bytes of a key with its length field, whatever the field's form.
inline constexpr std::size_t kMostKlvHeaderBytes = 25;

// Reads a key and a length field of any BER form from the start of `bytes`. Returns the bytes of
// both and the length in `*length`; 0 when no KLV starts there or its header does not lie there
// whole.
std::size_t ReadKlvHeader(std::span<const std::uint8_t> bytes, std::uint64_t* length);

struct LocalItem {
  std::uint16_t tag;
  std::span<const std::uint8_t> value;
};

// Walks the local items of a set's value: tag u16, length u16, value. An item that claims to reach
// behind the set ends the walk.
class LocalSetWalk {
 public:
  explicit LocalSetWalk(std::span<const std::uint8_t> set) : set_(set) {}

  // The next item, or false at the end.
  bool Next(LocalItem* item);

  // Offset of the last item's value within the set.
  std::size_t valueOffset() const { return valueOffset_; }

 private:
  std::span<const std::uint8_t> set_;
  std::size_t next_ = 0;
  std::size_t valueOffset_ = 0;
};

}  // namespace quorvan
