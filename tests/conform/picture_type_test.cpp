#include "conform/picture_type.h"

#include <gtest/gtest.h>

#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/metadata_set.h"
#include "support/command.h"
#include "support/temp_folder.h"

namespace quorvan::test {
namespace {

constexpr KlvKey kPictureElement = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x02, 0x01, 0x01,
                                    0x0D, 0x01, 0x03, 0x01, 0x15, 0xFF, 0xFF, 0xFF};

struct FfmpegCase {
  PictureCoding coding;
  const char* encoder;
  std::uint8_t ignored;  // flags that ffmpeg sets otherwise
};

TEST(PictureType, AgreesWithTheIndexTablesThatFfmpegWrites) {
  for (const FfmpegCase& c :
       {FfmpegCase{PictureCoding::kMpeg2, "mpeg2video -g 12 -bf 2", 0},
        FfmpegCase{PictureCoding::kMpeg2, "mpeg2video -g 9 -bf 2 -flags cgop -sc_threshold 1G", 0},
        FfmpegCase{PictureCoding::kMpeg2, "mpeg2video -g 1", 0},
        // ffmpeg sets bit 2, which has no meaning here, ...
        FfmpegCase{PictureCoding::kAvc, "libx264 -g 1", 0x04},
        FfmpegCase{PictureCoding::kAvc, "libx264 -g 12 -bf 2", 0x04},
        // ... and takes the start of any GOP for a random access point in AVC.
        FfmpegCase{PictureCoding::kAvc, "libx264 -g 12 -x264-params aud=1:open-gop=1", 0x84}}) {
    SCOPED_TRACE(c.encoder);
    const TempFolder folder;
    const std::string clip = folder.Path() / "clip.mxf";
    const std::string make = "ffmpeg -v error -f lavfi -i testsrc2=s=128x96:r=25:d=2.8 -c:v ";
    ASSERT_EQ(RunCommand(make + c.encoder + " " + clip).error, "");
    const std::vector<std::uint8_t> file = ReadAll(clip);
    std::vector<PictureFacts> facts;
    std::vector<IndexPicture> expected;
    std::uint64_t length = 0;
    for (std::span<const std::uint8_t> rest = file; !rest.empty(); rest = rest.subspan(length)) {
      const std::uint8_t* key = rest.data();
      rest = rest.subspan(ReadKlvHeader(rest, &length));
      if (KeyMatches(key, kPictureElement)) {
        const std::size_t headBytes = std::min<std::size_t>(length, kPictureHeadBytes);
        facts.push_back(ReadPictureFacts(c.coding, rest.first(headBytes)));
      }
      if (!KeyMatches(key, keys::kIndexTableSegment)) continue;
      LocalItem item{};
      for (LocalSetWalk walk(rest.first(length)); walk.Next(&item);) {
        if (item.tag != tags::kIndexEntries) continue;
        for (std::size_t at = 8; at < item.value.size(); at += ReadBe32(&item.value[4])) {
          const std::uint8_t* p = &item.value[at];
          expected.push_back(
              {static_cast<std::int8_t>(p[0]), static_cast<std::int8_t>(p[1]), p[2]});
        }
      }
    }
    std::vector<IndexPicture> pictures = IndexPictures(facts);
    for (IndexPicture& picture : pictures)
      picture.flags |= c.ignored;
    for (IndexPicture& picture : expected)
      picture.flags |= c.ignored;
    EXPECT_EQ(pictures.size(), 70U);
    EXPECT_EQ(pictures, expected);
  }
}

TEST(PictureType, DescribesWhatFfmpegDoesNotEncode) {
  using enum PictureType;
  const PictureFacts unknown, intra{kIntra}, closed{kIntra, false, true, true, 2};
  const PictureFacts leading{kBidirectional, false, false, false, 0};
  const PictureFacts stray{kPredicted, false, false, false, 1023};  // of no place in its GOP
  const auto pictures = [](std::vector<PictureFacts> facts) { return IndexPictures(facts); };
  using Expected = std::vector<IndexPicture>;
  EXPECT_EQ(pictures({closed, leading, closed, stray}),
            (Expected{{1, 0, 0x80}, {0, -1, 0x13}, {0, 0, 0x80}, {0, -1, 0x22}}));
  EXPECT_EQ(pictures({closed, unknown, stray}), (Expected{{0, 0, 0x80}, {}, {-2, -2, 0x22}}));
  EXPECT_EQ(pictures({closed, {kBidirectional}}), (Expected{{0, 0, 0x80}, {0, -1, 0x33}}));
  EXPECT_EQ(pictures({{kIntra, false, true, false, 0},
                      {kPredicted, false, false, false, 3},
                      {kBidirectional, false, false, false, 1}}),
            (Expected{{0, 0, 0x80}, {1, -1, 0x22}, {-1, -2, 0x33}}))
      << "cut off in front of the second bidirectional picture";
  EXPECT_EQ(pictures({intra, intra}), (Expected{{0, 0, 0x80}, {0, 0, 0x80}}));
  EXPECT_EQ(pictures({intra, leading}), (Expected{{0, 0, 0x00}, {0, -1, 0x33}}));
  EXPECT_EQ(pictures(std::vector(200, stray)).back(), (IndexPicture{0, -128, 0x22}));
}

TEST(PictureType, ReadsTheFirstFieldTheStartOfAnOpenGopAndADelimiterWithoutSlice) {
  using enum PictureType;
  const std::vector<std::uint8_t> fields = {0, 0, 1, 0, 0, 0x48, 0, 0, 1, 0, 0, 0x50};
  const std::vector<std::uint8_t> openGop = {0, 0, 1, 0x67, 0, 0, 1, 0x41, 0x88};
  const std::vector<std::uint8_t> delimiter = {0, 0, 1, 9, 0x30, 0, 0, 1, 1};
  EXPECT_EQ(ReadPictureFacts(PictureCoding::kMpeg2, fields),
            (PictureFacts{kIntra, false, false, false, 1}));
  EXPECT_EQ(ReadPictureFacts(PictureCoding::kAvc, openGop), (PictureFacts{kIntra, true, true}));
  EXPECT_EQ(ReadPictureFacts(PictureCoding::kAvc, delimiter), PictureFacts{kPredicted});
}

}  // namespace
}  // namespace quorvan::test
