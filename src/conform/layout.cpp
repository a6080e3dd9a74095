#include "conform/layout.h"

#include <algorithm>
#include <array>
#include <span>

#include "conform/checksum.h"
#include "conform/picture_type.h"
#include "mxf/metadata/index_segments.h"
#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/metadata_set.h"

namespace quorvan {
namespace {

constexpr std::uint64_t kUsualKag = 512;
constexpr std::uint64_t kLargestKag = 1 << 20;  // SMPTE ST 377-1

// Bytes of all packs with their fill up to which the clip's own KAG is kept.
constexpr std::uint64_t kMostPackBytes = 64 << 20;

constexpr KlvKey kWrittenSegment = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01,
                                    0x0D, 0x01, 0x02, 0x01, 0x01, 0x10, 0x01, 0x00};
constexpr std::uint32_t kEntryBytes = kFixedEntryBytes + kSliceOffsetBytes;  // with one slice
constexpr std::uint32_t kMostEntries = (0xFFFF - kBatchHeaderBytes) / kEntryBytes;
constexpr std::uint8_t kReordered = 0xFF;  // PosTableIndex of pictures that are not stored in order
constexpr std::uint8_t kAudioSlice = 1;

void AppendBe(std::uint64_t value, int bytes, std::vector<std::uint8_t>* out) {
  for (int i = bytes - 1; i >= 0; --i)
    out->push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

void AppendItem(std::uint16_t tag, std::span<const std::uint8_t> value,
                std::vector<std::uint8_t>* out) {
  AppendBe(tag, 2, out);
  AppendBe(value.size(), 2, out);
  out->insert(out->end(), value.begin(), value.end());
}

void AppendNumber(std::uint16_t tag, std::uint64_t value, int bytes,
                  std::vector<std::uint8_t>* out) {
  std::vector<std::uint8_t> number;
  AppendBe(value, bytes, &number);
  AppendItem(tag, number, out);
}

// ---- The index table ----

// An instance UID made of the set's own items, so that the same clip always gives the same copy: a
// UUID of version 8 (RFC 9562).
std::array<std::uint8_t, 16> InstanceUidFor(const std::vector<std::uint8_t>& items) {
  Checksum checksum;
  checksum.Add(items);
  std::array<std::uint8_t, 16> uid = checksum.Digest();
  uid[6] = static_cast<std::uint8_t>((uid[6] & 0x0F) | 0x80);
  uid[8] = static_cast<std::uint8_t>((uid[8] & 0x3F) | 0x80);
  return uid;
}

// Writes the index segments of one clip.
class SegmentWriter {
 public:
  SegmentWriter(const FrameMap& map, bool laysFrames, Fraction rate, std::uint32_t indexSid)
      : map_(map),
        laysFrames_(laysFrames),
        rate_(rate),
        indexSid_(indexSid),
        pictures_(IndexPictures(map.pictures)),
        deltas_(Deltas()) {}

  // Bytes of a frame in the copy.
  std::uint64_t BytesOf(std::uint32_t frame) const {
    return laysFrames_ ? LaidBytes(map_, map_.frames[frame]) : map_.frames[frame].bytes;
  }

  // The segment of `count` frames from `first` on, the first of which stands `streamOffset` bytes
  // behind the start of the essence.
  LoadedKlv Write(std::uint32_t first, std::uint32_t count, std::uint64_t streamOffset) const {
    LoadedKlv segment{kWrittenSegment, {}};
    std::vector<std::uint8_t>& value = segment.value;
    AppendNumber(tags::kIndexEditRate, std::uint64_t{rate_.numerator} << 32 | rate_.denominator, 8,
                 &value);
    AppendNumber(tags::kIndexStartPosition, first, 8, &value);
    AppendNumber(tags::kIndexDuration, count, 8, &value);
    AppendNumber(tags::kEditUnitByteCount, 0, 4, &value);
    AppendNumber(tags::kIndexSid, indexSid_, 4, &value);
    AppendNumber(tags::kBodySid, map_.bodySid, 4, &value);
    AppendNumber(tags::kSliceCount, 1, 1, &value);
    AppendNumber(tags::kPosTableCount, 0, 1, &value);
    AppendItem(tags::kDeltaEntries, deltas_, &value);
    AppendItem(tags::kIndexEntries, Entries(first, count, streamOffset), &value);
    AppendItem(tags::kInstanceUid, InstanceUidFor(value), &value);
    return segment;
  }

 private:
  std::vector<std::uint8_t> Deltas() const {
    const bool isReordered = std::any_of(pictures_.begin(), pictures_.end(),
                                         [](const auto& p) { return p.temporalOffset != 0; });
    std::vector<DELTA_ENTRY> deltas = {
        {0, 0, 0}, {isReordered ? kReordered : std::uint8_t{0}, 0, PictureOffset()}};
    std::uint32_t laid = 0;
    for (std::size_t t = 0; t < std::min<std::size_t>(map_.deltas.size(), kMaxTracks); ++t) {
      deltas.push_back({0, kAudioSlice, laysFrames_ ? laid : map_.deltas[t]});
      laid += map_.slots[t];
    }
    const bool namesData = map_.hasDataElement && (laysFrames_ || map_.dataDeltaHolds) &&
                           map_.deltas.size() < kMaxTracks;
    if (namesData) deltas.push_back({0, kAudioSlice, laysFrames_ ? laid : map_.dataDelta});
    std::vector<std::uint8_t> value;
    AppendBe(deltas.size(), 4, &value);
    AppendBe(kDeltaEntryBytes, 4, &value);
    for (const DELTA_ENTRY& delta : deltas) {
      value.push_back(delta.posTableIndex);
      value.push_back(delta.slice);
      AppendBe(delta.elementDelta, 4, &value);
    }
    return value;
  }

  // Bytes from the start of the first frame to its picture. In a frame that is laid anew, the
  // length field of the element in front of the picture may be of another length.
  std::uint32_t PictureOffset() const {
    const SourceFrame& first = map_.frames.front();
    const bool moves = laysFrames_ && map_.pictureOffset != 0;
    return map_.pictureOffset - (moves ? first.sliceOffset - first.laidSlice : 0);
  }

  std::vector<std::uint8_t> Entries(std::uint32_t first, std::uint32_t count,
                                    std::uint64_t streamOffset) const {
    std::vector<std::uint8_t> value;
    AppendBe(count, 4, &value);
    AppendBe(kEntryBytes, 4, &value);
    for (std::uint32_t i = first; i < first + count; ++i) {
      value.push_back(static_cast<std::uint8_t>(pictures_[i].temporalOffset));
      value.push_back(static_cast<std::uint8_t>(pictures_[i].keyFrameOffset));
      value.push_back(pictures_[i].flags);
      AppendBe(streamOffset, 8, &value);
      AppendBe(laysFrames_ ? map_.frames[i].laidSlice : map_.frames[i].sliceOffset, 4, &value);
      streamOffset += BytesOf(i);
    }
    return value;
  }

  const FrameMap& map_;
  const bool laysFrames_;
  const Fraction rate_;
  const std::uint32_t indexSid_;
  const std::vector<IndexPicture> pictures_;
  const std::vector<std::uint8_t> deltas_;  // value of the item that all segments have
};

// Narrows the essence of `partition` to `count` frames from `first` on.
void TakeFrames(const FrameMap& map, std::uint32_t first, std::uint32_t count,
                CopyPartition* partition) {
  const SourceFrame& last = map.frames[first + count - 1];
  partition->firstFrame = first;
  partition->frames = count;
  partition->sourceOffset = map.frames[first].offset;
  partition->sourceBytes = last.offset + last.bytes - map.frames[first].offset;
}

// Divides the partitions that hold frames, so that an index segment can list the frames of each.
std::vector<CopyPartition> Divided(const FrameMap& map, std::vector<CopyPartition> partitions) {
  std::vector<CopyPartition> divided;
  for (CopyPartition& whole : partitions) {
    const std::uint32_t first = whole.firstFrame;
    const std::uint32_t frames = whole.frames;
    divided.push_back(std::move(whole));
    for (std::uint32_t done = 0; done < frames;) {
      const std::uint32_t count = std::min(kMostEntries, frames - done);
      if (done != 0) {
        divided.push_back({.pack = divided.back().pack});
        divided.back().pack.key[kPackKindByte] = kBodyPackKind;
      }
      TakeFrames(map, first + done, count, &divided.back());
      done += count;
    }
  }
  return divided;
}

// ---- The places of the parts ----

std::uint64_t WrittenBytes(const std::vector<LoadedKlv>& klvs) {
  std::uint64_t bytes = 0;
  for (const LoadedKlv& klv : klvs)
    bytes += WrittenHeaderBytes(klv.value.size()) + klv.value.size();
  return bytes;
}

std::uint64_t PackBytes(const CopyPartition& partition) {
  const std::uint64_t value = partition.pack.value.size();
  return WrittenHeaderBytes(value) + value;
}

// True when a pack and a fill, or the pack alone, make exactly one KAG.
bool FillsOneKag(std::uint64_t packBytes, std::uint64_t kag) {
  return RoundedWithFill(packBytes, kag) == kag;
}

std::uint32_t ChooseKag(const std::vector<CopyPartition>& partitions) {
  const std::uint32_t stated = partitions.front().pack.U32(pack_field::kKagSize);
  const auto fits = [&partitions](std::uint64_t kag) {
    return std::all_of(partitions.begin(), partitions.end(), [kag](const auto& partition) {
      return FillsOneKag(PackBytes(partition), kag);
    });
  };
  const bool isSmall = stated <= kLargestKag && stated * partitions.size() <= kMostPackBytes;
  if (stated != 0 && isSmall && fits(stated)) return stated;
  std::uint64_t kag = kUsualKag;
  while (!fits(kag))
    kag += kUsualKag;
  return static_cast<std::uint32_t>(kag);
}

std::uint64_t HeaderBytes(const MetadataSets& sets, std::uint64_t kag) {
  if (sets.empty()) return 0;
  return RoundedWithFill(WrittenBytes(sets) + std::max(kRoomBehindSets, kag), kag);
}

std::uint64_t EssenceBytes(const CopyPlan& plan, const CopyPartition& partition) {
  if (plan.laidFrames == nullptr || partition.frames == 0) return partition.sourceBytes;
  std::uint64_t bytes = 0;
  for (std::uint32_t i = 0; i < partition.frames; ++i)
    bytes += LaidBytes(*plan.laidFrames, plan.laidFrames->frames[partition.firstFrame + i]);
  return bytes;
}

std::uint64_t RandomIndexValueBytes(std::size_t partitions) {
  return kRandomIndexEntryBytes * partitions + kOverallLengthBytes;
}

}  // namespace

void WriteIndex(const FrameMap& map, Fraction rate, std::uint32_t indexSid, CopyPlan* plan) {
  plan->partitions = Divided(map, std::move(plan->partitions));
  const SegmentWriter writer(map, plan->laidFrames != nullptr, rate, indexSid);
  std::vector<LoadedKlv> segments;
  std::uint64_t streamOffset = 0;
  for (CopyPartition& partition : plan->partitions) {
    std::uint8_t* pack = partition.pack.value.data();
    PutBe32(pack + pack_field::kIndexSid, 0);
    const bool hasFrames = partition.frames != 0;
    if (!hasFrames && partition.sourceBytes != 0) continue;  // another stream
    PutBe32(pack + pack_field::kBodySid, hasFrames ? map.bodySid : 0);
    PutBe64(pack + pack_field::kBodyOffset, hasFrames ? streamOffset : 0);
    if (!hasFrames) continue;
    segments.push_back(writer.Write(partition.firstFrame, partition.frames, streamOffset));
    streamOffset += EssenceBytes(*plan, partition);
  }
  CopyPartition& footer = plan->partitions.back();
  PutBe32(footer.pack.value.data() + pack_field::kIndexSid, indexSid);
  footer.indexSegments = std::move(segments);
}

void PlaceParts(CopyPlan* plan) {
  plan->kagSize = ChooseKag(plan->partitions);
  std::uint64_t at = 0;
  for (CopyPartition& partition : plan->partitions) {
    partition.offset = at;
    partition.headerByteCount = HeaderBytes(partition.metadata, plan->kagSize);
    partition.indexByteCount =
        RoundedWithFill(WrittenBytes(partition.indexSegments), plan->kagSize);
    partition.essenceBytes = EssenceBytes(*plan, partition);
    at = plan->EssenceOffset(partition) + partition.essenceBytes;
  }
  plan->randomIndexOffset = at;
  const std::uint64_t value = RandomIndexValueBytes(plan->partitions.size());
  plan->fileSize = at + WrittenHeaderBytes(value) + value;
}

std::vector<std::uint8_t> WritePack(const CopyPlan& plan, std::size_t index) {
  const CopyPartition& partition = plan.partitions[index];
  PartitionPack pack = partition.pack;
  if (IsUnfinishedPartition(pack.Status())) pack.key[kPackStatusByte] = kClosedCompletePack;
  std::uint8_t* value = pack.value.data();
  PutBe32(value + pack_field::kKagSize, plan.kagSize);
  PutBe64(value + pack_field::kThisPartition, partition.offset);
  PutBe64(value + pack_field::kPreviousPartition,
          index == 0 ? 0 : plan.partitions[index - 1].offset);
  PutBe64(value + pack_field::kFooterPartition, plan.partitions.back().offset);
  PutBe64(value + pack_field::kHeaderByteCount, partition.headerByteCount);
  PutBe64(value + pack_field::kIndexByteCount, partition.indexByteCount);
  // The readers look for the Preface in front of the essence, whose place they take from
  // BodyOffset.
  if (pack.U32(pack_field::kBodySid) == 0) PutBe64(value + pack_field::kBodyOffset, 0);
  std::vector<std::uint8_t> bytes;
  AppendKlvHeader(pack.key, pack.value.size(), &bytes);
  bytes.insert(bytes.end(), pack.value.begin(), pack.value.end());
  AppendFill(plan.kagSize - bytes.size(), &bytes);
  return bytes;
}

std::vector<std::uint8_t> WriteRandomIndex(const CopyPlan& plan) {
  std::vector<std::uint8_t> bytes;
  AppendKlvHeader(keys::kRandomIndexPack, RandomIndexValueBytes(plan.partitions.size()), &bytes);
  for (const CopyPartition& partition : plan.partitions) {
    AppendBe(partition.pack.U32(pack_field::kBodySid), 4, &bytes);
    AppendBe(partition.offset, 8, &bytes);
  }
  AppendBe(bytes.size() + kOverallLengthBytes, 4, &bytes);
  return bytes;
}

std::vector<std::uint8_t> WriteKlvs(const std::vector<LoadedKlv>& klvs, std::uint64_t bytes) {
  std::vector<std::uint8_t> written;
  for (const LoadedKlv& klv : klvs) {
    AppendKlvHeader(klv.key, klv.value.size(), &written);
    written.insert(written.end(), klv.value.begin(), klv.value.end());
  }
  AppendFill(bytes - written.size(), &written);
  return written;
}

}  // namespace quorvan
