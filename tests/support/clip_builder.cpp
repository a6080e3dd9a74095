#include "support/clip_builder.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "support/clip_parts.h"
#include "timecode/timecode.h"

namespace quorvan::test {
namespace {

constexpr std::size_t kDeltaItem = 6;   // bytes of a delta entry
constexpr std::size_t kIndexItem = 11;  // bytes of an index entry without slices and positions
constexpr std::size_t kLargestItem = 0xFFFF;
constexpr std::uint32_t kSystemBytes = 57;  // value of a system metadata pack (SMPTE 385)
constexpr std::size_t kUserTimecode = 41;   // its user date / time stamp, behind the type byte
constexpr std::uint8_t kTimecodeStampType = 0x81;
constexpr std::uint8_t kKeyHeader = 2;
constexpr std::uint8_t kKeyBody = 3;
constexpr std::uint8_t kKeyFooter = 4;

constexpr Label kPackKey{0x06, 0x0E, 0x2B, 0x34, 2, 5, 1, 1, 0x0D, 1, 2, 1, 1, 2, 4, 0};
constexpr Label kRandomIndexKey{0x06, 0x0E, 0x2B, 0x34, 2, 5, 1, 1, 0x0D, 1, 2, 1, 1, 0x11, 1, 0};
constexpr Label kSystemKey{0x06, 0x0E, 0x2B, 0x34, 2, 5, 1, 1, 0x0D, 1, 3, 1, 4, 1, 1, 0};

// Cheap, and different enough for a byte in the wrong frame, track or place to show.
std::uint8_t PatternByte(std::uint32_t track, std::uint32_t frame, std::uint32_t i) {
  const std::uint32_t mixed = (i + 1) * 0x9E3779B1u + frame * 0x85EBCA77u + track * 0xC2B2AE3Du;
  return static_cast<std::uint8_t>(mixed >> 23);
}

// ---- Index ----

std::vector<KlvPlace> BehindPicture(const FramePlace& frame) {
  std::vector<KlvPlace> elements = frame.audio;
  if (frame.data) elements.push_back(*frame.data);
  return elements;
}

// The slice of the last element.
std::uint8_t LastSlice(const ClipSpec& spec) {
  return static_cast<std::uint8_t>(spec.sliceCount + spec.audioSlices - 1);
}

std::vector<DeltaEntry> DeltasOf(const ClipSpec& spec, const FramePlace& frame) {
  const auto system = static_cast<std::uint32_t>(frame.system.totalBytes);
  std::vector<DeltaEntry> deltas{{0, 0, 0}, {0xFF, 0, system}};
  if (!spec.systemElement) deltas.erase(deltas.begin());
  std::uint64_t start = frame.streamOffset;
  std::uint8_t slice = 0;
  for (const KlvPlace& element : BehindPicture(frame)) {
    if (slice < LastSlice(spec)) {
      slice = slice == 0 ? spec.sliceCount : static_cast<std::uint8_t>(slice + 1);
      start = element.key;
    }
    deltas.push_back({0, slice, static_cast<std::uint32_t>(element.key - start)});
  }
  return deltas;
}

std::size_t EntryBytes(const ClipSpec& spec) {
  return kIndexItem + 4u * LastSlice(spec) + 8u * spec.posTableCount;
}

std::vector<IndexSegment> PlanIndex(const ClipSpec& spec, const std::vector<FramePlace>& frames) {
  std::vector<IndexSegment> segments;
  for (std::uint32_t first = 0; first < spec.frames; first += spec.framesPerSegment) {
    const std::uint32_t end = first + std::min(spec.framesPerSegment, spec.frames - first);
    IndexSegment& segment = segments.emplace_back();
    segment.startPosition = first;
    segment.duration = end - first;
    segment.deltas = DeltasOf(spec, frames[0]);
    if (spec.constantBytes) segment.editUnitByteCount = frames[0].bytes;
    for (std::uint32_t n = first; n < end && !spec.constantBytes; ++n) {
      IndexEntry& entry = segment.entries.emplace_back(
          IndexEntry{0, static_cast<std::uint8_t>(0 - n % 3),
                     static_cast<std::uint8_t>(n % 3 == 0 ? 0xC0 : 0x22), frames[n].streamOffset,
                     frames[n].sliceOffset});
      const std::vector<KlvPlace> elements = BehindPicture(frames[n]);
      for (std::size_t e = 1; e < spec.audioSlices; ++e)
        entry.laterSlices.push_back(
            static_cast<std::uint32_t>(elements.at(e).key - frames[n].offset));
    }
  }
  return segments;
}

Bytes DeltaArray(const IndexSegment& segment) {
  Bytes items;
  for (const DeltaEntry& delta : segment.deltas) {
    items = std::move(items) + Bytes{delta.posTableIndex, delta.slice} + Big32(delta.elementDelta);
  }
  return Batch(segment.deltas.size() + segment.missingDeltas, kDeltaItem, items);
}

Bytes EntryArray(const ClipSpec& spec, const IndexSegment& segment) {
  const std::uint32_t toPicture =
      segment.deltas.size() > 1 && spec.systemElement ? segment.deltas[1].elementDelta : 0;
  Bytes items;
  for (const IndexEntry& entry : segment.entries) {
    items = std::move(items) + Bytes{entry.temporalOffset, entry.keyFrameOffset, entry.flags} +
            Big64(entry.streamOffset);
    for (std::uint8_t s = 1; s <= spec.sliceCount; ++s)
      items = std::move(items) + Big32(s == spec.sliceCount ? entry.sliceOffset : toPicture);
    for (const std::uint32_t offset : entry.laterSlices)
      items = std::move(items) + Big32(offset);
    items.resize(items.size() + std::size_t{8} * spec.posTableCount);
  }
  return Batch(segment.entries.size() + segment.missingEntries, EntryBytes(spec), items);
}

MetadataSet SegmentSet(const ClipSpec& spec, const IndexSegment& segment) {
  const RateRow& rate = RowOf(spec.rate);
  const auto start = static_cast<std::uint64_t>(segment.startPosition);
  return EmptySet(SetKind::kIndexTableSegment, start,
                  {{tag::kIndexEditRate, Big32(rate.numerator) + Big32(rate.denominator)},
                   {tag::kIndexStartPosition, Big64(start)},
                   {tag::kIndexDuration, Big64(static_cast<std::uint64_t>(segment.duration))},
                   {tag::kEditUnitByteCount, Big32(segment.editUnitByteCount)},
                   {tag::kIndexSid, Big32(kIndexSid)},
                   {tag::kBodySid, Big32(kBodySid)},
                   {tag::kSliceCount, {LastSlice(spec)}},
                   {tag::kPosTableCount, {spec.posTableCount}},
                   {tag::kDeltaEntryArray, DeltaArray(segment)},
                   {tag::kIndexEntryArray, EntryArray(spec, segment)}});
}

// ---- The file ----

// The description with all that it implies.
ClipSpec Complete(ClipSpec spec) {
  if (spec.noFill) spec.kagSize = 1;
  if (spec.noFill) spec.elementKag = 0;
  if (spec.constantBytes) spec.sliceCount = 0;
  if (spec.sliceCount == 0) spec.audioSlices = 1;
  spec.references |= spec.setsInTurn;
  const auto listed = static_cast<std::uint32_t>((kLargestItem - kBatchHead) / EntryBytes(spec));
  const std::uint32_t most = spec.constantBytes ? spec.frames : listed;
  const bool own = spec.framesPerSegment != 0;
  const std::uint32_t perPartition = own ? spec.frames : most;
  if (spec.framesPerPartition == 0) spec.framesPerPartition = perPartition;
  spec.framesPerPartition = std::min(spec.framesPerPartition, perPartition);
  spec.framesPerSegment = own ? std::min(spec.framesPerSegment, most) : spec.framesPerPartition;
  return spec;
}

class ClipWriter {
 public:
  explicit ClipWriter(const ClipSpec& spec)
      : spec_(Complete(spec)), klv_(clip_.bytes, spec.mixedLengths) {}

