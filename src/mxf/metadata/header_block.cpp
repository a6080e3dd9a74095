#include "mxf/metadata/header_block.h"

#include <algorithm>
#include <array>
#include <new>

#include "mxf/metadata/klv.h"
#include "platform/memory.h"

namespace quorvan {
namespace {

// Largest accepted header metadata, in bytes. The header metadata of real clips is far smaller.
constexpr std::uint64_t kLargestHeader = std::uint64_t{256} << 20;

// Two bytes in the key of a local set whose tags and lengths have two bytes each, and their place
// in the key.
constexpr std::array<std::uint8_t, 2> kLocalSetForm = {0x02, 0x53};
constexpr std::size_t kFormPlace = 4;

// True for the key of a set of the header metadata. An index table segment is a local set of the
// same form, but it is no metadata.
bool IsMetadataSet(const std::uint8_t* key) {
  return std::equal(kLocalSetForm.begin(), kLocalSetForm.end(), key + kFormPlace) &&
         !KeyMatches(key, keys::kIndexTableSegment);
}

// File offsets of the first byte of the header metadata and of the byte behind it.
struct Bounds {
  std::uint64_t start;
  std::uint64_t end;
};

HeaderState FindBounds(const platform::File& file, const MXF_BASE_INFO& mxf, Bounds* bounds) {
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  const MXF_PARTITION_INFO& header = table[0];
  const std::uint64_t start = header.thisPartition + kElementHeaderBytes + header.packLength;
  std::array<std::uint8_t, kMostKlvHeaderBytes> head{};
  const std::size_t held = file.ReadAt(start, head.data(), head.size());
  if (held < head.size() && start + head.size() <= mxf.fileSize) return HeaderState::kFault;
  std::uint64_t fill = 0;
  const std::size_t fillHeader = ReadKlvHeader({head.data(), held}, &fill);
  const bool filled = fillHeader > 0 && KeyMatches(head.data(), keys::kFill);

  // Some writers count the fill behind the pack in HeaderByteCount, some do not. The fill is added
  // here for all of them. Where it was counted already, the block reaches too far, but only over
  // bytes that are no set of the header metadata.
  const std::uint64_t skipped = filled ? std::min(fill, mxf.fileSize) + fillHeader : 0;
  std::uint64_t end = start + skipped + std::min(header.headerByteCount, mxf.fileSize);
  end = std::min({end, mxf.fileSize, (*mxf.indexEntries)[0].fileOffset});
  for (std::uint32_t i = 1; i < header.partitionCount; ++i) {
    if (table[i].thisPartition > header.thisPartition) end = std::min(end, table[i].thisPartition);
  }
  if (start >= end || end - start > kLargestHeader) return HeaderState::kNone;
  *bounds = {start, end};
  return HeaderState::kRead;
}

}  // namespace

HeaderState HeaderBlock::Read(const platform::File& file, const MXF_BASE_INFO& mxf) {
  Bounds bounds{};
  const HeaderState found = FindBounds(file, mxf, &bounds);
  if (found != HeaderState::kRead) return found;
  start_ = bounds.start;
  size_ = static_cast<std::size_t>(bounds.end - bounds.start);
  if (size_ > capacity_) {
    if (!platform::FitsMemory(size_)) throw std::bad_alloc();
    bytes_.reset(new std::uint8_t[size_]);
    capacity_ = size_;
  }
  return file.ReadAt(start_, bytes_.get(), size_) == size_ ? HeaderState::kRead
                                                           : HeaderState::kFault;
}

// Calls `visit` with every item of every metadata set and with the file offset of the item's value.
template <typename Visit>
void HeaderBlock::VisitItems(Visit visit) const {
  const std::span<const std::uint8_t> block = Bytes();
  for (std::size_t at = 0; at < block.size();) {
    std::uint64_t length = 0;
    const auto rest = block.subspan(at);
    const std::size_t header = ReadKlvHeader(rest, &length);
    if (header == 0 || length > rest.size() - header) {
      ++at;
      continue;
    }
    const auto value = rest.subspan(header, static_cast<std::size_t>(length));
    at += header + value.size();
    if (!IsMetadataSet(rest.data())) continue;
    LocalItem item;
    for (LocalSetWalk walk(value); walk.Next(&item);)
      visit(item, start_ + static_cast<std::uint64_t>(item.value.data() - block.data()));
  }
}

void HeaderBlock::FindInItems(std::span<const std::uint8_t> wanted,
                              std::vector<MetadataPlace>* places) const {
  VisitItems([&](const LocalItem& item, std::uint64_t fileOffset) {
    for (auto from = item.value.begin();;) {
      from = std::search(from, item.value.end(), wanted.begin(), wanted.end());
      if (from == item.value.end()) break;
      const auto inItem = static_cast<std::uint64_t>(from - item.value.begin());
      places->push_back({fileOffset + inItem, wanted.size()});
      from += static_cast<std::ptrdiff_t>(wanted.size());
    }
  });
}

std::span<const std::uint8_t> HeaderBlock::SetAt(const METADATA_SET_PLACE& set) const {
  if (set.fileOffset < start_ || set.fileOffset - start_ > size_) return {};
  const auto at = static_cast<std::size_t>(set.fileOffset - start_);
  if (set.bytes > size_ - at) return {};
  return Bytes().subspan(at, static_cast<std::size_t>(set.bytes));
}

std::optional<MetadataPlace> HeaderBlock::FindItem(const METADATA_SET_PLACE& set, std::uint16_t tag,
                                                   std::size_t bytes) const {
  LocalItem item;
  for (LocalSetWalk walk(SetAt(set)); walk.Next(&item);) {
    if (item.tag != tag) continue;
    if (item.value.size() < bytes) return std::nullopt;
    return MetadataPlace(set.fileOffset + walk.valueOffset(), bytes);
  }
  return std::nullopt;
}

std::span<const std::uint8_t> HeaderBlock::At(const MetadataPlace& place) const {
  return SetAt({place.fileOffset(), place.bytes()});
}

void HeaderBlock::Put(const MetadataPlace& place, std::span<const std::uint8_t> bytes) {
  if (At(place).size() != bytes.size()) return;
  std::copy(bytes.begin(), bytes.end(), bytes_.get() + (place.fileOffset() - start_));
}

}  // namespace quorvan
