// Reads KLV headers with a BER length of any form, and writes KLV headers with lengths of four
// bytes, or eight where needed (SMPTE 336M).

#pragma once

#include <cstdint>
#include <vector>

#include "mxf/essence/header_window.h"
#include "mxf/metadata/klv.h"
#include "platform/file.h"

namespace quorvan {

// Where one KLV stands in a file. Offsets are file offsets, lengths count bytes.
struct KlvSpan {
  KlvKey key;
  std::uint64_t offset;       // of the key's first byte
  std::uint64_t valueOffset;  // of the value's first byte
  std::uint64_t length;       // of the value

  // File offset behind the value.
  std::uint64_t End() const { return valueOffset + length; }
};

// Bytes of the smallest KLV Fill that AppendFill can write: key and four-byte length.
inline constexpr std::uint64_t kSmallestFill = 20;

// Reads the KLV header at file offset `offset` into `*span`. The length may have the short form, or
// the long form with up to eight bytes, but not the indefinite form. Returns false when the header
// cannot be read, when the key is no universal label, or when the KLV does not end at or before
// file offset `end`. Throws nothing.
bool ReadKlvSpan(const platform::File& file, std::uint64_t offset, std::uint64_t end,
                 KlvSpan* span);

// Reads as the function above, from a window of the file.
bool ReadKlvSpan(HeaderWindow* window, std::uint64_t offset, std::uint64_t end, KlvSpan* span);

// Number of bytes that AppendKlvHeader writes for a value of `length` bytes: 20, or 24 when the
// length does not fit three bytes.
std::uint64_t WrittenHeaderBytes(std::uint64_t length);

// Appends `key` and the BER length `length` to `*out`: 0x83 and three bytes, or 0x87 and seven
// bytes when the length does not fit three. Throws std::bad_alloc.
void AppendKlvHeader(const KlvKey& key, std::uint64_t length, std::vector<std::uint8_t>* out);

// Appends a KLV Fill of `bytes` bytes, with key and length, to `*out`. `bytes` is at most 2^24.
// Appends nothing when `bytes` is below kSmallestFill. Throws std::bad_alloc.
void AppendFill(std::uint64_t bytes, std::vector<std::uint8_t>* out);

// Rounds `bytes` up to a multiple of `grid` (bytes, at least 1) so that the difference is 0 or has
// room for a fill of kSmallestFill bytes.
std::uint64_t RoundedWithFill(std::uint64_t bytes, std::uint64_t grid);

// Stores `value` at `p` as four or eight bytes, high byte first.
void PutBe32(std::uint8_t* p, std::uint32_t value);
void PutBe64(std::uint8_t* p, std::uint64_t value);

}  // namespace quorvan