  // The frames are written twice: at first to learn what the index says of them.
  Clip Build() {
    Bytes stream;
    KlvWriter klv(stream);
    for (std::uint32_t n = 0; n < spec_.frames; ++n)
      frames_.push_back(WriteFrame(klv, n));
    std::vector<IndexSegment> segments = PlanIndex(spec_, frames_);
    for (const auto& edit : spec_.indexEdits)
      edit(segments);
    for (const IndexSegment& segment : segments) {
      segments_.push_back(SegmentSet(spec_, segment));
      if (spec_.constantBytes) segments_.back().items.pop_back();
    }
    for (const MetadataItem& item : SetOf(sets_, SetKind::kPreface).items)
      if (item.tag == tag::kEssenceContainers) containers_ = item.value;
    for (const auto& edit : spec_.headerEdits)
      edit(sets_);
    WriteHeader();
    std::size_t bodies = 0;
    for (; bodies * spec_.framesPerPartition < spec_.frames; ++bodies)
      WriteBody(bodies);
    WriteFooter(bodies);
    SetPartitionLinks();
    WriteRandomIndex();
    Layout().startFrames = FrameCount(spec_.start, spec_.rate, spec_.dropFrame);
    Layout().blockAlign = spec_.bits / 8;
    Layout().materialUmids = Occurrences(kMaterialUmid);
    Layout().sourceUmids = Occurrences(kSourceUmid);
    return std::move(clip_);
  }

