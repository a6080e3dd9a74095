// What the sources of the clip builder share: writing KLV, and a few keys and numbers.

#pragma once

#include "support/clip_builder.h"

namespace quorvan::test {

inline constexpr std::size_t kKlHead = 20;  // key and 4-byte length
// Bytes of a length field, by its form.
inline constexpr std::array<int, 6> kLengthForms{4, 8, 9, 1, 2, 3};
inline constexpr std::size_t kFourBytes = 0;
inline constexpr std::size_t kLongestHead = 25;  // key and 9-byte length
inline constexpr std::size_t kBatchHead = 8;     // count and item size
inline constexpr std::uint32_t kBodySid = 1;
inline constexpr std::uint32_t kIndexSid = 2;

inline constexpr Label kOp1a{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 1, 0x0D, 1, 2, 1, 1, 1, 9, 0};
inline constexpr Label kPictureKey{0x06, 0x0E, 0x2B, 0x34, 1,    2, 1, 1,
                                   0x0D, 1,    3,    1,    0x15, 1, 5, 1};
inline constexpr Label kDataKey{0x06, 0x0E, 0x2B, 0x34, 1, 2, 1, 1, 0x0D, 1, 3, 1, 0x17, 1, 2, 1};

struct RateRow {
  std::uint32_t numerator;
  std::uint32_t denominator;
  std::uint32_t fpsIndex;    // of the timecode base
  std::uint8_t packageRate;  // as a system metadata pack names it
  std::array<std::uint32_t, 5> samples;
};

const RateRow& RowOf(Rate rate);

template <typename Container>
Bytes ToBytes(const Container& values) {
  return Bytes(values.begin(), values.end());
}

Bytes operator+(Bytes left, const Bytes& right);
Bytes Batch(std::size_t count, std::size_t itemSize, const Bytes& items);

// Smallest multiple of `unit` that holds `used` bytes and leaves nothing or room for a fill;
// `used` itself for a unit of 0.
std::uint64_t FilledSize(std::uint64_t used, std::uint64_t unit);

// Appends to a file in memory.
class KlvWriter {
 public:
  // `mixed`: with all forms of length fields in turn, instead of 4 bytes.
  explicit KlvWriter(Bytes& out, bool mixed = false) : out_(out), mixed_(mixed) {}

  std::uint64_t Position() const { return out_.size(); }
  void Put(const Bytes& bytes);

  // Writes key and length; the caller writes the value. A form that is too short for the length
  // gives way to the next one.
  KlvPlace Head(const Label& key, std::uint64_t valueBytes, std::size_t form);
  KlvPlace Head(const Label& key, std::uint64_t valueBytes) {
    return Head(key, valueBytes, mixed_ ? turn_++ : kFourBytes);
  }

  // A KLV Fill up to `position`, which is here or at least kKlHead on.
  void FillTo(std::uint64_t position);

  SetPlace Set(const MetadataSet& set);

 private:
  Bytes& out_;
  bool mixed_;
  std::size_t turn_ = 0;
};

// A set with its key, an InstanceUID made from `number` and the items.
MetadataSet EmptySet(SetKind kind, std::size_t number, const std::vector<MetadataItem>& items = {});

// The header metadata that a description asks for, before any edit.
HeaderSets BuildHeaderSets(const ClipSpec& spec);
Label AudioElementKey(const ClipSpec& spec, std::uint32_t track);

}  // namespace quorvan::test
