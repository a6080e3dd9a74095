// Clips that ffmpeg writes, with short lengths, and what ffmpeg finds in their conformed form.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "conform/conform.h"
#include "mxf/analysis.h"
#include "support/command.h"
#include "support/temp_folder.h"

namespace quorvan::test {
namespace {

struct Recipe {
  const char* name;
  FfmpegClip clip;
};

void PrintTo(const Recipe& recipe, std::ostream* out) {
  *out << recipe.name;
}

const Recipe kRecipes[] = {
    {"mpeg25", {"25", 22, 2, 24}},
    {"mpeg29", {"30000/1001", 3, 8, 16}},
    {"avcIntra", {"50", 2, 4, 24, true}},
};

class ConformedFfmpegClip : public ::testing::TestWithParam<Recipe> {
 protected:
  std::string Path(const char* name) const { return (folder_.Path() / name).string(); }

  std::int32_t Analyze(const char* name, MxfRecords* records) const {
    auto file = platform::File::Open(folder_.PathOf(name), platform::OpenMode::kReadShared);
    records->timecode.useFileIo = 1;
    return AnalyzeMxfFile(&file, &records->base);
  }

  TempFolder folder_;
};

TEST_P(ConformedFfmpegClip, LoadsAfterwardsAndHoldsTheSameEssence) {
  ASSERT_EQ(MakeFfmpegClip(Path("in.mxf"), GetParam().clip), "");
  MxfRecords refused;
  const std::int32_t code = Analyze("in.mxf", &refused);
  EXPECT_TRUE(code == kRandomIndexNotFound || code == kPrefaceNotFound) << code;
  JobProgress progress;
  const ConformResult result =
      ConformClip(folder_.PathOf("in.mxf"), folder_.PathOf("out.mxf"), &progress);
  ASSERT_TRUE(result.done) << result.reason;
  MxfRecords records;
  ASSERT_EQ(Analyze("out.mxf", &records), 0);
  EXPECT_EQ(records.timecode.frameCount, records.timecode.duration);
  EXPECT_EQ(records.audio.trackCount, GetParam().clip.tracks);
  EXPECT_EQ(records.timecode.startFrames % 36000, 0U);

  for (const char* question :
       {"ffmpeg -v error -i {} -map 0 -c copy -f md5 -",
        "ffmpeg -v error -i {} -map 0 -c copy -f framemd5 -",
        "ffmpeg -v error -ss 1.5 -i {} -map 0 -c copy -f framemd5 -",
        "ffprobe -v error -of json -show_streams -show_entries "
        "format=nb_streams,nb_programs,format_name,start_time,duration:format_tags {}"}) {
    const std::string before =
        RunCommand(fmt::format(fmt::runtime(question), Path("in.mxf"))).output;
    const std::string after =
        RunCommand(fmt::format(fmt::runtime(question), Path("out.mxf"))).output;
    EXPECT_FALSE(before.empty());
    EXPECT_EQ(before, after) << question;
  }

  JobProgress again;
  ASSERT_TRUE(ConformClip(folder_.PathOf("out.mxf"), folder_.PathOf("twice.mxf"), &again).done);
  EXPECT_EQ(ReadAll(Path("out.mxf")), ReadAll(Path("twice.mxf")));
}

INSTANTIATE_TEST_SUITE_P(Recipes, ConformedFfmpegClip, ::testing::ValuesIn(kRecipes),
                         [](const auto& recipe) { return recipe.param.name; });

}  // namespace
}  // namespace quorvan::test
