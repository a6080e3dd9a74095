#include "conform/klv_field.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/golden.h"

namespace quorvan::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A line has the bytes of the file, the length if there is one, and the length field.
TEST(KlvField, FollowsEveryLengthFormAndNoLengthThatReachesBehindTheEnd) {
  const TempFolder folder;
  ForEachGoldenLine("conform/golden/length_fields.txt", [&](auto& cells) {
    std::size_t fileBytes = 0;
    std::string length;
    cells >> fileBytes >> length;
    Bytes bytes(keys::kPreface.begin(), keys::kPreface.end());
    std::ranges::copy(HexBytes(cells), std::back_inserter(bytes));
    const std::size_t valueOffset = bytes.size();
    bytes.resize(fileBytes);
    const auto file =
        platform::File::Open(folder.Write("klv", bytes), platform::OpenMode::kReadShared);
    KlvSpan klv{};
    ASSERT_EQ(ReadKlvSpan(file, 0, bytes.size(), &klv), length != "none");
    if (length == "none") return;
    EXPECT_EQ(std::to_string(klv.length), length);
    EXPECT_EQ(klv.valueOffset, valueOffset);
  });
}

TEST(KlvField, WritesOnlyTheTwoFormsThatTheReadersFollow) {
  for (const std::uint64_t length : {0ULL, 5ULL, 0xFFFFFFULL, 0x1000000ULL, 0x123456789ABULL}) {
    Bytes bytes;
    AppendKlvHeader(keys::kPreface, length, &bytes);
    EXPECT_EQ(bytes.size(), WrittenHeaderBytes(length));
    const bool isShort = length <= 0xFFFFFF;
    EXPECT_EQ(bytes[16], isShort ? 0x83 : 0x87);
    EXPECT_EQ(isShort ? ReadBe24(&bytes[17]) : ReadBe64(&bytes[16]) & 0xFFFFFFFFFFFFFF, length);
  }
}

TEST(KlvField, LeavesNoGapThatIsTooSmallForAFill) {
  EXPECT_EQ(RoundedWithFill(0, 512), 0U);
  EXPECT_EQ(RoundedWithFill(1024, 512), 1024U);
  EXPECT_EQ(RoundedWithFill(492, 512), 512U);
  EXPECT_EQ(RoundedWithFill(493, 512), 1024U);
  EXPECT_EQ(RoundedWithFill(7, 1), 7U);
  for (const std::uint64_t bytes : {20ULL, 21ULL, 8192ULL}) {
    Bytes fill;
    AppendFill(bytes, &fill);
    EXPECT_EQ(fill.size(), bytes);
    EXPECT_TRUE(KeyMatches(fill.data(), keys::kFill));
    EXPECT_EQ(ReadBe24(&fill[17]), bytes - 20);
  }
}

}  // namespace
}  // namespace quorvan::test
