#include "mxf/analysis.h"
#include "mxf/metadata_set.h"
#include "mxf/readers.h"

namespace quorvan {
namespace {

constexpr std::uint16_t kTagPackages = 0x1901;
constexpr std::uint16_t kTagEssenceContainerData = 0x1902;
constexpr int kContentStorageTags = 2;

constexpr std::uint16_t kTagLinkedPackageUid = 0x2701;
constexpr std::uint16_t kTagIndexSid = 0x3F06;
constexpr std::uint16_t kTagBodySid = 0x3F07;
constexpr int kEssenceDataTags = 3;

constexpr std::uint32_t kOp1aPackages = 2;
constexpr std::uint32_t kReferenceBytes = 16;

// The set with `key`, or nothing when it is not in [startOffset, limitOffset).
std::optional<MetadataSet> FindSet(platform::File* file, const KlvKey& key,
                                   std::uint64_t startOffset, std::uint64_t limitOffset) {
  std::uint64_t length = 0;
  if (FindKlvKey(file, key, startOffset, limitOffset, &length) == 0) return std::nullopt;
  return MetadataSet::Read(file, length);
}

bool BatchPasses(std::span<const std::uint8_t> value) {
  const BatchHeader batch = ReadBatchHeader(value);
  return batch.count == kOp1aPackages || batch.itemSize == kReferenceBytes;
}

}  // namespace

std::int32_t CheckContentStorage(platform::File* file, std::uint64_t startOffset,
                                 std::uint64_t limitOffset) {
  if (!IsUsable(file)) return kContentStorageNoFile;
  const auto set = FindSet(file, keys::kContentStorage, startOffset, limitOffset);
  if (!set) return kContentStorageNotFound;

  int found = 0;
  LocalItem item;
  for (LocalSetWalk walk(set->value()); walk.Next(&item);) {
    if (item.tag == kTagPackages) {
      if (!BatchPasses(item.value)) return kPackagesUnfit;
      ++found;
    } else if (item.tag == kTagEssenceContainerData) {
      if (!BatchPasses(item.value)) return kContentStorageTagsMissing;
      ++found;
    }
  }
  return found == kContentStorageTags ? kSuccess : kContentStorageTagsMissing;
}

std::int32_t CheckEssenceContainerData(platform::File* file, std::uint64_t startOffset,
                                       std::uint64_t limitOffset) {
  if (!IsUsable(file)) return kEssenceDataNoFile;
  const auto set = FindSet(file, keys::kEssenceContainerData, startOffset, limitOffset);
  if (!set) return kEssenceDataNotFound;

  int found = 0;
  LocalItem item;
  for (LocalSetWalk walk(set->value()); walk.Next(&item);) {
    if (item.tag == kTagIndexSid && (item.value.size() < 4 || ReadBe32(item.value.data()) == 0)) {
      return kIndexSidZero;
    }
    if (item.tag == kTagLinkedPackageUid || item.tag == kTagIndexSid || item.tag == kTagBodySid) {
      ++found;
    }
  }
  return found == kEssenceDataTags ? kSuccess : kEssenceDataTagsMissing;
}

}  // namespace quorvan
