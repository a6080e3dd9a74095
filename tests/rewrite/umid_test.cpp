#include "rewrite/umid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "mxf/analysis.h"
#include "support/clip_builder.h"
#include "support/mxf_tags.h"
#include "support/temp_folder.h"

namespace quorvan {
namespace {

using namespace test;

TEST(Umid, ShowsAsUpperCaseHexadecimals) {
  Umid umid{0x06, 0x0A, 0x2B};
  char16_t text[kUmidTextChars];
  EXPECT_EQ(UmidToHexText(umid.data(), text), 0);
  EXPECT_EQ(std::u16string(text), u"060A2B" + std::u16string(58, u'0'));
  EXPECT_LT(UmidToHexText(nullptr, text), 0);
  EXPECT_LT(UmidToHexText(umid.data(), nullptr), 0);
}

class ClipIdentityTest : public ::testing::Test {
 protected:
  // Analyses a clip of these bytes and opens it for writing.
  void Open(const Bytes& bytes) {
    file_.Close();
    path_ = folder_.Write("clip.mxf", bytes);
    file_ = platform::File::Open(path_, platform::OpenMode::kReadAlone);
    ASSERT_EQ(AnalyzeMxfFile(&file_, &records_.base), 0);
    file_ = {};
    file_ = platform::File::Open(path_, platform::OpenMode::kRewrite);
  }

  UmidState Renew() {
    ClipIdentity identity(&file_, &records_.base);
    EXPECT_EQ(identity.Locate(), kNoFault);
    identity.Renew();
    return identity.ReadBack();
  }

  // Offsets of a UMID in the file.
  std::vector<std::uint64_t> Places(const Umid& umid) const {
    const Bytes bytes = ReadAll(path_);
    std::vector<std::uint64_t> places;
    for (auto at = bytes.begin();; ++at) {
      at = std::search(at, bytes.end(), umid.begin(), umid.end());
      if (at == bytes.end()) return places;
      places.push_back(static_cast<std::uint64_t>(at - bytes.begin()));
    }
  }

  TempFolder folder_;
  std::u16string path_;
  platform::File file_;
  MxfRecords records_;
};

// In every item of a set, to the last bytes that the pack's length and HeaderByteCount lead to, and
// nowhere else: not in the fill, and not in the essence.
TEST_F(ClipIdentityTest, ReplacesEveryReferenceInTheMetadataAndNothingElse) {
  ClipSpec spec;
  Clip clip = BuildClip(spec);
  const Bytes umid(kSourceUmid.begin(), kSourceUmid.end());
  // A set in the last KAG of the header metadata that refers to the package.
  const std::uint64_t end = clip.layout.partitions[0].essenceOffset;
  const std::uint64_t set = end - 20 - 4 - 32;
  Bytes klv = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01, 0x0D, 0x01,
               0x01, 0x01, 0x01, 0x01, 0x11, 0x00, 0x83, 0,    0,    36};
  klv.insert(klv.end(), {0x11, 0x01, 0x00, 0x20});
  klv.insert(klv.end(), umid.begin(), umid.end());
  // The fill in front of it gives way.
  const SetPlace& last = clip.layout.sets.back();
  const std::uint64_t fill = last.klv.value + last.klv.valueBytes;
  const std::uint64_t fillLength = set - fill - 20;
  Patch(clip.bytes, fill + 17,
        {static_cast<std::uint8_t>(fillLength >> 16), static_cast<std::uint8_t>(fillLength >> 8),
         static_cast<std::uint8_t>(fillLength)});
  Patch(clip.bytes, set, klv);
  Patch(clip.bytes, fill + 24, umid);  // in the fill: no item
  Patch(clip.bytes, clip.layout.frames[1].picture.value, umid);
  Open(clip.bytes);
  EXPECT_EQ(Renew(), kUmidsRenewed);
  std::vector<std::uint64_t> renewed = clip.layout.sourceUmids;
  renewed.push_back(set + 24);
  EXPECT_EQ(Places(records_.base.sourceUmid), renewed);
  EXPECT_EQ(Places(kSourceUmid),
            (std::vector<std::uint64_t>{fill + 24, clip.layout.frames[1].picture.value}));
  EXPECT_EQ(Places(records_.base.materialUmid), clip.layout.materialUmids);
}

// Far from any other clock, by more than an hour's minutes.
constexpr char kZone[] = "QZT-13:45";
constexpr std::time_t kSecondsAhead = (13 * 60 + 45) * 60;

Bytes StampInZone() {
  const std::time_t local = std::time(nullptr) + kSecondsAhead;
  const std::tm t = *std::gmtime(&local);
  Bytes stamp = Big16(static_cast<std::uint16_t>(t.tm_year + 1900));
  for (const int field : {t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, t.tm_wday})
    stamp.push_back(static_cast<std::uint8_t>(field));
  return stamp;
}

TEST_F(ClipIdentityTest, StampsBothPackagesWithTheLocalTime) {
  const Clip clip = BuildClip(ClipSpec());
  Open(clip.bytes);
  setenv("TZ", kZone, 1);
  tzset();
  const Bytes before = StampInZone();
  EXPECT_EQ(Renew(), kUmidsRenewed);
  const Bytes after = StampInZone();
  unsetenv("TZ");
  tzset();
  const Bytes now = ReadAll(path_);
  for (const SetKind kind : {SetKind::kMaterialPackage, SetKind::kSourcePackage}) {
    const auto at = now.begin() +
                    static_cast<long>(clip.layout.TagValueOffset(kind, tag::kPackageModifiedDate));
    const Bytes stamp(at, at + 8);
    EXPECT_TRUE(stamp == before || stamp == after);
  }
}

// The kind of material stays; behind it stands a UUID in the order of its text, by version and
// variant one of RFC 4122.
TEST_F(ClipIdentityTest, WritesAUuidInTheOrderOfItsText) {
  Clip clip = BuildClip(ClipSpec());
  Umid old = kSourceUmid;
  old[7] = 5;
  old[10] = 0x0D;
  for (const std::uint64_t place : clip.layout.sourceUmids)
    Patch(clip.bytes, place, {old.begin(), old.end()});
  Open(clip.bytes);
  Umid last = old;
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(Renew(), kUmidsRenewed);
    const Bytes bytes = ReadAll(path_);
    const auto at = bytes.begin() + static_cast<long>(clip.layout.sourceUmids[0]);
    const Bytes umid(at, at + kUmidBytes);
    EXPECT_EQ(Bytes(umid.begin(), umid.begin() + 16),
              (Bytes{6, 0x0A, 0x2B, 0x34, 1, 1, 1, 5, 1, 1, 0x0D, 0x20, 0x13, 0, 0, 0}));
    EXPECT_TRUE(umid[22] >> 4 == 4 || umid[22] >> 4 == 1) << int{umid[22]};
    EXPECT_EQ(umid[24] >> 6, 2);
    EXPECT_NE(records_.base.sourceUmid, records_.base.materialUmid);
    EXPECT_NE(records_.base.sourceUmid, std::exchange(last, records_.base.sourceUmid));
  }
}

