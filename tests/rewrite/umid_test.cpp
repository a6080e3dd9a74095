#include "rewrite/umid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "mxf/analysis.h"
#include "platform/clock.h"
#include "support/clip_builder.h"
#include "support/mxf_tags.h"
#include "support/temp_folder.h"

namespace quorvan {
namespace {

using namespace test;
using Umid = std::array<std::uint8_t, kUmidBytes>;

TEST(Umid, KeepsWhatKindOfMaterialItNames) {
  Umid old{};
  old[7] = 5;
  old[10] = 0x0D;
  const Umid fresh = MakeUmid(old);
  const Bytes head(fresh.begin(), fresh.begin() + 16);
  EXPECT_EQ(head, (Bytes{6, 0x0A, 0x2B, 0x34, 1, 1, 1, 5, 1, 1, 0x0D, 0x20, 0x13, 0, 0, 0}));
  std::set<Umid> all;
  for (int i = 0; i < 100; ++i)
    all.insert(MakeUmid(old));
  EXPECT_EQ(all.size(), 100u);
}

TEST(Umid, ShowsAsUpperCaseHexadecimals) {
  Umid umid{0x06, 0x0A, 0x2B};
  char16_t text[kUmidTextChars];
  EXPECT_EQ(UmidToHexText(umid.data(), text), 0);
  EXPECT_EQ(std::u16string(text), u"060A2B" + std::u16string(58, u'0'));
  EXPECT_LT(UmidToHexText(nullptr, text), 0);
  EXPECT_LT(UmidToHexText(umid.data(), nullptr), 0);
}

class RegenerateUmidTest : public ::testing::Test {
 protected:
  void Open(const Bytes& bytes) {
    file_.Close();
    path_ = folder_.Write("clip.mxf", bytes);
    file_ = platform::File::Open(path_, platform::OpenMode::kRewrite);
  }
  // Offsets of a UMID in the file.
  std::vector<std::size_t> Places(const Umid& umid) const {
    const Bytes bytes = ReadAll(path_);
    std::vector<std::size_t> places;
    for (auto at = bytes.begin();; ++at) {
      at = std::search(at, bytes.end(), umid.begin(), umid.end());
      if (at == bytes.end()) return places;
      places.push_back(static_cast<std::size_t>(at - bytes.begin()));
    }
  }

  TempFolder folder_;
  std::u16string path_;
  platform::File file_;
};

TEST_F(RegenerateUmidTest, ReplacesEveryPlaceThatStartsBelowTheLimit) {
  constexpr std::size_t block = std::size_t{1} << 20;
  const std::size_t places[] = {0, 40, 72, block - 16, block + 20, 2 * block - 1, 2 * block + 31};
  Bytes bytes(2 * block + 100);
  for (const std::size_t place : places)
    Patch(bytes, place, {kMaterialUmid.begin(), kMaterialUmid.end()});
  Open(bytes);
  Umid umid = kMaterialUmid;
  EXPECT_EQ(RegenerateUmid(&file_, PackageKind::kMaterial, &umid, 2 * block), 405);
  EXPECT_EQ(umid, kMaterialUmid) << "kept when the set is missing";
  EXPECT_EQ(Places(kMaterialUmid), (std::vector<std::size_t>{2 * block + 31}));
  const Bytes now = ReadAll(path_);
  std::copy_n(now.begin() + 40, kUmidBytes, umid.begin());
  EXPECT_EQ(Places(umid), (std::vector<std::size_t>(std::begin(places), std::end(places) - 1)));
}

TEST_F(RegenerateUmidTest, StampsItsPackageWithTheLocalTime) {
  const Clip clip = BuildClip(ClipSpec());
  Open(clip.bytes);
  Umid umid = kSourceUmid;
  const platform::CalendarTime before = platform::LocalTimeNow();
  ASSERT_EQ(RegenerateUmid(&file_, PackageKind::kSource, &umid, clip.layout.headerByteCount), 0);
  const Bytes now = ReadAll(path_);
  const std::uint64_t stamp =
      clip.layout.TagValueOffset(SetKind::kSourcePackage, tag::kPackageModifiedDate);
  EXPECT_EQ(now[stamp] << 8 | now[stamp + 1], before.year);
  EXPECT_EQ(now[stamp + 2], before.month);
  EXPECT_EQ(now[stamp + 7], before.dayOfWeek);
  EXPECT_EQ(Places(umid).size(), clip.layout.sourceUmids.size());
  EXPECT_EQ(Places(kMaterialUmid).size(), clip.layout.materialUmids.size());
}

TEST_F(RegenerateUmidTest, KeepsWhatBothPackagesShare) {
  ClipSpec spec;
  Clip clip = BuildClip(spec);
  for (const std::uint64_t place : clip.layout.sourceUmids)
    Patch(clip.bytes, place, {kMaterialUmid.begin(), kMaterialUmid.end()});
  Open(clip.bytes);
  MxfRecords records;
  ASSERT_EQ(AnalyzeMxfFile(&file_, &records.base), 0);
  file_ = platform::File::Open(path_, platform::OpenMode::kRewrite);
  ASSERT_TRUE(RenewUmids(&file_, &records.base));
  EXPECT_EQ(records.base.materialUmid, records.base.sourceUmid);
  EXPECT_EQ(Places(records.base.sourceUmid).size(),
            clip.layout.materialUmids.size() + clip.layout.sourceUmids.size());
}

TEST_F(RegenerateUmidTest, WritesNoStampWhereItDoesNotFit) {
  for (const bool removed : {false, true}) {
    ClipSpec spec;
    spec.SetTag(SetKind::kMaterialPackage, 0, tag::kPackageModifiedDate, Bytes(7, 1));
    if (removed) spec.RemoveTag(SetKind::kMaterialPackage, 0, tag::kPackageModifiedDate);
    const Clip clip = BuildClip(spec);
    Open(clip.bytes);
    Umid umid = kMaterialUmid;
    ASSERT_EQ(RegenerateUmid(&file_, PackageKind::kMaterial, &umid, clip.layout.headerByteCount),
              0);
    Bytes now = ReadAll(path_);
    for (const std::uint64_t place : clip.layout.materialUmids) {
      Patch(now, place, {kMaterialUmid.begin(), kMaterialUmid.end()});
    }
    EXPECT_TRUE(now == clip.bytes);
  }
}

TEST_F(RegenerateUmidTest, FailsWithoutRightsOrArguments) {
  const Clip clip = BuildClip(ClipSpec());
  Open(clip.bytes);
  EXPECT_LT(RegenerateUmid(&file_, PackageKind::kMaterial, nullptr, 9999), 0);
  file_ = {};
  file_ = platform::File::Open(path_, platform::OpenMode::kReadAlone);
  Umid umid = kMaterialUmid;
  EXPECT_LT(RegenerateUmid(&file_, PackageKind::kMaterial, &umid, 9999), 0);
  EXPECT_EQ(umid, kMaterialUmid);
}

}  // namespace
}  // namespace quorvan