 private:
  ClipLayout& Layout() { return clip_.layout; }

  // The places of a frame that is written to `klv`, for a file that holds nothing but frames.
  FramePlace WriteFrame(KlvWriter& klv, std::uint32_t number) const {
    const std::uint64_t start = klv.Position();
    const auto sinceStart = [&] { return static_cast<std::uint32_t>(klv.Position() - start); };
    FramePlace frame{.offset = start, .streamOffset = start};
    frame.samples = SamplesOfFrame(spec_.rate, number + spec_.patternStart);
    std::size_t form = spec_.elementKag != 0 ? number : 0;
    if (spec_.systemElement) frame.system = Element(klv, form++, kSystemKey, SystemValue(number));
    frame.picture = Element(klv, form++, kPictureKey, PictureValue(number));
    frame.sliceOffset = sinceStart();
    // One size for all frames, so that the delta entries hold for all. The pattern begins with the
    // most samples.
    const std::uint64_t most = spec_.bits / 8 * SamplesOfFrame(spec_.rate, 0);
    for (std::uint32_t t = 0; t < spec_.tracks; ++t) {
      const Bytes value = AudioValue(number, t, frame.samples);
      frame.audio.push_back(Element(klv, form++, AudioElementKey(spec_, t), value, most));
    }
    if (spec_.dataElement) frame.data = Element(klv, form, kDataKey, Bytes(spec_.dataSize, 0x61));
    frame.bytes = sinceStart();
    return frame;
  }

  // With fill, an element takes as many bytes as one with a value of `largest` bytes, the longest
  // length field and a fill.
  KlvPlace Element(KlvWriter& klv, std::size_t form, const Label& key, const Bytes& value,
                   std::uint64_t largest = 0) const {
    const bool mixed = spec_.mixedElementLengths;
    KlvPlace place = klv.Head(key, value.size(), mixed ? form : kFourBytes);
    klv.Put(value);
    std::uint64_t least = largest == 0 ? 0 : 2 * kKlHead + largest;
    if (mixed) least = kLongestHead + kKlHead + std::max<std::uint64_t>(largest, value.size());
    if (spec_.elementKag != 0)
      place.totalBytes = FilledSize(std::max(place.totalBytes, least), spec_.elementKag);
    klv.FillTo(place.key + place.totalBytes);
    return place;
  }

  Bytes SystemValue(std::uint32_t number) const {
    Bytes value(kSystemBytes);
    value[0] = 0x5C;
    value[1] = RowOf(spec_.rate).packageRate;
    value[kUserTimecode - 1] = kTimecodeStampType;
    const auto given = spec_.timecodeWords.find(number);
    const std::uint32_t count = FrameCount(spec_.start, spec_.rate, spec_.dropFrame) + number;
    const std::uint32_t word = given != spec_.timecodeWords.end()
                                   ? given->second
                                   : TimecodeWord(count, spec_.rate, spec_.dropFrame);
    Bytes stamp = Big32(word);
    std::reverse_copy(stamp.begin(), stamp.end(), value.begin() + kUserTimecode);
    return value;
  }

  Bytes PictureValue(std::uint32_t number) const {
    Bytes value(spec_.pictureSize + (spec_.sliceCount == 0 ? 0 : number % 3 * spec_.pictureStep));
    std::iota(value.begin(), value.end(), static_cast<std::uint8_t>(number));
    return value;
  }

  Bytes AudioValue(std::uint32_t number, std::uint32_t track, std::uint32_t samples) const {
    Bytes value(spec_.bits / 8 * samples);
    for (std::uint32_t i = 0; i < value.size(); ++i)
      value[i] = spec_.audio ? spec_.audio(track, number, i) : PatternByte(track, number, i);
    return value;
  }

