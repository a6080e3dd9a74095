// Clips that ffmpeg writes, with short lengths, and what ffmpeg finds in their conformed form.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>

#include "conform/conform.h"
#include "mxf/analysis.h"
#include "support/temp_folder.h"

namespace quorvan::test {
namespace {

struct Recipe {
  const char* name;
  const char* rate;
  int seconds;
  int tracks;
  const char* coding;
};

void PrintTo(const Recipe& recipe, std::ostream* out) {
  *out << recipe.name;
}

constexpr Recipe kRecipes[] = {
    {"mpeg25", "25", 22, 2,
     "-c:v mpeg2video -pix_fmt yuv422p -profile:v 0 -level:v 2 -g 12 -bf 2 -c:a pcm_s24le"},
    {"mpeg29", "30000/1001", 3, 8,
     "-c:v mpeg2video -pix_fmt yuv422p -profile:v 0 -level:v 2 -g 1 -c:a pcm_s16le"},
    {"avcIntra", "50", 2, 4,
     "-c:v libx264 -pix_fmt yuv422p10le -profile:v high422 -g 1 -bf 0 -c:a pcm_s24le"},
};

class FfmpegClip : public ::testing::TestWithParam<Recipe> {
 protected:
  std::string Path(const char* name) const { return (folder_.Path() / name).string(); }

  // Standard output of a command that must end well.
  std::string Run(const std::string& command) const {
    const std::string output = Path("output");
    EXPECT_EQ(std::system((command + " > " + output).c_str()), 0) << command;
    const auto bytes = ReadAll(output);
    return {bytes.begin(), bytes.end()};
  }

  void Make(const Recipe& recipe) const {
    std::string inputs =
        fmt::format(" -f lavfi -i testsrc2=s=320x180:r={}:d={}", recipe.rate, recipe.seconds);
    std::string maps = " -map 0";
    for (int i = 1; i <= recipe.tracks; ++i) {
      inputs += fmt::format(" -f lavfi -i sine=f={}:r=48000:d={}", 300 * i, recipe.seconds);
      maps += fmt::format(" -map {}", i);
    }
    Run("ffmpeg -v error -y" + inputs + maps + " " + recipe.coding + " -timecode 10:00:00:00 " +
        Path("in.mxf"));
  }

  std::int32_t Analyze(const char* name, MxfRecords* records) const {
    auto file = platform::File::Open(folder_.PathOf(name), platform::OpenMode::kReadShared);
    records->timecode.useFileIo = 1;
    return AnalyzeMxfFile(&file, &records->base);
  }

  TempFolder folder_;
};

TEST_P(FfmpegClip, LoadsAfterwardsAndHoldsTheSameEssence) {
  Make(GetParam());
  MxfRecords refused;
  const std::int32_t code = Analyze("in.mxf", &refused);
  EXPECT_TRUE(code == kRandomIndexNotFound || code == kPrefaceNotFound) << code;
  ConformProgress progress;
  const ConformResult result =
      ConformClip(folder_.PathOf("in.mxf"), folder_.PathOf("out.mxf"), &progress);
  ASSERT_TRUE(result.done) << result.reason;
  MxfRecords records;
  ASSERT_EQ(Analyze("out.mxf", &records), 0);
  EXPECT_EQ(records.timecode.frameCount, records.timecode.duration);
  EXPECT_EQ(records.audio.trackCount, GetParam().tracks);
  EXPECT_EQ(records.timecode.startFrames % 36000, 0U);

  for (const char* question :
       {"ffmpeg -v error -i {} -map 0 -c copy -f md5 -",
        "ffmpeg -v error -i {} -map 0 -c copy -f framemd5 -",
        "ffmpeg -v error -ss 1.5 -i {} -map 0 -c copy -f framemd5 -",
        "ffprobe -v error -of json -show_streams -show_entries "
        "format=nb_streams,nb_programs,format_name,start_time,duration:format_tags {}"}) {
    const std::string before = Run(fmt::format(fmt::runtime(question), Path("in.mxf")));
    const std::string after = Run(fmt::format(fmt::runtime(question), Path("out.mxf")));
    EXPECT_FALSE(before.empty());
    EXPECT_EQ(before, after) << question;
  }

  ConformProgress again;
  ASSERT_TRUE(ConformClip(folder_.PathOf("out.mxf"), folder_.PathOf("twice.mxf"), &again).done);
  EXPECT_EQ(ReadAll(Path("out.mxf")), ReadAll(Path("twice.mxf")));
}

INSTANTIATE_TEST_SUITE_P(Recipes, FfmpegClip, ::testing::ValuesIn(kRecipes),
                         [](const auto& recipe) { return recipe.param.name; });

}  // namespace
}  // namespace quorvan::test