TEST_F(ClipIdentityTest, KeepsWhatBothPackagesShare) {
  Clip clip = BuildClip(ClipSpec());
  for (const std::uint64_t place : clip.layout.sourceUmids)
    Patch(clip.bytes, place, {kMaterialUmid.begin(), kMaterialUmid.end()});
  Open(clip.bytes);
  EXPECT_EQ(Renew(), kUmidsRenewed);
  EXPECT_EQ(records_.base.materialUmid, records_.base.sourceUmid);
  EXPECT_EQ(Places(records_.base.sourceUmid).size(),
            clip.layout.materialUmids.size() + clip.layout.sourceUmids.size());
}

TEST_F(ClipIdentityTest, WritesNoStampWhereItDoesNotFit) {
  for (const bool removed : {false, true}) {
    ClipSpec spec;
    spec.SetTag(SetKind::kMaterialPackage, 0, tag::kPackageModifiedDate, Bytes(7, 1));
    spec.RemoveTag(SetKind::kSourcePackage, 0, tag::kPackageModifiedDate);
    if (removed) spec.RemoveTag(SetKind::kMaterialPackage, 0, tag::kPackageModifiedDate);
    const Clip clip = BuildClip(spec);
    Open(clip.bytes);
    EXPECT_EQ(Renew(), kUmidsRenewed);
    Bytes now = ReadAll(path_);
    for (const std::uint64_t place : clip.layout.materialUmids)
      Patch(now, place, {kMaterialUmid.begin(), kMaterialUmid.end()});
    for (const std::uint64_t place : clip.layout.sourceUmids)
      Patch(now, place, {kSourceUmid.begin(), kSourceUmid.end()});
    EXPECT_TRUE(now == clip.bytes);
  }
}

TEST_F(ClipIdentityTest, LeavesAHeaderAloneThatHasChangedMeanwhile) {
  Clip clip = BuildClip(ClipSpec());
  Open(clip.bytes);
  ClipIdentity identity(&file_, &records_.base);
  ASSERT_EQ(identity.Locate(), kNoFault);
  Patch(clip.bytes, clip.layout.sets.back().klv.value, {0xAA});
  folder_.Write("clip.mxf", clip.bytes);
  identity.Renew();
  EXPECT_EQ(identity.ReadBack(), kUmidsOld);
  EXPECT_TRUE(ReadAll(path_) == clip.bytes);
}

}  // namespace
}  // namespace quorvan
