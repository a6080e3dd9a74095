#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "mxf/analysis.h"
#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/metadata_set.h"
#include "mxf/metadata/readers.h"

namespace quorvan {
namespace {

constexpr std::size_t kQualifierByte = 14;  // in the label of the operational pattern
constexpr std::uint8_t kOp1aQualifier = 0x09;

// Labels of the frame-wrapped essence containers that are accepted (SMPTE 381).
constexpr std::array<KlvKey, 3> kFrameWrapped = {{
    {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01, 0x0D, 0x01, 0x03, 0x01, 0x02, 0x04, 0x60,
     0x01},
    {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x02, 0x0D, 0x01, 0x03, 0x01, 0x02, 0x04, 0x60,
     0x01},
    {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x0A, 0x0D, 0x01, 0x03, 0x01, 0x02, 0x10, 0x60,
     0x01},
}};

bool HoldsFrameWrappedLabel(std::span<const std::uint8_t> batch) {
  const std::uint32_t count = ReadBatchHeader(batch).count;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint8_t* label = LabelAt(batch, kBatchHeaderBytes, 16, i);
    if (label == nullptr) return false;
    const bool known =
        std::any_of(kFrameWrapped.begin(), kFrameWrapped.end(),
                    [&](const KlvKey& k) { return std::memcmp(label, k.data(), k.size()) == 0; });
    if (known) return true;
  }
  return false;
}

std::int32_t CheckPrefaceItem(const LocalItem& item, MXF_BASE_INFO* mxf) {
  switch (item.tag) {
    case tags::kOperationalPattern:
      if (item.value.size() <= kQualifierByte || item.value[kQualifierByte] != kOp1aQualifier) {
        return kNotOp1a;
      }
      return kSuccess;
    case tags::kEssenceContainers:
      return HoldsFrameWrappedLabel(item.value) ? kSuccess : kNotFrameWrapped;
    case tags::kVersion:
      if (item.value.size() < 2) return kPrefaceVersion;
      mxf->versionMajor = item.value[0];
      mxf->versionMinor = item.value[1];
      return mxf->versionMajor > 1 && mxf->versionMinor > 3 ? kPrefaceVersion : kSuccess;
    default:
      return kSuccess;
  }
}

}  // namespace

std::int32_t ReadPrefaceSet(platform::File* file, MXF_BASE_INFO* mxf) {
  if (!IsUsable(file)) return kPrefaceNoFile;
  if (mxf == nullptr) return kPrefaceNoBaseInfo;
  if (mxf->partitionTable == nullptr || *mxf->partitionTable == nullptr) return kPrefaceNoCell;

  std::uint64_t length = 0;
  const std::uint64_t limit = (*mxf->partitionTable)[0].essenceBase;
  if (FindKlvKey(file, keys::kPreface, 0, limit, &length) == 0) return kPrefaceNotFound;
  std::optional<MetadataSet> set;
  try {
    set = MetadataSet::Read(file, length);
  } catch (const std::bad_alloc&) {
    return kPrefaceNoMemory;
  }
  if (!set) return kPrefaceNoMemory;

  LocalItem item;
  for (LocalSetWalk walk(set->value()); walk.Next(&item);) {
    if (const std::int32_t refused = CheckPrefaceItem(item, mxf)) return refused;
  }
  return kSuccess;
}

}  // namespace quorvan
