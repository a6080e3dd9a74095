#include "rewrite/umid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "support/loaded_clip.h"
#include "support/mxf_tags.h"

namespace quorvan {
namespace {

using namespace test;

struct IdentifiedClip : LoadedClip {
  explicit IdentifiedClip(const ClipSpec& description = {}) : LoadedClip(description) {}

  // Takes other bytes for the clip's own, as if it had been loaded with them.
  void Become(const Bytes& bytes) {
    clip.bytes = bytes;
    folder.Write("clip.mxf", bytes);
    Load();
  }

  UmidState Renew() {
    platform::File file = platform::File::Open(path, platform::OpenMode::kRewrite);
    ClipIdentity identity(&file, &app.mxf.base);
    EXPECT_EQ(identity.Locate(), kNoFault);
    identity.Renew();
    return identity.ReadBack();
  }

  // Offsets of a UMID in the file.
  std::vector<std::uint64_t> Places(const Umid& umid) const {
    const Bytes bytes = Now();
    std::vector<std::uint64_t> places;
    for (auto at = bytes.begin();; ++at) {
      at = std::search(at, bytes.end(), umid.begin(), umid.end());
      if (at == bytes.end()) return places;
      places.push_back(static_cast<std::uint64_t>(at - bytes.begin()));
    }
  }
};

// The bytes of the clip with another UMID for its Source Package.
Bytes WithSourceUmid(const Clip& clip, const Umid& umid) {
  Bytes bytes = clip.bytes;
  for (const std::uint64_t place : clip.layout.sourceUmids)
    Patch(bytes, place, {umid.begin(), umid.end()});
  return bytes;
}

// In every item of a set, to the last bytes that the pack's length and HeaderByteCount lead to, and
// nowhere else: not in the fill, and not in the essence.
TEST(ClipIdentity, ReplacesEveryReferenceInTheMetadataAndNothingElse) {
  IdentifiedClip clip;
  const ClipLayout& layout = clip.clip.layout;
  const Bytes umid(kSourceUmid.begin(), kSourceUmid.end());
  // A set in the last KAG of the header metadata that refers to the package; the fill in front of
  // it gives way.
  const std::uint64_t set = layout.partitions[0].essenceOffset - 20 - 4 - 32;
  const KlvPlace& last = layout.sets.back().klv;
  const std::uint64_t fill = last.value + last.valueBytes;
  const std::uint64_t picture = layout.frames[1].picture.value;
  Bytes bytes = clip.clip.bytes;
  Patch(bytes, fill + 16, Big32(static_cast<std::uint32_t>(0x83000000 | (set - fill - 20))));
  Patch(bytes, set, {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01, 0x0D, 0x01, 0x01, 0x01,
                     0x01, 0x01, 0x11, 0x00, 0x83, 0,    0,    36,   0x11, 0x01, 0x00, 0x20});
  for (const std::uint64_t place : {set + 24, fill + 24, picture})
    Patch(bytes, place, umid);
  clip.Become(bytes);
  EXPECT_EQ(clip.Renew(), kUmidsRenewed);
  std::vector<std::uint64_t> renewed = layout.sourceUmids;
  renewed.push_back(set + 24);
  EXPECT_EQ(clip.Places(clip.app.mxf.base.sourceUmid), renewed);
  EXPECT_EQ(clip.Places(kSourceUmid), (std::vector<std::uint64_t>{fill + 24, picture}));
  EXPECT_EQ(clip.Places(clip.app.mxf.base.materialUmid), layout.materialUmids);
}

// Far from any other clock, by more than an hour's minutes.
constexpr char kZone[] = "QZT-13:45";

#ifdef _WIN32
// The zone of the system cannot be changed by a program.
void SetZone(const char*) {}
#else
void SetZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}
#endif

Bytes StampInZone() {
  const std::time_t now = std::time(nullptr);
  const std::tm t = *std::localtime(&now);
  Bytes stamp = Big16(static_cast<std::uint16_t>(t.tm_year + 1900));
  for (const int field : {t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, t.tm_wday})
    stamp.push_back(static_cast<std::uint8_t>(field));
  return stamp;
}

TEST(ClipIdentity, StampsBothPackagesWithTheLocalTime) {
  IdentifiedClip clip;
  SetZone(kZone);
  const Bytes before = StampInZone();
  EXPECT_EQ(clip.Renew(), kUmidsRenewed);
  const Bytes after = StampInZone();
  SetZone("");
  const Bytes now = clip.Now();
  for (const SetKind kind : {SetKind::kMaterialPackage, SetKind::kSourcePackage}) {
    const std::uint64_t place = clip.clip.layout.TagValueOffset(kind, tag::kPackageModifiedDate);
    const auto at = now.begin() + static_cast<long>(place);
    const Bytes stamp(at, at + 8);
    EXPECT_TRUE(stamp == before || stamp == after);
  }
}

// The kind of material stays; behind it stands a UUID in the order of its text, by version and
// variant one of RFC 4122.
TEST(ClipIdentity, WritesAUuidInTheOrderOfItsText) {
  IdentifiedClip clip;
  Umid last = kSourceUmid;
  last[7] = 5;
  last[10] = 0x0D;
  clip.Become(WithSourceUmid(clip.clip, last));
  const MXF_BASE_INFO& mxf = clip.app.mxf.base;
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(clip.Renew(), kUmidsRenewed);
    const Bytes bytes = clip.Now();
    const auto at = bytes.begin() + static_cast<long>(clip.clip.layout.sourceUmids[0]);
    const Bytes umid(at, at + kUmidBytes);
    EXPECT_EQ(Bytes(umid.begin(), umid.begin() + 16),
              (Bytes{6, 0x0A, 0x2B, 0x34, 1, 1, 1, 5, 1, 1, 0x0D, 0x20, 0x13, 0, 0, 0}));
    EXPECT_TRUE(umid[22] >> 4 == 4 || umid[22] >> 4 == 1) << int{umid[22]};
    EXPECT_EQ(umid[24] >> 6, 2);
    EXPECT_NE(mxf.sourceUmid, mxf.materialUmid);
    EXPECT_NE(mxf.sourceUmid, std::exchange(last, mxf.sourceUmid));
  }
}

