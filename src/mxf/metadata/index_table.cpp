#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <new>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "mxf/analysis.h"
#include "mxf/essence/index_proof.h"
#include "mxf/metadata/index_segments.h"
#include "mxf/metadata/metadata_set.h"
#include "mxf/metadata/readers.h"
#include "mxf/sample_pattern.h"
#include "platform/memory.h"

namespace quorvan {
namespace {

constexpr std::uint64_t kFillSearchBytes = 16;
constexpr std::uint64_t kElementSearchBytes = 28;

// Entries that are handled between two checks for a stop request.
constexpr std::uint32_t kEntriesPerLook = 1u << 14;

// Keeps only the footer's segments when one of them starts at frame 0: the footer then repeats the
// whole index table.
void ChooseSegments(SegmentList* list) {
  const auto inFooter = [](const IndexSegment& s) { return s.foundIn->kind == kFooterPartition; };
  const bool footerIsComplete =
      std::any_of(list->segments.begin(), list->segments.end(),
                  [&](const IndexSegment& s) { return inFooter(s) && s.start == 0; });
  if (!footerIsComplete) return;
  std::erase_if(list->segments, [&](const IndexSegment& s) { return !inFooter(s); });
  list->frames = 0;
  for (const IndexSegment& segment : list->segments)
    list->frames += segment.entries.size();
}

// Gives the partition that holds the frame with the stream offset `streamOffset` of a segment.
using PartitionOf = std::function<const MXF_PARTITION_INFO*(const IndexSegment& segment,
                                                            std::uint64_t streamOffset)>;

// Tells each segment the partition that holds its frames, by order alone: the first partition with
// the BodySID of the first segment belongs to this segment, the next partition with the BodySID of
// the second segment belongs to the second, and so on. A segment for which no partition is left
// keeps the partition in which it was found.
PartitionOf PartitionsByOrder(const MXF_BASE_INFO& mxf, const SegmentList& list) {
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  std::unordered_map<const IndexSegment*, const MXF_PARTITION_INFO*> partitionOf;
  auto cursor = list.segments.begin();
  for (std::uint32_t i = 0; i < table[0].partitionCount && cursor != list.segments.end(); ++i) {
    if (table[i].bodySid == 0 || table[i].bodySid != cursor->bodySid) continue;
    partitionOf[&*cursor] = &table[i];
    ++cursor;
  }
  return [partitionOf = std::move(partitionOf)](const IndexSegment& segment, std::uint64_t) {
    const auto found = partitionOf.find(&segment);
    return found == partitionOf.end() ? segment.foundIn : found->second;
  };
}

// Finds the partition of each frame by its stream offset: the last partition with the BodySID of
// the segment whose BodyOffset is not behind the frame. Gives null where there is none.
PartitionOf PartitionsByOffset(const MXF_BASE_INFO& mxf) {
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  std::map<std::pair<std::uint32_t, std::uint64_t>, const MXF_PARTITION_INFO*> partitionAt;
  for (std::uint32_t i = 0; i < table[0].partitionCount; ++i) {
    if (table[i].bodySid != 0) partitionAt[{table[i].bodySid, table[i].bodyOffset}] = &table[i];
  }
  return [partitionAt = std::move(partitionAt)](
             const IndexSegment& segment, std::uint64_t streamOffset) -> const MXF_PARTITION_INFO* {
    auto behind = partitionAt.upper_bound({segment.bodySid, streamOffset});
    if (behind == partitionAt.begin()) return nullptr;
    --behind;
    return behind->first.first == segment.bodySid ? behind->second : nullptr;
  };
}

// Gives entries to a segment without entries whose frames all have one size. A duration of 0 stands
// for the rest of the clip.
std::int32_t ExpandSegment(const MXF_BASE_INFO& mxf, IndexSegment* segment) {
  if (!segment->entries.empty() || segment->editUnitBytes == 0) return kSuccess;
  if (segment->duration == 0 && mxf.timecode->duration > segment->start) {
    segment->duration = mxf.timecode->duration - segment->start;
  }
  const std::uint64_t most = std::min(kMostFrames, mxf.fileSize / segment->editUnitBytes);
  if (segment->start > most || segment->duration > most - segment->start) return kNoIndexTable;
  if (!platform::FitsMemory(segment->duration * sizeof(SegmentEntry))) return kIndexNoMemory;
  for (std::uint64_t i = 0; i < segment->duration; ++i) {
    segment->entries.emplace_back().streamOffset = (segment->start + i) * segment->editUnitBytes;
  }
  return kSuccess;
}

// Frames that a segment lists, as far as it tells.
std::uint64_t FramesOf(const IndexSegment& segment) {
  const bool isConstant = segment.entries.empty() && segment.editUnitBytes != 0;
  return isConstant ? segment.duration : segment.entries.size();
}

// Brings the segments into the order of their frames and expands those without entries. Of
// segments that start at the same frame the longest counts: the others were written before it was
// complete. Refuses a table that does not list every frame from frame 0 on exactly once.
std::int32_t CompleteSegments(const MXF_BASE_INFO& mxf, SegmentList* list) {
  auto& segments = list->segments;
  std::stable_sort(segments.begin(), segments.end(),
                   [](const IndexSegment& a, const IndexSegment& b) {
                     return std::tuple(a.start, a.bodySid, FramesOf(b)) <
                            std::tuple(b.start, b.bodySid, FramesOf(a));
                   });
  const auto repeated = [](const IndexSegment& a, const IndexSegment& b) {
    return a.start == b.start && a.bodySid == b.bodySid;
  };
  segments.erase(std::unique(segments.begin(), segments.end(), repeated), segments.end());
  list->frames = 0;
  for (IndexSegment& segment : segments) {
    if (segment.start != list->frames) return kNoIndexTable;
    if (const std::int32_t refused = ExpandSegment(mxf, &segment)) return refused;
    list->frames += segment.entries.size();
    if (list->frames > kMostFrames) return kNoIndexTable;
  }
  return list->frames == 0 ? kNoIndexTable : kSuccess;
}

// Largest ElementDelta of a segment's delta entries, in bytes.
std::uint32_t LargestDelta(const IndexSegment& segment) {
  std::uint32_t largest = 0;
  for (std::uint32_t k = 0; k < segment.deltaCount; ++k) {
    largest = std::max(largest, segment.delta[k].elementDelta);
  }
  return largest;
}

// Fills the record of one frame, except for its number of samples, from its index entry. `reach` is
// the segment's largest element delta in bytes. False when `partition`, which holds the frame, is
// null, or when the frame or its farthest element starts behind the end of the file.
bool FlattenEntry(const IndexSegment& segment, const SegmentEntry& raw,
                  const MXF_PARTITION_INFO* partition, std::uint64_t reach, std::uint64_t fileSize,
                  INDEX_ENTRY_ARRAY* entry) {
  if (partition == nullptr) return false;
  entry->fileOffset = raw.streamOffset + partition->essenceBase;
  if (entry->fileOffset >= fileSize || raw.sliceOffset + reach >= fileSize - entry->fileOffset) {
    return false;
  }
  entry->partition = partition;
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
std::int32_t Flatten(const platform::File& file, const SegmentList& list,
                     const PartitionOf& partitionOf, MXF_BASE_INFO* mxf) {
  MXF_TIMECODE_INFO* timecode = mxf->timecode;
  const std::uint64_t fileSize = mxf->fileSize;
  IndexEntryCell& cell = *mxf->indexEntries;
  if (!platform::FitsMemory(list.frames * sizeof(INDEX_ENTRY_ARRAY))) return kIndexNoMemory;
  cell.reset(new (std::nothrow) INDEX_ENTRY_ARRAY[static_cast<std::size_t>(list.frames)]);
  if (cell == nullptr) return kIndexNoMemory;

  std::uint64_t longest = 0;
  std::uint32_t frame = 0;
  for (const IndexSegment& segment : list.segments) {
    const std::uint64_t reach = LargestDelta(segment);
    for (const SegmentEntry& raw : segment.entries) {
      INDEX_ENTRY_ARRAY* entry = &cell[frame];
      const MXF_PARTITION_INFO* partition = partitionOf(segment, raw.streamOffset);
      if (!FlattenEntry(segment, raw, partition, reach, fileSize, entry)) {
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
  mxf->ancillaryElementSize = 0;
  if (mxf->hasAncillaryData == 0) return;
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
  audio->elementSize = 0;
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

// The position in the 5-frame sample pattern at which the clip starts: the position from which on
// the first audio elements of the first frames hold the samples of the pattern; the first such
// position when the frames are too few to tell. kUnknownPatternStart when there is none.
std::uint32_t FindPatternStart(const platform::File& file, const MXF_BASE_INFO& mxf) {
  const std::uint32_t rate = mxf.timecode->rateIndex;
  if (rate >= kRateCount || mxf.audio->blockAlign == 0) return kUnknownPatternStart;
  const std::uint32_t frames = std::min(mxf.timecode->frameCount, kPatternFrames);
  for (std::uint32_t start = 0; start < kPatternFrames; ++start) {
    std::uint32_t fitting = 0;
    while (fitting < frames &&
           FirstElementBytes(file, mxf, fitting) ==
               std::uint64_t{SamplesInFrame(rate, start + fitting)} * mxf.audio->blockAlign) {
      ++fitting;
    }
    if (fitting == frames) return start;
  }
  return kUnknownPatternStart;
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

std::int32_t MeasureFirstFrame(platform::File* file, MXF_BASE_INFO* mxf) {
  mxf->audio->patternStart = FindPatternStart(*file, *mxf);
  mxf->audio->indexedElements = CountIndexedElements(*file, *mxf);
  MeasureAncillaryElement(file, mxf);
  return MeasureAudioElement(file, mxf);
}

namespace {

// The index table in the reading that was tried first, and what was measured with it, while another
// reading is tried. The other reading finds nothing measured.
class SetAside {
 public:
  explicit SetAside(MXF_BASE_INFO* mxf)
      : mxf_(*mxf),
        entries_(std::move(*mxf->indexEntries)),
        frameCount_(mxf->timecode->frameCount),
        maxIndexDuration_(mxf->timecode->maxIndexDuration),
        ancillaryElementSize_(std::exchange(mxf->ancillaryElementSize, 0)),
        audio_(*mxf->audio) {
    mxf->audio->elementSize = 0;
    mxf->audio->elementKind = kNoAudioElement;
  }

  // Makes this reading that of the clip again.
  void PutBack() {
    *mxf_.indexEntries = std::move(entries_);
    mxf_.timecode->frameCount = frameCount_;
    mxf_.timecode->maxIndexDuration = maxIndexDuration_;
    mxf_.ancillaryElementSize = ancillaryElementSize_;
    *mxf_.audio = audio_;
  }

 private:
  MXF_BASE_INFO& mxf_;
  IndexEntryCell entries_;
  const std::uint32_t frameCount_;
  const std::uint32_t maxIndexDuration_;
  const std::uint32_t ancillaryElementSize_;
  const MXF_AUDIO_INFO audio_;
};

std::int32_t ReadByOffset(platform::File* file, SegmentList* list, MXF_BASE_INFO* mxf) {
  if (const std::int32_t refused = CompleteSegments(*mxf, list)) return refused;
  const PartitionOf partitionOf = PartitionsByOffset(*mxf);
  if (const std::int32_t refused = Flatten(*file, *list, partitionOf, mxf)) return refused;
  return MeasureFirstFrame(file, mxf);
}

}  // namespace

std::int32_t ReadIndexTableByOrder(platform::File* file, MXF_BASE_INFO* mxf, SegmentList* list) {
  if (const std::int32_t refused = MissingIndexArgument(file, mxf)) return refused;
  mxf->indexEntries->reset();
  if (const std::int32_t refused = ReadIndexSegments(*file, *mxf, list)) return refused;
  ChooseSegments(list);
  if (list->frames == 0) return kNoIndexTable;
  const PartitionOf partitionOf = PartitionsByOrder(*mxf, *list);
  if (const std::int32_t refused = Flatten(*file, *list, partitionOf, mxf)) return refused;
  return MeasureFirstFrame(file, mxf);
}

std::int32_t ReadIndexTable(platform::File* file, MXF_BASE_INFO* mxf) {
  SegmentList list;
  const std::int32_t byOrder = ReadIndexTableByOrder(file, mxf, &list);
  const bool isUnfit = byOrder == kNoIndexTable || byOrder == kUnknownSamplePattern;
  if (byOrder != kSuccess && !isUnfit) return byOrder;
  if (byOrder == kSuccess && BorderKeysAgree(*file, *mxf)) return kSuccess;
  SetAside first(mxf);
  const std::int32_t byOffset = ReadByOffset(file, &list, mxf);
  if (byOffset == kSuccess && EveryFrameStands(*file, *mxf, ColdWalk::kPrefetches)) return kSuccess;
  first.PutBack();
  mxf->indexContradicted = byOrder == kUnknownSamplePattern ? 0 : 1;
  return isUnfit && byOffset == kIndexNoMemory ? kIndexNoMemory : byOrder;
}

}  // namespace quorvan
