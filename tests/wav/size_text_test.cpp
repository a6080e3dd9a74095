#include "wav/size_text.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvan {
namespace {

TEST(SizeText, StepsUnitsBy1024AndNeverBeyondGigabytes) {
  const struct {
    std::uint64_t size;
    const char16_t* text;
  } rows[] = {
      {0, u"0.00 bytes"},
      {1023, u"1023.00 bytes"},
      {1024, u"1.00 KB"},
      {1536, u"1.50 KB"},
      {(1ull << 20) - 1, u"1024.00 KB"},
      {1ull << 20, u"1.00 MB"},
      {(1ull << 30) - 1, u"1024.00 MB"},
      {1ull << 30, u"1.00 GB"},
      {1ull << 40, u"1024.00 GB"},
      {~0ull, u"17179869184.00 GB"},
  };
  for (const auto& row : rows) {
    char16_t buffer[64];
    EXPECT_EQ(FormatFileSize(row.size, buffer, 64), 0);
    EXPECT_EQ(std::u16string(buffer), row.text) << row.size;
  }
}

TEST(SizeText, StaysInsideAShortBuffer) {
  char16_t buffer[5] = {u'x', u'x', u'x', u'x', u'x'};
  EXPECT_EQ(FormatFileSize(1024, buffer, 4), 0);
  EXPECT_EQ(std::u16string(buffer), u"1.0");
  EXPECT_EQ(buffer[4], u'x');
  EXPECT_EQ(FormatFileSize(1024, buffer, 0), 0);
  EXPECT_EQ(FormatFileSize(1, nullptr, 16), 1);
}

}  // namespace
}  // namespace quorvan