TEST(ClipIdentity, KeepsWhatBothPackagesShare) {
  IdentifiedClip clip;
  clip.Become(WithSourceUmid(clip.clip, kMaterialUmid));
  EXPECT_EQ(clip.Renew(), kUmidsRenewed);
  EXPECT_EQ(clip.app.mxf.base.materialUmid, clip.app.mxf.base.sourceUmid);
  EXPECT_EQ(clip.Places(clip.app.mxf.base.sourceUmid).size(),
            clip.clip.layout.materialUmids.size() + clip.clip.layout.sourceUmids.size());
}

TEST(ClipIdentity, WritesNoStampWhereItDoesNotFit) {
  ClipSpec spec;
  spec.SetTag(SetKind::kMaterialPackage, 0, tag::kPackageModifiedDate, Bytes(7, 1));
  spec.RemoveTag(SetKind::kSourcePackage, 0, tag::kPackageModifiedDate);
  IdentifiedClip clip(spec);
  EXPECT_EQ(clip.Renew(), kUmidsRenewed);
  Bytes now = clip.Now();
  for (const std::uint64_t place : clip.clip.layout.materialUmids)
    Patch(now, place, {kMaterialUmid.begin(), kMaterialUmid.end()});
  for (const std::uint64_t place : clip.clip.layout.sourceUmids)
    Patch(now, place, {kSourceUmid.begin(), kSourceUmid.end()});
  EXPECT_TRUE(now == clip.clip.bytes);
}

TEST(ClipIdentity, LeavesAHeaderAloneThatHasChangedMeanwhile) {
  IdentifiedClip clip;
  platform::File file = platform::File::Open(clip.path, platform::OpenMode::kRewrite);
  ClipIdentity identity(&file, &clip.app.mxf.base);
  ASSERT_EQ(identity.Locate(), kNoFault);
  Patch(clip.clip.bytes, clip.clip.layout.sets.back().klv.value, {0xAA});
  ASSERT_TRUE(file.WriteAt(0, clip.clip.bytes.data(), clip.clip.bytes.size()));
  identity.Renew();
  EXPECT_EQ(identity.ReadBack(), kUmidsOld);
  file.Close();
  EXPECT_TRUE(clip.Now() == clip.clip.bytes);
}

}  // namespace
}  // namespace quorvan