  PartitionPlace& BeginPartition(std::uint8_t keyKind) {
    Layout().partitions.push_back({.keyKind = keyKind, .offset = klv_.Position()});
    Label key = kPackKey;
    key[13] = keyKind;
    const std::uint64_t packStart = klv_.Position();
    const std::uint64_t fields = pack::kOperationalPattern - kKlHead;
    const KlvPlace place = klv_.Head(key, fields + sizeof(Label) + containers_.size());
    Layout().partitions.back().packValue = place.value;
    clip_.bytes.resize(static_cast<std::size_t>(place.value + fields));
    klv_.Put(ToBytes(kOp1a));
    klv_.Put(containers_);
    klv_.FillTo(packStart + FilledSize(place.totalBytes, spec_.kagSize));
    if (keyKind == kKeyHeader || spec_.metadataEverywhere) WriteMetadata();
    return Layout().partitions.back();
  }

  void WriteIndex(PartitionPlace& partition, std::size_t first, std::size_t end) {
    partition.indexOffset = klv_.Position();
    for (std::size_t n = first; n < end && n < segments_.size(); ++n) {
      partition.indexSid = kIndexSid;
      klv_.Set(segments_[n]);
      if (spec_.fillBetweenSegments) AlignFrom(partition.indexOffset);
    }
    AlignFrom(partition.indexOffset);
    partition.indexByteCount = klv_.Position() - partition.indexOffset;
  }

  void AlignFrom(std::uint64_t start) {
    klv_.FillTo(start + FilledSize(klv_.Position() - start, spec_.kagSize));
  }

  // The fill at the end is at least a pack long: the header's byte count, read as an offset from
  // the start of the file, then still lies behind the last set.
  void WriteMetadata() {
    PartitionPlace& partition = Layout().partitions.back();
    const std::uint64_t start = klv_.Position();
    for (const MetadataSet& set : sets_) {
      const SetPlace place = klv_.Set(set);
      if (partition.keyKind == kKeyHeader) Layout().sets.push_back(place);
    }
    partition.headerByteCount = klv_.Position() - start;
    if (spec_.kagSize > 1)
      partition.headerByteCount =
          FilledSize(klv_.Position() - partition.offset + kKlHead, spec_.kagSize);
    klv_.FillTo(start + partition.headerByteCount);
  }

  void WriteHeader() {
    PartitionPlace& partition = BeginPartition(kKeyHeader);
    Layout().headerByteCount = partition.headerByteCount;
    partition.indexOffset = partition.essenceOffset = klv_.Position();
  }

  void WriteBody(std::size_t body) {
    PartitionPlace& partition = BeginPartition(kKeyBody);
    const bool own = spec_.indexPlacement == IndexPlacement::kOwnPartition;
    if (own || (body > 0 && spec_.indexPlacement != IndexPlacement::kFooter))
      WriteIndex(partition, own ? body : body - 1, own ? body + 1 : body);
    partition.bodySid = kBodySid;
    partition.essenceOffset = klv_.Position();
    const std::uint32_t first = static_cast<std::uint32_t>(body) * spec_.framesPerPartition;
    partition.bodyOffset = frames_[first].streamOffset;
    for (std::uint32_t n = first; n < spec_.frames && n - first < spec_.framesPerPartition; ++n) {
      FramePlace& frame = Layout().frames.emplace_back(WriteFrame(klv_, n));
      frame.streamOffset = frames_[n].streamOffset;
      frame.partition = body + 1;
    }
  }

  void WriteFooter(std::size_t bodies) {
    PartitionPlace& partition = BeginPartition(kKeyFooter);
    std::size_t first = 0;
    if (spec_.indexPlacement == IndexPlacement::kFollowingPartition) first = bodies - 1;
    if (spec_.indexPlacement == IndexPlacement::kOwnPartition) first = bodies;
    WriteIndex(partition, first, segments_.size());
    partition.essenceOffset = klv_.Position();
  }

  void SetPartitionLinks() {
    std::uint64_t previous = 0;
    const std::uint64_t footer = Layout().partitions.back().offset;
    for (const PartitionPlace& partition : Layout().partitions) {
      Patch(clip_.bytes, partition.packValue,
            Bytes{0, 1, 0, 3} + Big32(spec_.kagSize) + Big64(partition.offset) + Big64(previous) +
                Big64(footer) + Big64(partition.headerByteCount) + Big64(partition.indexByteCount) +
                Big32(partition.indexSid) + Big64(partition.bodyOffset) + Big32(partition.bodySid));
      previous = partition.offset;
    }
  }

