#include "conform/partition_map.h"

#include <algorithm>
#include <array>
#include <span>
#include <unordered_map>
#include <utility>

#include "state/wording.h"

namespace quorvan {
namespace {

constexpr std::uint64_t kLongestPack = 64 * 1024;
constexpr std::uint64_t kMostMetadataBytes = 256ULL << 20;  // in the whole clip
constexpr std::size_t kMostMetadataKlvs = 1 << 20;          // in the whole clip
constexpr std::size_t kMostPartitions = 1 << 16;
constexpr std::size_t kZeroBlockBytes = 1 << 20;

// 0xFF matches any value (KeyMatches): kind and status of a pack, kind and versions of a set.
constexpr KlvKey kAnyPartitionPack = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01,
                                      0x0D, 0x01, 0x02, 0x01, 0x01, 0xFF, 0xFF, 0x00};

constexpr KlvKey kAnyStructuralSet = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0xFF, 0x01, 0xFF,
                                      0x0D, 0x01, 0x01, 0x01, 0xFF, 0xFF, 0xFF, 0xFF};

bool Is(const KlvSpan& klv, const KlvKey& wanted) {
  return KeyMatches(klv.key.data(), wanted);
}

bool IsPartitionPack(const KlvSpan& klv) {
  return Is(klv, kAnyPartitionPack) && klv.key[kPackKindByte] >= kHeaderPackKind &&
         klv.key[kPackKindByte] <= kFooterPackKind;
}

bool IsIndexSegment(const KlvSpan& klv) {
  return Is(klv, keys::kIndexTableSegment);
}

// True for what header metadata begin with or hold in any clip, unlike the other KLVs that
// IsMetadata takes for metadata where the counts of a pack promise some.
bool IsSurelyMetadata(const KlvSpan& klv) {
  return Is(klv, keys::kPrimerPack) || Is(klv, kAnyStructuralSet);
}

bool IsMetadata(const KlvSpan& klv) {
  return !IsPartitionPack(klv) && !IsIndexSegment(klv) && !Is(klv, keys::kRandomIndexPack) &&
         !IsContainerElement(klv.key.data());
}

struct MapReader {
  const platform::File& file;
  std::uint64_t fileSize;
  Reason* reason;
  std::uint64_t metadataBytes = 0;
  std::size_t metadataKlvs = 0;

  bool Refuse(Reason why) {
    *reason = std::move(why);
    return false;
  }
};

bool ReadPack(const platform::File& file, std::uint64_t offset, std::uint64_t end, KlvSpan* klv,
              PartitionPack* pack) {
  if (!ReadKlvSpan(file, offset, end, klv) || !IsPartitionPack(*klv)) return false;
  if (klv->length < pack_field::kFixedBytes || klv->length > kLongestPack) return false;
  const auto length = static_cast<std::size_t>(klv->length);
  pack->key = klv->key;
  pack->value.resize(length);
  return file.ReadAt(klv->valueOffset, pack->value.data(), length) == length;
}

// Finds the random index by the last four bytes of the file, which give its whole length. False
// when no random index of valid length ends with these bytes.
bool FindRandomIndex(const MapReader& reader, KlvSpan* klv) {
  std::array<std::uint8_t, kOverallLengthBytes> tail;
  if (reader.fileSize < tail.size()) return false;
  if (reader.file.ReadAt(reader.fileSize - tail.size(), tail.data(), tail.size()) != tail.size()) {
    return false;
  }
  const std::uint64_t overall = ReadBe32(tail.data());
  return overall <= reader.fileSize &&
         ReadKlvSpan(reader.file, reader.fileSize - overall, reader.fileSize, klv) &&
         Is(*klv, keys::kRandomIndexPack) && klv->End() == reader.fileSize &&
         klv->length >= kRandomIndexEntryBytes + kOverallLengthBytes &&
         (klv->length - kOverallLengthBytes) % kRandomIndexEntryBytes == 0 &&
         (klv->length - kOverallLengthBytes) / kRandomIndexEntryBytes <= kMostPartitions;
}

