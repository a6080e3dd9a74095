#include "rewrite/umid.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <span>

#include "mxf/klv.h"
#include "mxf/metadata_set.h"
#include "mxf/readers.h"
#include "platform/clock.h"
#include "platform/uuid.h"

namespace quorvan {
namespace {

using Umid = std::array<std::uint8_t, kUmidBytes>;

constexpr std::array<std::uint8_t, 4> kUmidPrefix = {0x06, 0x0A, 0x2B, 0x34};
constexpr std::uint8_t kNumberMethods = 0x20;
constexpr std::uint8_t kLengthBehind = 0x13;
constexpr std::size_t kMaterialNumberPlace = 16;

constexpr std::uint16_t kTagModifiedDate = 0x4404;
constexpr std::size_t kStampBytes = 8;

constexpr std::int32_t kBadArgumentOrWrite = -1;
constexpr std::int32_t kSetNotFound = 405;

constexpr std::size_t kSearchBlock = std::size_t{1} << 20;

std::array<std::uint8_t, kStampBytes> StampNow() {
  const platform::CalendarTime now = platform::LocalTimeNow();
  return {static_cast<std::uint8_t>(now.year >> 8),
          static_cast<std::uint8_t>(now.year & 0xFF),
          now.month,
          now.day,
          now.hour,
          now.minute,
          now.second,
          now.dayOfWeek};
}

// Where the header metadata ends at the latest: before the next partition and the first frame,
// whatever the header partition claims. UMID bytes in essence are no UMIDs.
std::uint64_t MetadataEnd(const MXF_BASE_INFO& mxf) {
  const MXF_PARTITION_INFO* table = mxf.partitionTable->get();
  std::uint64_t end = (*mxf.indexEntries)[0].fileOffset;
  for (std::uint32_t i = 1; i < table[0].partitionCount; ++i) {
    if (table[i].thisPartition > 0) end = std::min(end, table[i].thisPartition);
  }
  return end;
}

// True when `umid` stands anywhere below `end`.
bool HoldsBytes(const platform::File& file, std::span<const std::uint8_t> umid, std::uint64_t end) {
  const std::unique_ptr<std::uint8_t[]> block(new (std::nothrow) std::uint8_t[kSearchBlock]);
  if (block == nullptr) return false;
  for (std::uint64_t position = 0; position < end;) {
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(end - position, kSearchBlock));
    const std::size_t held = file.ReadAt(position, block.get(), wanted);
    const std::uint8_t* const blockEnd = block.get() + held;
    const std::uint8_t* const begin = block.get();
    if (std::search(begin, blockEnd, umid.begin(), umid.end()) != blockEnd) return true;
    if (held < kSearchBlock) return false;
    position += held - (umid.size() - 1);
  }
  return false;
}

// Replaces every `old` that starts in [0, limit) by `fresh`. How many there were; nothing when a
// write fails. Bytes that do not begin as a UMID are none.
std::optional<std::size_t> ReplaceAll(platform::File* file, const Umid& old, const Umid& fresh,
                                      std::uint64_t limit) {
  std::size_t replaced = 0;
  if (!std::equal(kUmidPrefix.begin(), kUmidPrefix.end(), old.begin())) return replaced;
  constexpr std::size_t overlap = kUmidBytes - 1;
  const std::unique_ptr<std::uint8_t[]> block(new (std::nothrow)
                                                  std::uint8_t[kSearchBlock + overlap]);
  if (block == nullptr) return std::nullopt;

  std::uint64_t position = 0;
  while (position < limit) {
    const auto starts =
        static_cast<std::size_t>(std::min<std::uint64_t>(limit - position, kSearchBlock));
    const std::size_t held = file->ReadAt(position, block.get(), starts + overlap);
    const std::uint8_t* const end = block.get() + held;
    const std::uint8_t* from = block.get();
    for (;;) {
      const std::uint8_t* hit = std::search(from, end, old.begin(), old.end());
      if (hit == end) break;
      const auto place = static_cast<std::uint64_t>(hit - block.get());
      if (!file->WriteAt(position + place, fresh.data(), fresh.size())) return std::nullopt;
      ++replaced;
      from = hit + fresh.size();
    }
    if (held < starts + overlap) break;
    position += std::max<std::uint64_t>(starts, static_cast<std::uint64_t>(from - block.get()));
  }
  return replaced;
}

// Overwrites the modification date of the set whose value the file pointer stands on.
bool StampSet(platform::File* file, std::uint64_t length) {
  const auto set = MetadataSet::Read(file, length);
  if (!set) return true;
  LocalItem item;
  for (LocalSetWalk walk(set->value()); walk.Next(&item);) {
    if (item.tag != kTagModifiedDate) continue;
    if (item.value.size() < kStampBytes) return true;
    const auto stamp = StampNow();
    return file->WriteAt(set->fileOffset() + walk.valueOffset(), stamp.data(), stamp.size());
  }
  return true;
}

}  // namespace

