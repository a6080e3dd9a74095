// KLV headers in every form of BER length, and in the one form that is written (SMPTE 336M).

#pragma once

#include <cstdint>
#include <vector>

#include "mxf/metadata/klv.h"
#include "platform/file.h"

namespace quorvan {

// Where one KLV stands in a file. Offsets are absolute, lengths in bytes.
struct KlvSpan {
  KlvKey key;
  std::uint64_t offset;       // of the key's first byte
  std::uint64_t valueOffset;  // of the value's first byte
  std::uint64_t length;       // of the value
  std::uint64_t End() const { return valueOffset + length; }
};

// Smallest KLV that WriteFill can write: key and four-byte length.
inline constexpr std::uint64_t kSmallestFill = 20;

// Reads the KLV header at `offset` of `file`. Short form and long forms of up to eight bytes are
// lengths; the indefinite form is none. False unless the key is a universal label and the whole KLV
// ends at or before `end`.
bool ReadKlvSpan(const platform::File& file, std::uint64_t offset, std::uint64_t end,
                 KlvSpan* span);

// Bytes of key and length field in front of a value of `length` bytes: 20, or 24 for a value that
// three bytes of length cannot tell.
std::uint64_t WrittenHeaderBytes(std::uint64_t length);

// Appends key and length, the length as 0x83 and three bytes or 0x87 and seven bytes.
void AppendKlvHeader(const KlvKey& key, std::uint64_t length, std::vector<std::uint8_t>* out);

// Appends a KLV Fill of `bytes` bytes in all, at least kSmallestFill; nothing for 0.
void AppendFill(std::uint64_t bytes, std::vector<std::uint8_t>* out);

// The smallest multiple of `grid`, at least 1, that `bytes` reach with a fill behind them or
// without.
std::uint64_t RoundedWithFill(std::uint64_t bytes, std::uint64_t grid);

void PutBe32(std::uint8_t* p, std::uint32_t value);
void PutBe64(std::uint8_t* p, std::uint64_t value);

}  // namespace quorvan
