#include "mxf/metadata/klv.h"

#include <gtest/gtest.h>

#include "support/clip_parts.h"
#include "support/temp_folder.h"

namespace quorvan {
namespace {

using test::Bytes;
using test::operator+;

constexpr KlvKey kOtherKey = keys::kPreface;
constexpr KlvKey kWanted = keys::kIdentification;

Bytes Klv(const KlvKey& key, const Bytes& length, const Bytes& value = {}) {
  return test::ToBytes(key) + length + value;
}

// 1 or 0, where the value is and its length.
using Found = std::array<std::uint64_t, 3>;

// Both searches over the same bytes; they must agree on what is found.
Found Search(const Bytes& bytes, const KlvKey& key = kWanted) {
  const test::TempFolder folder;
  auto file = platform::File::Open(folder.Write("klv", bytes), platform::OpenMode::kReadAlone);
  std::uint64_t length = 99;
  const bool found = FindKlvKey(&file, key, 0, bytes.size(), &length) == 1;
  const Found inFile{found ? 1u : 0u, found ? file.Position() : 0, length};

  std::uint64_t value = 99;
  const int held = FindKlvKeyInBuffer(key, bytes.data(), bytes.size(), &value, &length);
  EXPECT_TRUE(held == 1 || value >= bytes.size() || bytes.size() < 20);
  EXPECT_EQ(inFile, (Found{held == 0 ? 0u : 1u, held == 0 ? 0 : value, length}));
  return inFile;
}

const Found kNothing{0, 0, 0};

TEST(FindKlvKey, FollowsTheLengthOfEachCandidate) {
  const Bytes hidden = Klv(kWanted, {0x83, 0, 0, 1}, {7});
  EXPECT_EQ(
      Search(Klv(kOtherKey, {0x83, 0, 0, 21}, hidden) + Klv(kWanted, {0x83, 0, 0, 2}, {1, 2})),
      (Found{1, 61, 2}));
  EXPECT_EQ(Search(Klv(kOtherKey, {0x87, 0, 0, 0, 0, 0, 0, 0}) +
                   Klv(kWanted, {0x87, 0, 0, 0, 0, 0, 0, 1}, {5})),
            (Found{1, 48, 1}));
  EXPECT_EQ(Search(Klv(kWanted, {0x83, 0, 0, 0})), (Found{1, 20, 0}));
}

TEST(FindKlvKey, DoesNotFollowOtherLengthFormsAndGoesOnBehindTheKey) {
  const Bytes behind = Klv(kWanted, {0x83, 0, 0, 1}, {7});
  for (const int form : {0x01, 0x7F, 0x81, 0x82, 0x84, 0x88}) {
    const Bytes length = {static_cast<std::uint8_t>(form)};
    EXPECT_EQ(Search(Klv(kWanted, length, behind)), (Found{1, 37, 1})) << form;
  }
}

TEST(FindKlvKey, RegainsStepBehindBytesThatAreNoKlv) {
  for (const std::size_t junk : {1u, 3u, 15u, 40000u, 70001u}) {
    Bytes bytes(junk, 0x06);
    EXPECT_EQ(Search(bytes + Klv(kWanted, {0x83, 0, 0, 3}, {1, 2, 3})), (Found{1, junk + 20, 3}));
  }
}

TEST(FindKlvKey, StopsAtTheEndWhateverALengthClaims) {
  EXPECT_EQ(Search(Klv(kOtherKey, {0x87, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, {1, 2, 3})),
            kNothing);
  Bytes whole = Klv(kOtherKey, {0x83, 0, 0, 0}) + Klv(kWanted, {0x83, 0, 0, 0});
  while (whole.size() > 20) {
    whole.pop_back();
    EXPECT_EQ(Search(whole), kNothing) << whole.size();
  }
}

TEST(LocalSetWalk, EndsAtAnItemThatReachesBehindTheSet) {
  const Bytes set = {0x44, 0x01, 0, 2, 9, 8, 0x44, 0x02, 0, 0, 0x44, 0x03, 0, 3, 1, 2};
  LocalSetWalk walk(set);
  LocalItem item;
  EXPECT_TRUE(walk.Next(&item) && walk.Next(&item));
  EXPECT_EQ(item.tag, 0x4402);
  EXPECT_FALSE(walk.Next(&item));
}

}  // namespace
}  // namespace quorvan
