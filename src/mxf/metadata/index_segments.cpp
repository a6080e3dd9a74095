#include "mxf/metadata/index_segments.h"

#include <algorithm>
#include <memory>
#include <new>

#include "mxf/analysis.h"
#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/metadata_set.h"
#include "platform/memory.h"

namespace quorvan {
namespace {

// Limits for the whole index table: bytes of the table of one partition, and segments. No real clip
// reaches them; a larger table is damaged.
constexpr std::uint64_t kLargestIndexBlock = std::uint64_t{1} << 30;
constexpr std::size_t kMostSegments = std::size_t{1} << 18;

std::int32_t ReadDeltaEntries(std::span<const std::uint8_t> value, IndexSegment* segment) {
  const std::uint32_t count = ReadBatchHeader(value).count;
  if (count > kMaxDeltaEntries) return kTooManyDeltaEntries;
  if (value.size() < kBatchHeaderBytes + count * kDeltaEntryBytes) {
    return count == 0 ? kSuccess : kNoIndexTable;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint8_t* p = value.data() + kBatchHeaderBytes + i * kDeltaEntryBytes;
    segment->delta[i] = {p[0], p[1], ReadBe32(p + 2)};
  }
  segment->deltaCount = count;
  return kSuccess;
}

SegmentEntry ReadEntry(const std::uint8_t* p, std::uint8_t sliceCount) {
  SegmentEntry entry{};
  entry.temporalOffset = static_cast<std::int8_t>(p[0]);
  entry.keyFrameOffset = static_cast<std::int8_t>(p[1]);
  entry.flags = p[2];
  entry.streamOffset = ReadBe64(p + kStreamOffsetPlace);
  if (sliceCount > 0) {
    entry.sliceOffset = ReadBe32(p + kFixedEntryBytes + (sliceCount - 1u) * kSliceOffsetBytes);
  }
  return entry;
}

std::int32_t ReadIndexEntries(std::span<const std::uint8_t> value, IndexSegment* segment) {
  const std::uint32_t count = ReadBatchHeader(value).count;
  const std::size_t step = kFixedEntryBytes + segment->sliceCount * kSliceOffsetBytes +
                           segment->posTableCount * kPosTableBytes;
  if (count == 0) return kSuccess;
  if (count > (value.size() - kBatchHeaderBytes) / step) return kNoIndexTable;
  if (count > kMostFrames - segment->entries.size()) return kNoIndexTable;
  if (!platform::FitsMemory(count * sizeof(SegmentEntry))) return kIndexNoMemory;
  // Only the first item reserves exactly: in a set of many such items, reserving exactly for each
  // item would copy quadratically.
  if (segment->entries.empty()) segment->entries.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    segment->entries.push_back(
        ReadEntry(value.data() + kBatchHeaderBytes + i * step, segment->sliceCount));
  }
  return kSuccess;
}

std::int32_t ReadSegmentItem(const LocalItem& item, IndexSegment* segment) {
  const std::uint8_t* p = item.value.data();
  const std::size_t size = item.value.size();
  switch (item.tag) {
    case tags::kIndexStartPosition:
      if (size >= 8) segment->start = ReadBe64(p);
      return kSuccess;
    case tags::kIndexDuration:
      if (size >= 8) segment->duration = ReadBe64(p);
      return kSuccess;
    case tags::kEditUnitByteCount:
      if (size >= 4) segment->editUnitBytes = ReadBe32(p);
      return kSuccess;
    case tags::kBodySid:
      if (size >= 4) segment->bodySid = ReadBe32(p);
      return kSuccess;
    case tags::kSliceCount:
      if (size >= 1) segment->sliceCount = *p;
      return kSuccess;
    case tags::kPosTableCount:
      if (size >= 1) segment->posTableCount = *p;
      return kSuccess;
    case tags::kDeltaEntries:
      return ReadDeltaEntries(item.value, segment);
    case tags::kIndexEntries:
      return ReadIndexEntries(item.value, segment);
    default:
      return kSuccess;
  }
}

}  // namespace

std::int32_t ReadIndexSegment(std::span<const std::uint8_t> set, IndexSegment* segment,
                              const platform::File* source) {
  LocalItem item;
  for (LocalSetWalk walk(set); walk.Next(&item);) {
    if (const std::int32_t refused = ReadSegmentItem(item, segment)) return refused;
    if (source != nullptr && source->StopAsked()) return kCancelled;
  }
  return kSuccess;
}

namespace {

std::int32_t AppendSegment(const platform::File& file, std::span<const std::uint8_t> set,
                           const MXF_PARTITION_INFO& partition, SegmentList* list) {
  if (list->segments.size() == kMostSegments) return kNoIndexTable;
  IndexSegment& segment = list->segments.emplace_back();
  segment.foundIn = &partition;
  if (const std::int32_t refused = ReadIndexSegment(set, &segment, &file)) return refused;
  list->frames += segment.entries.size();
  return list->frames > kMostFrames ? kNoIndexTable : kSuccess;
}

std::int32_t ReadSegmentsOfBlock(const platform::File& file, std::span<const std::uint8_t> block,
                                 const MXF_PARTITION_INFO& partition, SegmentList* list) {
  // The search skips fill between the segments by its length, like any other KLV. A search that
  // finds no segment has therefore seen the whole block.
  std::uint64_t position = 0;
  while (position < block.size()) {
    const auto rest = block.subspan(static_cast<std::size_t>(position));
    std::uint64_t value = 0;
    std::uint64_t length = 0;
    if (!FindKlvKeyInBuffer(keys::kIndexTableSegment, rest.data(), rest.size(), &value, &length,
                            &file)) {
      break;
    }
    const auto set = rest.subspan(static_cast<std::size_t>(value));
    const auto held = static_cast<std::size_t>(std::min<std::uint64_t>(length, set.size()));
    if (const std::int32_t refused = AppendSegment(file, set.first(held), partition, list)) {
      return refused;
    }
    position += value + length;
  }
  return kSuccess;
}

// Reads the index table of one partition and appends its segments to `list`. Refuses when all index
// tables together are longer than the file: many partitions then claim the same bytes, and each
// would be read again.
std::int32_t ReadPartitionIndex(const platform::File& file, const MXF_PARTITION_INFO& partition,
                                std::uint64_t fileSize, SegmentList* list) {
  const std::uint64_t start =
      partition.thisPartition + partition.kagSize + partition.headerByteCount;
  if (start >= fileSize) return kSuccess;
  const std::uint64_t wanted = std::min(partition.indexByteCount, fileSize - start);
  list->bytesRead += wanted;
  if (wanted > kLargestIndexBlock || list->bytesRead > fileSize) return kNoIndexTable;
  if (!platform::FitsMemory(wanted)) return kIndexNoMemory;
  const auto size = static_cast<std::size_t>(wanted);
  const std::unique_ptr<std::uint8_t[]> block(new (std::nothrow) std::uint8_t[size + 1]);
  if (block == nullptr) return kIndexNoMemory;
  const std::size_t held = file.ReadAt(start, block.get(), size);
  return ReadSegmentsOfBlock(file, {block.get(), held}, partition, list);
}

}  // namespace

std::int32_t ReadIndexSegments(const platform::File& file, const MXF_BASE_INFO& mxf,
                               SegmentList* list) {
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  for (std::uint32_t i = 0; i < table[0].partitionCount; ++i) {
    if (table[i].indexSid == 0) continue;
    if (const std::int32_t refused = ReadPartitionIndex(file, table[i], mxf.fileSize, list)) {
      return refused;
    }
  }
  return kSuccess;
}

}  // namespace quorvan