  void WriteRandomIndex() {
    Bytes value;
    for (const PartitionPlace& partition : Layout().partitions) {
      value = std::move(value) + Big32(partition.bodySid) + Big64(partition.offset);
    }
    Layout().randomIndex = klv_.Head(kRandomIndexKey, value.size() + 4);
    klv_.Put(value + Big32(static_cast<std::uint32_t>(Layout().randomIndex.totalBytes)));
  }

  // The first half of a 64-byte UMID differs from the basic one in front of byte 16 only.
  std::vector<std::uint64_t> Occurrences(const std::array<std::uint8_t, 32>& umid) const {
    std::vector<std::uint64_t> offsets;
    for (const SetPlace& set : clip_.layout.sets) {
      for (const TagPlace& item : set.tags) {
        const auto half = clip_.bytes.begin() + static_cast<std::ptrdiff_t>(item.value) + 16;
        if (item.valueBytes == spec_.umidSize && std::equal(umid.begin() + 16, umid.end(), half))
          offsets.push_back(item.value);
      }
    }
    return offsets;
  }

  const ClipSpec spec_;
  Clip clip_;
  KlvWriter klv_;
  std::vector<FramePlace> frames_;  // in a file of their own
  HeaderSets sets_ = BuildHeaderSets(spec_);
  Bytes containers_;  // that the packs and the Preface list
  std::vector<MetadataSet> segments_;
};

}  // namespace

ClipSpec& ClipSpec::DropSet(SetKind kind, std::size_t occurrence) {
  headerEdits.push_back([=](HeaderSets& sets) {
    sets.erase(sets.begin() + (&SetOf(sets, kind, occurrence) - sets.data()));
  });
  return *this;
}

ClipSpec& ClipSpec::SetTag(SetKind kind, std::size_t occurrence, std::uint16_t tag,
                           const Bytes& value) {
  headerEdits.push_back(
      [=](HeaderSets& sets) { SetOf(sets, kind, occurrence).SetTag(tag, value); });
  return *this;
}

ClipSpec& ClipSpec::RemoveTag(SetKind kind, std::size_t occurrence, std::uint16_t tag) {
  headerEdits.push_back([=](HeaderSets& sets) {
    std::erase_if(SetOf(sets, kind, occurrence).items, [=](auto& item) { return item.tag == tag; });
  });
  return *this;
}

const SetPlace& ClipLayout::Set(SetKind kind, std::size_t occurrence) const {
  for (const SetPlace& set : sets)
    if (set.kind == kind && occurrence-- == 0) return set;
  throw std::out_of_range("clip layout: no such set");
}

std::uint64_t ClipLayout::TagValueOffset(SetKind kind, std::uint16_t tag,
                                         std::size_t occurrence) const {
  for (const TagPlace& place : Set(kind, occurrence).tags)
    if (place.tag == tag) return place.value;
  throw std::out_of_range("clip layout: no such tag");
}

Clip BuildClip(const ClipSpec& spec) {
  return ClipWriter(spec).Build();
}

std::uint32_t SamplesOfFrame(Rate rate, std::uint32_t frame) {
  const auto& samples = RowOf(rate).samples;
  return samples[frame % samples.size()];
}

std::uint32_t FrameCount(const ClipTimecode& timecode, Rate rate, bool dropFrame) {
  return static_cast<std::uint32_t>(
      TimecodeToFrames(RowOf(rate).fpsIndex, dropFrame ? 1 : 0, timecode));
}

std::uint32_t TimecodeWord(std::uint32_t frameCount, Rate rate, bool dropFrame) {
  constexpr std::uint32_t kSecondOfPair = 1u << 15;
  constexpr std::uint32_t kDropFlag = 1u << 6;
  const std::uint32_t fps = RowOf(rate).fpsIndex;
  const std::uint32_t drop = dropFrame && (fps == 2 || fps == 4) ? 1 : 0;
  TimeFields fields{};
  FramesToTimecode(FramesToLabelCount(fps, drop, frameCount % FramesPerDay(fps, drop)), fps,
                   &fields);
  const std::uint32_t divider = fps == 4 ? 2 : 1;
  std::uint32_t word = drop * kDropFlag | (fields[3] % divider != 0 ? kSecondOfPair : 0);
  fields[3] /= divider;
  for (std::size_t i = 0; i < fields.size(); ++i)
    word |= (fields[i] / 10 << 4 | fields[i] % 10) << (24 - 8 * i);
  return word;
}

}  // namespace quorvan::test
