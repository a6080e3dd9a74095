#include "mxf/metadata/klv.h"

#include <gtest/gtest.h>

#include "support/clip_builder.h"
#include "support/temp_folder.h"

namespace quorvan {
namespace {

using test::Bytes;

constexpr KlvKey kOtherKey = keys::kPreface;
constexpr KlvKey kWanted = keys::kIdentification;

Bytes Klv(const KlvKey& key, const Bytes& length, const Bytes& value = {}) {
  Bytes bytes(key.begin(), key.end());
  bytes.insert(bytes.end(), length.begin(), length.end());
  bytes.insert(bytes.end(), value.begin(), value.end());
  return bytes;
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

struct Found {
  int found;
  std::uint64_t value;
  std::uint64_t length;
  bool operator==(const Found&) const = default;
};
void PrintTo(const Found& f, std::ostream* out) {
  *out << f.found << " at " << f.value << ", length " << f.length;
}

// Both searches over the same bytes; they must agree on what is found.
Found Search(const Bytes& bytes, const KlvKey& key = kWanted) {
  const test::TempFolder folder;
  auto file = platform::File::Open(folder.Write("klv", bytes), platform::OpenMode::kReadAlone);
  Found inFile{0, 0, 99};
  inFile.found = FindKlvKey(&file, key, 0, bytes.size(), &inFile.length);
  if (inFile.found) inFile.value = file.Position();

  Found inBuffer{0, 99, 99};
  inBuffer.found =
      FindKlvKeyInBuffer(key, bytes.data(), bytes.size(), &inBuffer.value, &inBuffer.length);
  if (!inBuffer.found) {
    EXPECT_TRUE(inBuffer.value >= bytes.size() || bytes.size() < 20);
    inBuffer.value = 0;
  }
  EXPECT_EQ(inFile, inBuffer);
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

TEST(FindKlvKey, MatchesWildcardsAndNothingElse) {
  Bytes element = Klv(keys::kAes3Element, {0x83, 0, 0, 0});
  element[13] = 0x18;
  element[15] = 0x07;
  EXPECT_EQ(Search(element, keys::kAes3Element), (Found{1, 20, 0}));
  EXPECT_EQ(Search(element, keys::kWaveElement), kNothing);
}

TEST(FindKlvKey, LooksOnlyForKeysThatStartBeforeTheLimit) {
  const test::TempFolder folder;
  const Bytes bytes = Klv(kOtherKey, {0x83, 0, 0, 0}) + Klv(kWanted, {0x83, 0, 0, 9});
  auto file = platform::File::Open(folder.Write("klv", bytes), platform::OpenMode::kReadAlone);
  std::uint64_t length = 0;
  EXPECT_EQ(FindKlvKey(&file, kWanted, 0, 20, &length), 0);
  EXPECT_EQ(FindKlvKey(&file, kWanted, 0, 21, &length), 1);
  EXPECT_EQ(length, 9u);
  EXPECT_EQ(FindKlvKey(&file, kWanted, 20, 20, &length), 0);
  EXPECT_EQ(FindKlvKey(&file, kWanted, ~0ull, 21, &length), 0);
  EXPECT_EQ(FindKlvKey(nullptr, kWanted, 0, 21, &length), 0);
}

TEST(LocalSetWalk, EndsAtAnItemThatReachesBehindTheSet) {
  const Bytes set = {0x44, 0x01, 0, 2, 9, 8, 0x44, 0x02, 0, 0, 0x44, 0x03, 0, 3, 1, 2};
  LocalSetWalk walk(set);
  LocalItem item;
  ASSERT_TRUE(walk.Next(&item));
  EXPECT_EQ(item.tag, 0x4401);
  EXPECT_EQ(Bytes(item.value.begin(), item.value.end()), (Bytes{9, 8}));
  ASSERT_TRUE(walk.Next(&item));
  EXPECT_TRUE(item.value.empty());
  EXPECT_FALSE(walk.Next(&item));
}

}  // namespace
}  // namespace quorvan
