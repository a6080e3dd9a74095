#include "support/clip_parts.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace quorvan::test {
namespace {

constexpr Label kPrimerKey{0x06, 0x0E, 0x2B, 0x34, 2, 5, 1, 1, 0x0D, 1, 2, 1, 1, 5, 1, 0};
constexpr Label kIndexKey{0x06, 0x0E, 0x2B, 0x34, 2, 0x53, 1, 1, 0x0D, 1, 2, 1, 1, 0x10, 1, 0};
constexpr Label kFillKey{0x06, 0x0E, 0x2B, 0x34, 1, 1, 1, 2, 3, 1, 2, 0x10, 1, 0, 0, 0};

// By Rate.
constexpr std::array<RateRow, 8> kRates{{
    {24, 1, 0, 2, {2000, 2000, 2000, 2000, 2000}},
    {25, 1, 1, 4, {1920, 1920, 1920, 1920, 1920}},
    {30, 1, 2, 6, {1600, 1600, 1600, 1600, 1600}},
    {50, 1, 3, 10, {960, 960, 960, 960, 960}},
    {60, 1, 4, 12, {800, 800, 800, 800, 800}},
    {24000, 1001, 0, 3, {2002, 2002, 2002, 2002, 2002}},
    {30000, 1001, 2, 7, {1602, 1601, 1602, 1601, 1602}},
    {60000, 1001, 4, 13, {801, 801, 800, 801, 801}},
}};

}  // namespace

const RateRow& RowOf(Rate rate) {
  return kRates[static_cast<std::size_t>(rate)];
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

Bytes Batch(std::size_t count, std::size_t itemSize, const Bytes& items) {
  return Big32(static_cast<std::uint32_t>(count)) + Big32(static_cast<std::uint32_t>(itemSize)) +
         items;
}

std::uint64_t FilledSize(std::uint64_t used, std::uint64_t unit) {
  if (unit == 0) return used;
  std::uint64_t size = (used + unit - 1) / unit * unit;
  while (size != used && size - used < kKlHead)
    size += unit;
  return size;
}

void KlvWriter::Put(const Bytes& bytes) {
  out_.insert(out_.end(), bytes.begin(), bytes.end());
}

KlvPlace KlvWriter::Head(const Label& key, std::uint64_t valueBytes, std::size_t form) {
  KlvPlace place{.key = Position(), .valueBytes = valueBytes};
  out_.insert(out_.end(), key.begin(), key.end());
  const auto bytes = [&] { return kLengthForms[form % kLengthForms.size()]; };
  while (bytes() == 1 ? valueBytes > 0x7F : bytes() < 4 && valueBytes >> 8 * (bytes() - 1) != 0)
    ++form;
  if (bytes() > 1) Put({static_cast<std::uint8_t>(0x80 + bytes() - 1)});
  const Bytes length = Big64(valueBytes);
  out_.insert(out_.end(), length.end() - std::max(bytes() - 1, 1), length.end());
  place.value = Position();
  place.totalBytes = place.value - place.key + valueBytes;
  return place;
}

void KlvWriter::FillTo(std::uint64_t position) {
  if (position == Position()) return;
  Head(kFillKey, position - Position() - kKlHead, kFourBytes);
  out_.resize(static_cast<std::size_t>(position));
}

SetPlace KlvWriter::Set(const MetadataSet& set) {
  const bool primer = set.kind == SetKind::kPrimer;
  const std::size_t itemHead = primer ? 2 : 4;
  std::uint64_t valueBytes = primer ? kBatchHead : 0;
  for (const MetadataItem& item : set.items)
    valueBytes += itemHead + item.value.size();
  SetPlace place{.kind = set.kind, .klv = Head(set.key, valueBytes), .tags = {}};
  if (primer) Put(Batch(set.items.size(), 2 + sizeof(Label), {}));
  for (const MetadataItem& item : set.items) {
    Put(Big16(item.tag));
    if (!primer) Put(Big16(static_cast<std::uint16_t>(item.value.size())));
    place.tags.push_back({item.tag, Position(), item.value.size()});
    Put(item.value);
  }
  return place;
}

MetadataSet EmptySet(SetKind kind, std::size_t number, const std::vector<MetadataItem>& items) {
  MetadataSet set{.kind = kind};
  set.key = {0x06, 0x0E, 0x2B, 0x34, 2, 0x53, 1, 1, 0x0D, 1, 1, 1, 1, 1, 0, 0};
  set.key[14] = static_cast<std::uint8_t>(kind);
  if (kind == SetKind::kPrimer) set.key = kPrimerKey;
  if (kind == SetKind::kIndexTableSegment) set.key = kIndexKey;
  if (kind != SetKind::kPrimer) set.SetTag(tag::kInstanceUid, Big64(number) + Bytes(8, 0x51));
  set.items.insert(set.items.end(), items.begin(), items.end());
  return set;
}

void MetadataSet::SetTag(std::uint16_t tag, Bytes value) {
  for (MetadataItem& item : items) {
    if (item.tag != tag) continue;
    item.value = std::move(value);
    return;
  }
  items.push_back({tag, std::move(value)});
}

MetadataSet& SetOf(HeaderSets& sets, SetKind kind, std::size_t occurrence) {
  for (MetadataSet& set : sets)
    if (set.kind == kind && occurrence-- == 0) return set;
  throw std::out_of_range("clip builder: no such set");
}

Bytes Big16(std::uint16_t value) {
  return {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

Bytes Big32(std::uint32_t value) {
  return Big16(static_cast<std::uint16_t>(value >> 16)) + Big16(static_cast<std::uint16_t>(value));
}

Bytes Big64(std::uint64_t value) {
  return Big32(static_cast<std::uint32_t>(value >> 32)) + Big32(static_cast<std::uint32_t>(value));
}

void Patch(Bytes& bytes, std::uint64_t offset, const Bytes& value) {
  if (offset > bytes.size() || value.size() > bytes.size() - offset)
    throw std::out_of_range("clip builder: patch behind the end of the file");
  std::copy(value.begin(), value.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

}  // namespace quorvan::test
