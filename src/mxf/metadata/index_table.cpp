#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <new>
#include <vector>

#include "mxf/analysis.h"
#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/metadata_set.h"
#include "mxf/metadata/readers.h"
#include "mxf/sample_pattern.h"
#include "platform/memory.h"

namespace quorvan {
namespace {

constexpr std::size_t kDeltaEntryBytes = 6;
constexpr std::size_t kFixedEntryBytes = 11;
constexpr std::size_t kStreamOffsetPlace = 3;
constexpr std::size_t kSliceOffsetBytes = 4;
constexpr std::size_t kPosTableBytes = 8;

constexpr std::uint64_t kFillSearchBytes = 16;
constexpr std::uint64_t kElementSearchBytes = 28;

// Limits for the whole index table: frames (more than three days at 60 frames a second), bytes of
// the table of one partition, and segments. No real clip reaches them; a larger table is damaged.
constexpr std::uint64_t kMostFrames = 1u << 24;
constexpr std::uint64_t kLargestIndexBlock = std::uint64_t{1} << 30;
constexpr std::size_t kMostSegments = std::size_t{1} << 18;

// Entries that are handled between two checks for a stop request.
constexpr std::uint32_t kEntriesPerLook = 1u << 14;

constexpr std::int32_t kNoMemory = static_cast<std::int32_t>(kStageIndexTable) + kStageNoMemory;

// An index entry as it stands in the file.
struct RawEntry {
  std::int8_t temporalOffset;
  std::int8_t keyFrameOffset;
  std::uint8_t flags;
  std::uint64_t streamOffset;  // bytes from the start of the essence
  std::uint32_t sliceOffset;   // of the last slice, bytes; 0 without slices
};

// An index table segment.
struct Segment {
  std::uint64_t start = 0;     // frame number
  std::uint64_t duration = 0;  // frames, as the segment claims
  std::uint32_t bodySid = 0;
  std::uint8_t sliceCount = 0;
  std::uint8_t posTableCount = 0;
  std::uint32_t deltaCount = 0;
  std::array<DELTA_ENTRY, kMaxDeltaEntries> delta{};
  std::vector<RawEntry> entries;
  const MXF_PARTITION_INFO* foundIn = nullptr;    // the partition that holds the segment
  const MXF_PARTITION_INFO* partition = nullptr;  // the partition that holds its frames
};

std::int32_t ReadDeltaEntries(std::span<const std::uint8_t> value, Segment* segment) {
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

RawEntry ReadEntry(const std::uint8_t* p, std::uint8_t sliceCount) {
  RawEntry entry{};
  entry.temporalOffset = static_cast<std::int8_t>(p[0]);
  entry.keyFrameOffset = static_cast<std::int8_t>(p[1]);
  entry.flags = p[2];
  entry.streamOffset = ReadBe64(p + kStreamOffsetPlace);
  if (sliceCount > 0) {
    entry.sliceOffset = ReadBe32(p + kFixedEntryBytes + (sliceCount - 1u) * kSliceOffsetBytes);
  }
  return entry;
}

std::int32_t ReadIndexEntries(std::span<const std::uint8_t> value, Segment* segment) {
  const std::uint32_t count = ReadBatchHeader(value).count;
  const std::size_t step = kFixedEntryBytes + segment->sliceCount * kSliceOffsetBytes +
                           segment->posTableCount * kPosTableBytes;
  if (count == 0) return kSuccess;
  if (count > (value.size() - kBatchHeaderBytes) / step) return kNoIndexTable;
  if (count > kMostFrames - segment->entries.size()) return kNoIndexTable;
  if (!platform::FitsMemory(count * sizeof(RawEntry))) return kNoMemory;
  // Only the first item reserves exactly: in a set of many such items, reserving exactly for each
  // item would copy quadratically.
  if (segment->entries.empty()) segment->entries.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    segment->entries.push_back(
        ReadEntry(value.data() + kBatchHeaderBytes + i * step, segment->sliceCount));
  }
  return kSuccess;
}

std::int32_t ReadSegmentItem(const LocalItem& item, Segment* segment) {
  const std::uint8_t* p = item.value.data();
  const std::size_t size = item.value.size();
  switch (item.tag) {
    case tags::kIndexStartPosition:
      if (size >= 8) segment->start = ReadBe64(p);
      return kSuccess;
    case tags::kIndexDuration:
      if (size >= 8) segment->duration = ReadBe64(p);
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

// The segments of all partitions, in the order in which they were read.
struct SegmentList {
  std::vector<Segment> segments;
  std::uint64_t frames = 0;     // index entries of all segments
  std::uint64_t bytesRead = 0;  // bytes of the index tables read so far
};

std::int32_t AppendSegment(const platform::File& file, std::span<const std::uint8_t> set,
                           const MXF_PARTITION_INFO& partition, SegmentList* list) {
  if (list->segments.size() == kMostSegments) return kNoIndexTable;
  Segment& segment = list->segments.emplace_back();
  segment.foundIn = &partition;
  segment.partition = &partition;
  LocalItem item;
  for (LocalSetWalk walk(set); walk.Next(&item);) {
    if (const std::int32_t refused = ReadSegmentItem(item, &segment)) return refused;
    if (file.StopAsked()) return kCancelled;
  }
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
  if (!platform::FitsMemory(wanted)) return kNoMemory;
  const auto size = static_cast<std::size_t>(wanted);
  const std::unique_ptr<std::uint8_t[]> block(new (std::nothrow) std::uint8_t[size + 1]);
  if (block == nullptr) return kNoMemory;
  const std::size_t held = file.ReadAt(start, block.get(), size);
  return ReadSegmentsOfBlock(file, {block.get(), held}, partition, list);
}

std::int32_t ReadAllSegments(const platform::File& file, const MXF_BASE_INFO& mxf,
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

// Keeps only the footer's segments when one of them starts at frame 0: the footer then repeats the
// whole index table.
void ChooseSegments(SegmentList* list) {
  const auto inFooter = [](const Segment& s) { return s.foundIn->kind == kFooterPartition; };
  const bool footerIsComplete =
      std::any_of(list->segments.begin(), list->segments.end(),
                  [&](const Segment& s) { return inFooter(s) && s.start == 0; });
  if (!footerIsComplete) return;
  std::erase_if(list->segments, [&](const Segment& s) { return !inFooter(s); });
  list->frames = 0;
  for (const Segment& segment : list->segments)
    list->frames += segment.entries.size();
}

// Tells each segment the partition that holds its frames, by order alone: the first partition with
// the BodySID of the first segment belongs to this segment, the next partition with the BodySID of
// the second segment belongs to the second, and so on. A segment for which no partition is left
// keeps the partition in which it was found.
void AssignPartitions(const MXF_BASE_INFO& mxf, std::vector<Segment>* segments) {
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  auto cursor = segments->begin();
  for (std::uint32_t i = 0; i < table[0].partitionCount && cursor != segments->end(); ++i) {
    if (table[i].bodySid == 0 || table[i].bodySid != cursor->bodySid) continue;
    cursor->partition = &table[i];
    ++cursor;
  }
}

// Largest ElementDelta of a segment's delta entries, in bytes.
std::uint32_t LargestDelta(const Segment& segment) {
  std::uint32_t largest = 0;
  for (std::uint32_t k = 0; k < segment.deltaCount; ++k) {
    largest = std::max(largest, segment.delta[k].elementDelta);
  }
  return largest;
}

// Fills the record of one frame, except for its number of samples, from its index entry. `reach` is
// the segment's largest element delta in bytes. False when the frame or its farthest element starts
// behind the end of the file.
bool FlattenEntry(const Segment& segment, const RawEntry& raw, std::uint64_t reach,
                  std::uint64_t fileSize, INDEX_ENTRY_ARRAY* entry) {
  entry->fileOffset = raw.streamOffset + segment.partition->essenceBase;
  if (entry->fileOffset >= fileSize || raw.sliceOffset + reach >= fileSize - entry->fileOffset) {
    return false;
  }
  entry->partition = segment.partition;
  entry->segmentStart = segment.start;
  entry->segmentDuration = segment.duration;
  entry->temporalOffset = raw.temporalOffset;
  entry->keyFrameOffset = raw.keyFrameOffset;
  entry->flags = raw.flags;
  entry->sliceOffset = raw.sliceOffset;
  entry->deltaCount = segment.deltaCount;
  entry->delta = segment.delta;
  return true;
}

// Fills the array of index entries from the segments, in their order.
std::int32_t Flatten(const platform::File& file, const SegmentList& list, MXF_BASE_INFO* mxf) {
  MXF_TIMECODE_INFO* timecode = mxf->timecode;
  const std::uint64_t fileSize = mxf->fileSize;
  IndexEntryCell& cell = *mxf->indexEntries;
  if (!platform::FitsMemory(list.frames * sizeof(INDEX_ENTRY_ARRAY))) return kNoMemory;
  cell.reset(new (std::nothrow) INDEX_ENTRY_ARRAY[static_cast<std::size_t>(list.frames)]);
  if (cell == nullptr) return kNoMemory;

  std::uint64_t longest = 0;
  std::uint32_t frame = 0;
  for (const Segment& segment : list.segments) {
    const std::uint64_t reach = LargestDelta(segment);
    for (const RawEntry& raw : segment.entries) {
      INDEX_ENTRY_ARRAY* entry = &cell[frame];
      if (!FlattenEntry(segment, raw, reach, fileSize, entry)) {
        cell.reset();
        return kNoIndexTable;
      }
      entry->audioSamples =
          timecode->rateIndex < kRateCount ? SamplesInFrame(timecode->rateIndex, frame) : 0;
      ++frame;
      if (frame % kEntriesPerLook == 0 && file.StopAsked()) return kCancelled;
    }
    longest = std::max(longest, segment.duration);
  }
  timecode->frameCount = frame;
  timecode->maxIndexDuration = static_cast<std::uint32_t>(
      std::min<std::uint64_t>(longest, std::numeric_limits<std::uint32_t>::max()));
  return kSuccess;
}

// Bytes that an element occupies with its key, its length field and a fill behind its value.
// `length` is the length of the value in bytes; the file pointer must be on the value.
std::uint32_t ElementBytes(platform::File* file, std::uint64_t length) {
  const std::uint64_t behind = file->Position() + length;
  std::uint64_t fill = 0;
  const bool filled = FindKlvKey(file, keys::kFill, behind, behind + kFillSearchBytes, &fill) == 1;
  const std::uint64_t bytes =
      filled ? length + fill + 2 * kElementHeaderBytes : length + kElementHeaderBytes;
  return static_cast<std::uint32_t>(bytes);
}

void MeasureAncillaryElement(platform::File* file, MXF_BASE_INFO* mxf) {
  if (mxf->hasAncillaryData == 0) {
    mxf->ancillaryElementSize = 0;
    return;
  }
  const INDEX_ENTRY_ARRAY& first = (*mxf->indexEntries)[0];
  if (first.deltaCount == 0) return;
  const std::uint64_t start =
      first.fileOffset + first.sliceOffset + first.delta[first.deltaCount - 1].elementDelta;
  std::uint64_t length = 0;
  if (FindKlvKey(file, keys::kAncillaryElement, start, start + kFillSearchBytes, &length)) {
    mxf->ancillaryElementSize = ElementBytes(file, length);
  }
}

// Finds the audio element whose key starts in [start, limit), both file offsets in bytes. Returns
// its kind, puts the length of its value in bytes into `*length`, and leaves the file pointer on
// the value.
AudioElementKind FindAudioElement(platform::File* file, std::uint64_t start, std::uint64_t limit,
                                  std::uint64_t* length) {
  if (FindKlvKey(file, keys::kAes3Element, start, limit, length)) return kAes3Element;
  if (FindKlvKey(file, keys::kWaveElement, start, limit, length)) return kWaveElement;
  return kNoAudioElement;
}

std::int32_t MeasureAudioElement(platform::File* file, MXF_BASE_INFO* mxf) {
  const INDEX_ENTRY_ARRAY& first = (*mxf->indexEntries)[0];
  MXF_AUDIO_INFO* audio = mxf->audio;
  if (audio->blockAlign == 0) return kUnknownSamplePattern;
  const std::uint64_t slice = first.fileOffset + first.sliceOffset;
  std::uint64_t length = 0;
  audio->elementKind = FindAudioElement(file, slice, slice + kElementSearchBytes, &length);
  if (audio->elementKind == kNoAudioElement) {
    // The slice does not begin with an audio element, for example because the index has no slices.
    // The element size stays 0; the kind is that of the element to which the first track's delta
    // leads.
    if (first.deltaCount <= kDeltasBeforeAudio) return kSuccess;
    const std::uint64_t element = slice + first.delta[kDeltasBeforeAudio].elementDelta;
    audio->elementKind = FindAudioElement(file, element, element + 1, &length);
    return kSuccess;
  }
  const std::uint64_t samples = (length & 0xFFFFFFFF) / audio->blockAlign;
  if (!CanBeFirstFrame(samples)) return kUnknownSamplePattern;
  audio->elementSize = ElementBytes(file, length);
  return kSuccess;
}

std::int32_t MissingIndexArgument(const platform::File* file, const MXF_BASE_INFO* mxf) {
  if (!IsUsable(file)) return kIndexNoFile;
  if (mxf == nullptr) return kIndexNoBaseInfo;
  if (mxf->partitionTable == nullptr || *mxf->partitionTable == nullptr) {
    return kIndexNoPartitionCell;
  }
  if (mxf->timecode == nullptr) return kIndexNoTimecodeInfo;
  if (mxf->indexEntries == nullptr) return kIndexNoIndexCell;
  if (mxf->audio == nullptr) return kIndexNoAudioInfo;
  return kSuccess;
}

}  // namespace

std::int32_t ReadIndexTable(platform::File* file, MXF_BASE_INFO* mxf) {
  if (const std::int32_t refused = MissingIndexArgument(file, mxf)) return refused;
  mxf->indexEntries->reset();

  SegmentList list;
  if (const std::int32_t refused = ReadAllSegments(*file, *mxf, &list)) return refused;
  ChooseSegments(&list);
  if (list.frames == 0) return kNoIndexTable;
  AssignPartitions(*mxf, &list.segments);
  if (const std::int32_t refused = Flatten(*file, list, mxf)) return refused;
  MeasureAncillaryElement(file, mxf);
  return MeasureAudioElement(file, mxf);
}

}  // namespace quorvan
