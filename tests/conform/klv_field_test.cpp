#include "conform/klv_field.h"

#include <gtest/gtest.h>

#include "support/temp_folder.h"

namespace quorvan::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(KlvField, FollowsEveryLengthFormAndNoLengthThatReachesBehindTheEnd) {
  struct Row {
    Bytes lengthField;
    std::uint64_t fileBytes;
    bool read;
    std::uint64_t length;
  };
  const Row rows[] = {
      {{0x00}, 17, true, 0},
      {{0x7F}, 144, true, 127},
      {{0x7F}, 143, false, 0},
      {{0x80}, 400, false, 0},
      {{0x81, 0xFF}, 400, true, 255},
      {{0x82, 0x01, 0x00}, 400, true, 256},
      {{0x83, 0x00, 0x00, 0x05}, 400, true, 5},
      {{0x84, 0x00, 0x00, 0x00, 0x05}, 400, true, 5},
      {{0x87, 0, 0, 0, 0, 0, 0, 5}, 400, true, 5},
      {{0x88, 0, 0, 0, 0, 0, 0, 0, 5}, 30, true, 5},
      {{0x88, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 400, false, 0},
      {{0x88, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xE7}, 400, false, 0},
      {{0x89, 0, 0, 0, 0, 0, 0, 0, 0, 5}, 400, false, 0},
      {{0x83, 0x00}, 18, false, 0},
      {{}, 16, false, 0},
  };
  const TempFolder folder;
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.lengthField));
    Bytes bytes(keys::kPreface.begin(), keys::kPreface.end());
    bytes.insert(bytes.end(), row.lengthField.begin(), row.lengthField.end());
    bytes.resize(row.fileBytes);
    const auto file =
        platform::File::Open(folder.Write("klv", bytes), platform::OpenMode::kReadShared);
    KlvSpan klv{};
    ASSERT_EQ(ReadKlvSpan(file, 0, bytes.size(), &klv), row.read);
    if (!row.read) continue;
    EXPECT_EQ(klv.length, row.length);
    EXPECT_EQ(klv.valueOffset, 16 + row.lengthField.size());
  }
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
