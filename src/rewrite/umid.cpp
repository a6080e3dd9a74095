#include "rewrite/umid.h"

#include <algorithm>

#include "mxf/package_uid.h"
#include "mxf/readers.h"
#include "platform/clock.h"
#include "platform/uuid.h"
#include "rewrite/metadata_gate.h"

namespace quorvan {
namespace {

constexpr std::array<std::uint8_t, 4> kUmidPrefix = {0x06, 0x0A, 0x2B, 0x34};
constexpr std::uint8_t kNumberMethods = 0x20;
constexpr std::uint8_t kLengthBehind = 0x13;
constexpr std::size_t kMaterialNumberPlace = 16;

constexpr std::uint16_t kTagModifiedDate = 0x4404;
constexpr std::size_t kStampBytes = 8;

constexpr std::int32_t kBadArgumentOrWrite = -1;

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

// A write that fails is tried once more: storage that only stumbled must not leave a package with
// two identities.
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

std::int32_t RegenerateUmid(platform::File* file, Umid* umid, std::span<const MetadataPlace> places,
                            const std::optional<MetadataPlace>& stamp) {
  if (file == nullptr || umid == nullptr) return kBadArgumentOrWrite;
  const bool isUmid = std::equal(kUmidPrefix.begin(), kUmidPrefix.end(), umid->begin());
  const Umid fresh = isUmid ? MakeUmid(*umid) : *umid;
  if (isUmid && !WriteEverywhere(file, places, fresh)) {
    WriteEverywhere(file, places, *umid);
    return kBadArgumentOrWrite;
  }
  *umid = fresh;
  if (!stamp || WriteWithPatience(file, *stamp, StampNow())) return 0;
  return kBadArgumentOrWrite;
}

bool ClipIdentity::CanBeRenewed(const MXF_BASE_INFO& mxf) {
  return mxf.materialUmidSize == kUmidBytes && mxf.sourceUmidSize == kUmidBytes;
}

JobFault ClipIdentity::Locate() {
  switch (header_.Read(clip_, mxf_)) {
    case HeaderState::kRead:
      break;
    case HeaderState::kNone:
      return kClipChanged;
    case HeaderState::kFault:
      return kClipFault;
  }
  const JobFault material =
      LocatePackage(mxf_.materialPackageSet, mxf_.materialUmid, mxf_.materialUmidSize, &material_);
  if (material != kNoFault) return material;
  return LocatePackage(mxf_.sourcePackageSet, mxf_.sourceUmid, mxf_.sourceUmidSize, &source_);
}

JobFault ClipIdentity::LocatePackage(const METADATA_SET_PLACE& set, const Umid& umid,
                                     std::uint32_t size, Package* package) {
  if (size == 0) return kNoFault;  // a package without a UMID has none that could differ
  const std::size_t known = std::min<std::size_t>(size, kUmidBytes);
  package->old = umid;
  package->own = header_.FindItem(set, kTagPackageUid, known);
  package->stamp = header_.FindItem(set, kTagModifiedDate, kStampBytes);
  package->places.clear();
  header_.FindInItems(std::span(umid).first(known), &package->places);
  // The package's own UMID is found in both ways, in the clip that was analysed.
  const auto end = package->places.end();
  const bool found = package->own && std::find(package->places.begin(), end, *package->own) != end;
  return found ? kNoFault : kClipChanged;
}

void ClipIdentity::Renew() {
  // Where both packages have one UMID, it is replaced for both at once.
  const bool shared = material_.old == source_.old;
  Umid material = material_.old;
  Umid source = source_.old;
  const std::span<const MetadataPlace> sourcePlaces =
      shared ? std::span<const MetadataPlace>() : source_.places;
  const bool materialWritten =
      RegenerateUmid(&clip_, &material, material_.places, material_.stamp) == 0;
  const bool sourceWritten = RegenerateUmid(&clip_, &source, sourcePlaces, source_.stamp) == 0;
  written_ = materialWritten && sourceWritten;
}

// What the places of a package hold: its old UMID throughout, another one throughout, or neither.
UmidState ClipIdentity::StateOf(const Package& package) const {
  const auto now = header_.At(*package.own);
  std::size_t old = 0;
  bool alike = true;
  for (const MetadataPlace& place : package.places) {
    const auto held = header_.At(place);
    if (std::equal(held.begin(), held.end(), package.old.begin())) ++old;
    alike = alike && std::equal(held.begin(), held.end(), now.begin());
  }
  if (old == package.places.size()) return kUmidsOld;
  return old == 0 && alike ? kUmidsRenewed : kUmidsMixed;
}

UmidState ClipIdentity::ReadBack() {
  if (header_.Read(clip_, mxf_) != HeaderState::kRead) return kUmidsUnknown;
  RefreshMaterialPackage(header_.SetAt(mxf_.materialPackageSet), &mxf_);
  const auto source = header_.At(*source_.own);
  std::copy(source.begin(), source.end(), mxf_.sourceUmid.begin());
  const UmidState material = StateOf(material_);
  if (material != StateOf(source_)) return kUmidsMixed;
  return material == kUmidsRenewed && !written_ ? kUmidsUndated : material;
}

}  // namespace quorvan
