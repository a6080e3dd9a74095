#include "rewrite/umid.h"

#include <algorithm>
#include <ranges>

#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/package_uid.h"
#include "mxf/metadata/readers.h"
#include "platform/clock.h"
#include "platform/uuid.h"
#include "rewrite/write_gates.h"

namespace quorvan {
namespace {

constexpr std::array<std::uint8_t, 4> kUmidPrefix = {0x06, 0x0A, 0x2B, 0x34};
constexpr std::uint8_t kNumberMethods = 0x20;
constexpr std::uint8_t kLengthBehind = 0x13;
constexpr std::size_t kMaterialNumberPlace = 16;

constexpr std::int32_t kBadArgumentOrWrite = -1;

// Largest number of places that may hold the UMID of one package; no real clip comes near this
// number.
constexpr std::size_t kMostReferences = std::size_t{1} << 16;

bool IsUmid(const Umid& umid) {
  return std::equal(kUmidPrefix.begin(), kUmidPrefix.end(), umid.begin());
}

PackageStamp StampNow() {
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

namespace {

// Writes `bytes` to `place`, and tries a second time when the first write fails: a passing fault of
// the storage must not leave a package with two UMIDs.
bool WriteWithPatience(platform::File* file, const MetadataPlace& place,
                       std::span<const std::uint8_t> bytes) {
  return WriteMetadata(file, place, bytes) || WriteMetadata(file, place, bytes);
}

bool WriteEverywhere(platform::File* file, std::span<const MetadataPlace> places,
                     const Umid& umid) {
  bool written = true;
  for (const MetadataPlace& place : places)
    written = WriteWithPatience(file, place, umid) && written;
  return written;
}

}  // namespace

std::int32_t RegenerateUmid(platform::File* file, Umid* umid,
                            std::span<const MetadataPlace> references, const MetadataPlace& own,
                            const std::optional<MetadataPlace>& stampPlace,
                            const PackageStamp& stamp) {
  if (file == nullptr || umid == nullptr) return kBadArgumentOrWrite;
  const bool isUmid = IsUmid(*umid);
  const Umid fresh = isUmid ? MakeUmid(*umid) : *umid;
  if (isUmid) {
    const bool written = WriteEverywhere(file, references, fresh);
    if (!written || !WriteWithPatience(file, own, fresh)) {
      WriteEverywhere(file, references, *umid);
      WriteWithPatience(file, own, *umid);
      return kBadArgumentOrWrite;
    }
  }
  *umid = fresh;
  if (!stampPlace || WriteWithPatience(file, *stampPlace, stamp)) return 0;
  return kBadArgumentOrWrite;
}

bool HasExtendedUmid(const MXF_BASE_INFO& mxf) {
  return mxf.materialUmidSize == kExtendedUmidBytes || mxf.sourceUmidSize == kExtendedUmidBytes;
}

JobFault ClipIdentity::Locate() {
  const auto isKnown = [](std::uint32_t bytes) {
    return bytes == kUmidBytes || bytes == kExtendedUmidBytes;
  };
  if (!isKnown(mxf_.materialUmidSize) || !isKnown(mxf_.sourceUmidSize)) return kHeaderUnfit;
  for (HeaderBlock* block : {&wanted_, &now_}) {
    const HeaderState state = block->Read(clip_, mxf_);
    if (state == HeaderState::kFault) return kClipFault;
    if (state == HeaderState::kNone) return kHeaderUnfit;
  }
  const JobFault fault = LocatePackage(mxf_.materialPackageSet, mxf_.materialUmid, &material_);
  if (fault != kNoFault) return fault;
  return LocatePackage(mxf_.sourcePackageSet, mxf_.sourceUmid, &source_);
}

JobFault ClipIdentity::LocatePackage(const METADATA_SET_PLACE& set, const Umid& umid,
                                     Package* package) {
  package->old = package->fresh = umid;
  package->stampPlace = wanted_.FindItem(set, tags::kModifiedDate, std::tuple_size_v<PackageStamp>);
  std::vector<MetadataPlace>& places = package->references;
  places.clear();
  wanted_.FindInItems(umid, &places);
  if (places.size() > kMostReferences) return kHeaderUnfit;
  // The first place within the package's own set is its PackageUID.
  const auto own = std::find_if(places.begin(), places.end(), [&](const MetadataPlace& place) {
    return place.fileOffset() >= set.fileOffset && place.fileOffset() - set.fileOffset < set.bytes;
  });
  if (own == places.end()) {
    return wanted_.FindItem(set, tags::kPackageUid, kUmidBytes) ? kClipChanged : kHeaderUnfit;
  }
  package->own = *own;
  places.erase(own);
  return kNoFault;
}

void ClipIdentity::Renew() {
  if (now_.Read(clip_, mxf_) != HeaderState::kRead) return;
  if (!std::ranges::equal(now_.Bytes(), wanted_.Bytes())) return;
  // When both packages have the same UMID, the new UMID replaces it in both at once.
  const bool shared = material_.old == source_.old;
  stamp_ = StampNow();
  RegenerateUmid(&clip_, &material_.fresh, material_.references, *material_.own,
                 material_.stampPlace, stamp_);
  if (shared) {
    source_.fresh = material_.fresh;
    if (source_.stampPlace) WriteWithPatience(&clip_, *source_.stampPlace, stamp_);
  } else {
    RegenerateUmid(&clip_, &source_.fresh, source_.references, *source_.own, source_.stampPlace,
                   stamp_);
  }
  Expect(material_);
  Expect(source_);
}

void ClipIdentity::Expect(const Package& package) {
  for (const MetadataPlace& place : package.references)
    wanted_.Put(place, package.fresh);
  wanted_.Put(*package.own, package.fresh);
  if (package.stampPlace) wanted_.Put(*package.stampPlace, stamp_);
}

bool ClipIdentity::HoldsThroughout(const Package& package, const Umid& umid) const {
  const auto holds = [&](const MetadataPlace& place) {
    return std::ranges::equal(now_.At(place), umid);
  };
  return holds(*package.own) && std::ranges::all_of(package.references, holds);
}

// True when the header metadata as it was read last equals `wanted_`. With `stamped` false, the
// stamps are not compared.
bool ClipIdentity::IsAsExpected(bool stamped) {
  if (!stamped) {
    for (const Package* package : {&material_, &source_}) {
      if (package->stampPlace) wanted_.Put(*package->stampPlace, now_.At(*package->stampPlace));
    }
  }
  return std::ranges::equal(now_.Bytes(), wanted_.Bytes());
}

UmidState ClipIdentity::ReadBack() {
  if (now_.Read(clip_, mxf_) != HeaderState::kRead) {
    mxf_.materialUmid = material_.fresh;
    mxf_.sourceUmid = source_.fresh;
    return kUmidsUnknown;
  }
  RefreshMaterialPackage(now_.SetAt(mxf_.materialPackageSet), &mxf_);
  std::ranges::copy(now_.At(*source_.own), mxf_.sourceUmid.begin());

  const auto isOld = [&](const Package& p) { return HoldsThroughout(p, p.old); };
  if (isOld(material_) && isOld(source_)) return kUmidsOld;
  const bool bothRenewed = material_.fresh != material_.old && source_.fresh != source_.old;
  if (bothRenewed && IsAsExpected(true)) return kUmidsRenewed;
  return bothRenewed && IsAsExpected(false) ? kUmidsUndated : kUmidsMixed;
}

}  // namespace quorvan