Umid MakeUmid(const Umid& old) {
  Umid umid{};
  std::copy(kUmidPrefix.begin(), kUmidPrefix.end(), umid.begin());
  umid[4] = umid[5] = umid[6] = 0x01;
  umid[7] = old[7];
  umid[8] = umid[9] = 0x01;
  umid[10] = old[10];
  umid[11] = kNumberMethods;
  umid[12] = kLengthBehind;
  if (const auto uuid = platform::NewUuid()) {
    std::copy(uuid->begin(), uuid->end(), umid.begin() + kMaterialNumberPlace);
  }
  return umid;
}

std::int32_t RegenerateUmid(platform::File* file, PackageKind kind, Umid* umid,
                            std::uint64_t limit) {
  if (file == nullptr || umid == nullptr) return kBadArgumentOrWrite;
  const Umid fresh = MakeUmid(*umid);
  const auto replaced = ReplaceAll(file, *umid, fresh, limit);
  if (!replaced) return kBadArgumentOrWrite;

  const KlvKey& key =
      kind == PackageKind::kMaterial ? keys::kMaterialPackage : keys::kSourcePackage;
  std::uint64_t length = 0;
  if (FindKlvKey(file, key, 0, limit, &length) == 0) return kSetNotFound;
  if (!StampSet(file, length)) return kBadArgumentOrWrite;
  if (*replaced > 0) *umid = fresh;
  return 0;
}

bool HoldsUmids(const platform::File& file, const MXF_BASE_INFO& mxf) {
  // A package set may reach behind the limit of its key, by no more than an item can.
  constexpr std::uint64_t reach = 0x10000;
  const std::uint64_t headerBytes = (*mxf.partitionTable)[0].headerByteCount;
  const std::uint64_t end = std::min(MetadataEnd(mxf), headerBytes + reach);
  const auto kept = [](const Umid& umid, std::uint32_t size) {
    return std::span<const std::uint8_t>(umid).first(std::min<std::size_t>(size, umid.size()));
  };
  return HoldsBytes(file, kept(mxf.materialUmid, mxf.materialUmidSize), end) &&
         HoldsBytes(file, kept(mxf.sourceUmid, mxf.sourceUmidSize), end);
}

bool RenewUmids(platform::File* file, MXF_BASE_INFO* mxf) {
  if (mxf->materialUmidSize != kUmidBytes || mxf->sourceUmidSize != kUmidBytes) return false;
  const std::uint64_t limit =
      std::min((*mxf->partitionTable)[0].headerByteCount, MetadataEnd(*mxf));
  const bool shared = mxf->materialUmid == mxf->sourceUmid;
  RegenerateUmid(file, PackageKind::kMaterial, &mxf->materialUmid, limit);
  // Where both packages have one UMID, it is replaced for both at once.
  if (shared) mxf->sourceUmid = mxf->materialUmid;
  RegenerateUmid(file, PackageKind::kSource, &mxf->sourceUmid, limit);
  RefreshMaterialPackage(file, mxf);  // the file is the truth from here on
  return true;
}

}  // namespace quorvan