// Reads the partition offsets from the random index, and the offset of the random index into
// `*end`. False when there is no random index, when its offsets do not start at 0 and ascend, or
// when an offset leads to no pack or to a pack that names another previous partition.
bool OffsetsFromRandomIndex(const MapReader& reader, std::vector<std::uint64_t>* offsets,
                            std::uint64_t* end) {
  KlvSpan index;
  if (!FindRandomIndex(reader, &index)) return false;
  std::vector<std::uint8_t> entries(static_cast<std::size_t>(index.length - kOverallLengthBytes));
  if (reader.file.ReadAt(index.valueOffset, entries.data(), entries.size()) != entries.size()) {
    return false;
  }
  *end = index.offset;
  for (std::size_t at = 0; at < entries.size(); at += kRandomIndexEntryBytes) {
    const std::uint64_t offset = ReadBe64(entries.data() + at + 4);
    const bool first = offsets->empty();
    KlvSpan klv;
    PartitionPack pack;
    if (first ? offset != 0 : offset <= offsets->back()) return false;
    if (!ReadPack(reader.file, offset, index.offset, &klv, &pack)) return false;
    if (!first && pack.U64(pack_field::kPreviousPartition) != offsets->back()) return false;
    offsets->push_back(offset);
  }
  return true;
}

// True when all bytes from the file offset `offset` to the end of the file are zeros, as recorders
// that reserve room leave them.
bool HoldsOnlyZeros(const MapReader& reader, std::uint64_t offset) {
  std::vector<std::uint8_t> block(kZeroBlockBytes);
  while (offset < reader.fileSize) {
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), reader.fileSize - offset));
    if (reader.file.ReadAt(offset, block.data(), wanted) != wanted) return false;
    if (std::any_of(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(wanted),
                    [](std::uint8_t byte) { return byte != 0; })) {
      return false;
    }
    offset += wanted;
  }
  return true;
}

// True when the clip was cut off within the KLV at the file offset `offset`, where no whole KLV
// stands: the KLV reaches behind the end of the file, or nothing but zeros is there.
bool IsCutOffAt(const MapReader& reader, std::uint64_t offset) {
  std::array<std::uint8_t, kMostKlvHeaderBytes> head{};
  const std::size_t held = reader.file.ReadAt(offset, head.data(), head.size());
  const std::size_t compared = std::min(held, kUlPrefix.size());
  const bool isKey =
      held != 0 && std::equal(head.begin(), head.begin() + compared, kUlPrefix.begin());
  std::uint64_t length = 0;
  if (isKey && held < head.size()) return true;
  if (isKey && ReadKlvHeader(std::span(head).first(held), &length) != 0) return true;
  return HoldsOnlyZeros(reader, offset);
}

// Finds the partition offsets by a walk over every KLV, up to the random index or the place where
// the file was cut off. `*end` becomes the offset at which the walk ended. False, with a reason,
// when the walk cannot go on.
bool OffsetsFromWalk(MapReader* reader, SourceClip* clip, std::vector<std::uint64_t>* offsets,
                     std::uint64_t* end) {
  HeaderWindow window(reader->file, HeaderWindow::kBlockBytes);
  std::uint64_t at = 0;
  for (KlvSpan klv; at < reader->fileSize; at = klv.End()) {
    if (!ReadKlvSpan(&window, at, reader->fileSize, &klv)) {
      if (!IsCutOffAt(*reader, at)) {
        return reader->Refuse(
            WordedInBoth({"{} バイト目に完全なKLVがありません。", "no whole KLV at byte {}"}, at));
      }
      clip->cutBytes = reader->fileSize - at;
      break;
    }
    if (Is(klv, keys::kRandomIndexPack)) {
      clip->bytesBehind = reader->fileSize - klv.End();
      break;
    }
    if (!IsPartitionPack(klv)) continue;
    if (offsets->size() == kMostPartitions) {
      return reader->Refuse({"パーティションが多すぎます。", "too many partitions"});
    }
    offsets->push_back(at);
  }
  *end = at;
  return true;
}

