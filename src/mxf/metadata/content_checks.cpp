#include "mxf/analysis.h"
#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/metadata_set.h"
#include "mxf/metadata/readers.h"

namespace quorvan {
namespace {

constexpr int kContentStorageTags = 2;

constexpr int kEssenceDataTags = 3;

constexpr std::uint32_t kOp1aPackages = 2;
constexpr std::uint32_t kReferenceBytes = 16;

// Reads the first set with `key`. Nothing when no set with `key` starts in [startOffset,
// limitOffset), both file offsets in bytes, or when MetadataSet::Read refuses it as too long.
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
    if (item.tag == tags::kPackages) {
      if (!BatchPasses(item.value)) return kPackagesUnfit;
      ++found;
    } else if (item.tag == tags::kEssenceContainerData) {
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
    if (item.tag == tags::kIndexSid &&
        (item.value.size() < 4 || ReadBe32(item.value.data()) == 0)) {
      return kIndexSidZero;
    }
    if (item.tag == tags::kLinkedPackageUid || item.tag == tags::kIndexSid ||
        item.tag == tags::kBodySid) {
      ++found;
    }
  }
  return found == kEssenceDataTags ? kSuccess : kEssenceDataTagsMissing;
}

}  // namespace quorvan
