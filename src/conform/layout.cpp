#include "conform/layout.h"

#include <algorithm>

namespace quorvan {
namespace {

constexpr std::uint64_t kUsualKag = 512;
constexpr std::uint64_t kLargestKag = 1 << 20;  // SMPTE 377

std::uint64_t PackBytes(const SourcePartition& partition) {
  const std::uint64_t value = partition.pack.value.size();
  return WrittenHeaderBytes(value) + value;
}

// True when a pack and a fill, or the pack alone, make exactly one KAG.
bool FillsOneKag(std::uint64_t packBytes, std::uint64_t kag) {
  return RoundedWithFill(packBytes, kag) == kag;
}

std::uint32_t ChooseKag(const std::vector<SourcePartition>& map) {
  const std::uint32_t stated = map.front().pack.U32(pack_field::kKagSize);
  const auto fits = [&map](std::uint64_t kag) {
    return std::all_of(map.begin(), map.end(), [kag](const SourcePartition& partition) {
      return FillsOneKag(PackBytes(partition), kag);
    });
  };
  if (stated != 0 && stated <= kLargestKag && fits(stated)) return stated;
  std::uint64_t kag = kUsualKag;
  while (!fits(kag))
    kag += kUsualKag;
  return static_cast<std::uint32_t>(kag);
}

std::uint64_t HeaderBytes(const std::vector<KlvSpan>& sets, std::uint64_t kag) {
  if (sets.empty()) return 0;
  return RoundedWithFill(WrittenBytes(sets) + std::max(kRoomBehindSets, kag), kag);
}

std::uint64_t RandomIndexValueBytes(std::size_t partitions) {
  return kRandomIndexEntryBytes * partitions + kOverallLengthBytes;
}

void AppendBe(std::uint64_t value, int bytes, std::vector<std::uint8_t>* out) {
  for (int i = bytes - 1; i >= 0; --i)
    out->push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

}  // namespace

std::uint64_t WrittenBytes(const std::vector<KlvSpan>& klvs) {
  std::uint64_t bytes = 0;
  for (const KlvSpan& klv : klvs)
    bytes += WrittenHeaderBytes(klv.length) + klv.length;
  return bytes;
}

ConformLayout LayOutClip(const std::vector<SourcePartition>& map) {
  ConformLayout layout{};
  layout.kagSize = ChooseKag(map);
  std::uint64_t at = 0;
  for (const SourcePartition& source : map) {
    TargetPartition target{};
    target.offset = at;
    target.headerByteCount = HeaderBytes(source.metadata, layout.kagSize);
    target.indexByteCount = RoundedWithFill(WrittenBytes(source.indexSegments), layout.kagSize);
    target.essenceBytes = source.end - source.essenceStart;
    at += layout.kagSize + target.headerByteCount + target.indexByteCount + target.essenceBytes;
    layout.partitions.push_back(target);
  }
  layout.randomIndexOffset = at;
  const std::uint64_t value = RandomIndexValueBytes(map.size());
  layout.fileSize = at + WrittenHeaderBytes(value) + value;
  return layout;
}

std::vector<std::uint8_t> WritePack(const std::vector<SourcePartition>& map,
                                    const ConformLayout& layout, std::size_t index) {
  const TargetPartition& target = layout.partitions[index];
  PartitionPack pack = map[index].pack;
  std::uint8_t* value = pack.value.data();
  PutBe32(value + pack_field::kKagSize, layout.kagSize);
  PutBe64(value + pack_field::kThisPartition, target.offset);
  PutBe64(value + pack_field::kPreviousPartition,
          index == 0 ? 0 : layout.partitions[index - 1].offset);
  PutBe64(value + pack_field::kFooterPartition, layout.partitions.back().offset);
  PutBe64(value + pack_field::kHeaderByteCount, target.headerByteCount);
  PutBe64(value + pack_field::kIndexByteCount, target.indexByteCount);
  std::vector<std::uint8_t> bytes;
  AppendKlvHeader(pack.key, pack.value.size(), &bytes);
  bytes.insert(bytes.end(), pack.value.begin(), pack.value.end());
  AppendFill(layout.kagSize - bytes.size(), &bytes);
  return bytes;
}

std::vector<std::uint8_t> WriteRandomIndex(const std::vector<SourcePartition>& map,
                                           const ConformLayout& layout) {
  std::vector<std::uint8_t> bytes;
  AppendKlvHeader(keys::kRandomIndexPack, RandomIndexValueBytes(map.size()), &bytes);
  for (std::size_t i = 0; i < map.size(); ++i) {
    AppendBe(map[i].pack.U32(pack_field::kBodySid), 4, &bytes);
    AppendBe(layout.partitions[i].offset, 8, &bytes);
  }
  AppendBe(bytes.size() + kOverallLengthBytes, 4, &bytes);
  return bytes;
}

}  // namespace quorvan