// Skips KLV Fill from `offset` on. Returns the offset behind the last fill, at most `end`. Stops at
// the offset `stop`, even in front of a fill, when a KLV starts there.
std::uint64_t SkipFill(const MapReader& reader, std::uint64_t offset, std::uint64_t end,
                       std::uint64_t stop) {
  KlvSpan klv;
  while (offset != stop && ReadKlvSpan(reader.file, offset, end, &klv) && Is(klv, keys::kFill)) {
    offset = klv.End();
  }
  return offset;
}

// Adds `count` bytes to the metadata of the clip. False, with a reason, when the clip then
// has more than kMostMetadataBytes.
bool CountMetadata(MapReader* reader, std::uint64_t count) {
  if (count > kMostMetadataBytes - reader->metadataBytes) {
    return reader->Refuse({"メタデータが大きすぎます。", "more metadata than a clip can have"});
  }
  reader->metadataBytes += count;
  return true;
}

// Collects in `*klvs` the KLVs, without fill, of a part that has `count` bytes by the partition
// pack, and moves `*cursor` from the start of the part to its end. The count may or may not include
// the fill at the start of the part, so the part can end at start + fill + count or at start +
// count. Takes the later end when whole KLVs of the part fill the space up to this end, else the
// earlier end on the same condition. False, with a reason, when neither end fits, or when there is
// too much metadata.
bool ReadCounted(MapReader* reader, std::uint64_t count, std::uint64_t end,
                 const platform::InBoth<std::string_view>& name, bool (*belongs)(const KlvSpan&),
                 std::uint64_t* cursor, std::vector<KlvSpan>* klvs) {
  if (count == 0) return true;
  if (!CountMetadata(reader, count)) return false;
  // No wrap: the cursor lies in the file, and the count is at most kMostMetadataBytes.
  const std::uint64_t countedWithFill = *cursor + count;
  std::uint64_t at = SkipFill(*reader, *cursor, end, end);
  const std::uint64_t counted = at + count;
  std::size_t klvsWithFill = 0;
  bool endsWithFill = false;
  for (KlvSpan klv; at < counted; at = klv.End()) {
    if (at == countedWithFill) {
      endsWithFill = true;
      klvsWithFill = klvs->size();
    }
    if (!ReadKlvSpan(reader->file, at, end, &klv)) break;
    if (Is(klv, keys::kFill)) continue;
    if (!belongs(klv)) break;
    if (++reader->metadataKlvs > kMostMetadataKlvs) {
      return reader->Refuse({"メタデータセットが多すぎます。", "too many metadata sets"});
    }
    klvs->push_back(klv);
  }
  if (at == counted) {
    *cursor = counted;
    return true;
  }
  if (!endsWithFill) {
    return reader->Refuse(
        WordedInBoth({"{0} バイト目の付近で、{1}がバイト数の示す位置で終わっていません。",
                      "the {2} does not end where its byte count says, near byte {0}"},
                     at, name.ja, name.en));
  }
  klvs->resize(klvsWithFill);
  *cursor = countedWithFill;
  return true;
}

// Checks the kind of the partition's pack: only the first partition may and must be a header
// partition, and a footer partition must be the last.
bool CheckPack(MapReader* reader, const SourcePartition& partition, bool first, bool last) {
  const std::uint8_t kind = partition.pack.Kind();
  if ((kind == kHeaderPackKind) != first) {
    return reader->Refuse(WordedInBoth({"{} バイト目のパーティションの順序が正しくありません。",
                                        "the partition at byte {} is out of order"},
                                       partition.offset));
  }
  if (kind == kFooterPackKind && !last) {
    return reader->Refuse(WordedInBoth({"{} バイト目のフッターパーティションが最後ではありません。",
                                        "a footer partition at byte {} is not the last"},
                                       partition.offset));
  }
  return true;
}

// Finds metadata and index table by the byte counts of the pack. False when a count does not end at
// a KLV, or when metadata or index segments stand behind both.
bool ReadByCounts(MapReader* reader, SourcePartition* partition, std::uint64_t* cursor) {
  const PartitionPack& pack = partition->pack;
  if (!ReadCounted(reader, pack.U64(pack_field::kHeaderByteCount), partition->end,
                   {"ヘッダーメタデータ", "header metadata"}, IsMetadata, cursor,
                   &partition->metadata) ||
      !ReadCounted(reader, pack.U64(pack_field::kIndexByteCount), partition->end,
                   {"インデックステーブル", "index table"}, IsIndexSegment, cursor,
                   &partition->indexSegments)) {
    return false;
  }
  KlvSpan behind;
  const std::uint64_t next = SkipFill(*reader, *cursor, partition->end, partition->end);
  return !ReadKlvSpan(reader->file, next, partition->end, &behind) ||
         (!IsIndexSegment(behind) && !IsSurelyMetadata(behind));
}

// Finds metadata and index table by the keys of the KLVs from `*cursor` on, and moves it behind
// them.
bool ReadByKeys(MapReader* reader, SourcePartition* partition, std::uint64_t* cursor) {
  for (KlvSpan klv; ReadKlvSpan(reader->file, *cursor, partition->end, &klv);) {
    const bool isFill = Is(klv, keys::kFill);
    if (!isFill && !IsIndexSegment(klv) && !IsMetadata(klv)) break;
    *cursor = klv.End();
    if (isFill) continue;
    if (!CountMetadata(reader, klv.length)) return false;
    if (++reader->metadataKlvs > kMostMetadataKlvs) {
      return reader->Refuse({"メタデータセットが多すぎます。", "too many metadata sets"});
    }
    (IsIndexSegment(klv) ? partition->indexSegments : partition->metadata).push_back(klv);
  }
  return true;
}

// Reads the pack, the header metadata and the index table of the partition at `partition->offset`.
// `*behindCounted` becomes the file offset behind the index table. False, with a reason, when the
// partition cannot be laid out anew.
bool ReadPartition(MapReader* reader, SourcePartition* partition, bool first, bool last,
                   SourceClip* clip, std::uint64_t* behindCounted) {
  KlvSpan klv;
  if (!ReadPack(reader->file, partition->offset, partition->end, &klv, &partition->pack)) {
    return reader->Refuse(WordedInBoth(
        {"{} バイト目にパーティションパックがありません。", "no partition pack at byte {}"},
        partition->offset));
  }
  if (!CheckPack(reader, *partition, first, last)) return false;
  if (IsUnfinishedPartition(partition->pack.Status())) ++clip->unfinished;
  const auto primerFirst = [partition] {
    return !partition->metadata.empty() && Is(partition->metadata.front(), keys::kPrimerPack);
  };
  *behindCounted = klv.End();
  const bool counted = ReadByCounts(reader, partition, behindCounted);
  if (counted && (primerFirst() || (partition->metadata.empty() && !first))) return true;
  ++clip->wrongCounts;
  partition->metadata.clear();
  partition->indexSegments.clear();
  *behindCounted = klv.End();
  if (!ReadByKeys(reader, partition, behindCounted)) return false;
  if (primerFirst() || (partition->metadata.empty() && !first)) return true;
  return reader->Refuse(
      WordedInBoth({"{} バイト目のパーティションにヘッダーメタデータがありません。",
                    "no header metadata where the partition at byte {} has it"},
                   partition->offset));
}

// Finds the start of the partition's essence, from `behindCounted` on. Fill in front of the first
// element is skipped, unless the BodyOffset of `next` counts it as essence. `next` is the next
// partition with the same BodySID, null when there is none.
void PlaceEssence(const MapReader& reader, std::uint64_t behindCounted, const SourcePartition* next,
                  SourcePartition* partition) {
  const std::uint64_t bodyOffset = partition->pack.U64(pack_field::kBodyOffset);
  std::uint64_t stop = partition->end;
  if (next != nullptr) {
    const std::uint64_t nextOffset = next->pack.U64(pack_field::kBodyOffset);
    if (nextOffset >= bodyOffset && nextOffset - bodyOffset <= partition->end - behindCounted) {
      stop = partition->end - (nextOffset - bodyOffset);
    }
  }
  partition->essenceStart = SkipFill(reader, behindCounted, partition->end, stop);
}

// Finds the essence of all partitions. Goes from the last partition to the first, so that the next
// partition with the same BodySID is always known.
void PlaceEssences(const MapReader& reader, const std::vector<std::uint64_t>& behindCounted,
                   std::vector<SourcePartition>* map) {
  std::unordered_map<std::uint32_t, const SourcePartition*> nextOf;
  for (std::size_t i = map->size(); i-- > 0;) {
    SourcePartition& partition = (*map)[i];
    const std::uint32_t bodySid = partition.pack.U32(pack_field::kBodySid);
    const auto next = nextOf.find(bodySid);
    const bool isKnown = bodySid != 0 && next != nextOf.end();
    PlaceEssence(reader, behindCounted[i], isKnown ? next->second : nullptr, &partition);
    nextOf[bodySid] = &partition;
  }
}

}  // namespace

namespace {

// Reads the partitions at `offsets`, the last of which ends at `end`.
bool ReadPartitions(MapReader* reader, std::vector<std::uint64_t> offsets, std::uint64_t end,
                    SourceClip* clip) {
  const std::size_t count = offsets.size();
  offsets.push_back(end);
  std::vector<std::uint64_t> behindCounted(count);
  clip->partitions.assign(count, {});
  for (std::size_t i = 0; i < count; ++i) {
    SourcePartition& partition = clip->partitions[i];
    partition.offset = offsets[i];
    partition.end = offsets[i + 1];
    if (!ReadPartition(reader, &partition, i == 0, i + 1 == count, clip, &behindCounted[i])) {
      return false;
    }
  }
  PlaceEssences(*reader, behindCounted, &clip->partitions);
  return true;
}

// Reads the clip from its random index. False when there is none that fits the clip. Another random
// index behind the last partition shows that a second clip follows in the file.
bool ReadByRandomIndex(MapReader* reader, SourceClip* clip) {
  std::vector<std::uint64_t> offsets;
  std::uint64_t end = 0;
  if (!OffsetsFromRandomIndex(*reader, &offsets, &end)) return false;
  if (!ReadPartitions(reader, std::move(offsets), end, clip)) return false;
  KlvSpan behind;
  clip->hasRandomIndex =
      !ReadKlvSpan(reader->file, clip->partitions.back().essenceStart, end, &behind) ||
      !Is(behind, keys::kRandomIndexPack);
  return clip->hasRandomIndex;
}

}  // namespace

bool ReadSourceClip(const platform::File& file, std::uint64_t fileSize, SourceClip* clip,
                    Reason* reason) {
  MapReader byIndex{file, fileSize, reason};
  KlvSpan klv;
  PartitionPack pack;
  if (!ReadPack(file, 0, fileSize, &klv, &pack)) {
    return byIndex.Refuse(
        {"ファイルの先頭にパーティションパックがありません。MXFファイルではないか、先頭に余分なデー"
         "タがあります。",
         "no partition pack at the start of the file: no MXF clip, or one with a run-in"});
  }
  if (ReadByRandomIndex(&byIndex, clip)) return true;
  *clip = {};
  MapReader reader{file, fileSize, reason};
  std::vector<std::uint64_t> offsets;
  std::uint64_t end = 0;
  if (!OffsetsFromWalk(&reader, clip, &offsets, &end)) return false;
  if (offsets.empty()) {
    return reader.Refuse({"MXFファイルを読込めません。", "the clip cannot be read"});
  }
  return ReadPartitions(&reader, std::move(offsets), end, clip);
}

}  // namespace quorvan
