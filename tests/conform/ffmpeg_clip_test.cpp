// Clips that ffmpeg writes, with short lengths, and what ffmpeg finds in their conformed form.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

#include "conform/conform.h"
#include "mxf/analysis.h"
#include "support/command.h"
#include "support/temp_folder.h"

namespace quorvan::test {
namespace {

std::int32_t Analyze(const std::u16string& path, MxfRecords* records) {
  auto file = platform::File::Open(path, platform::OpenMode::kReadShared);
  records->timecode.useFileIo = Method::kGenericFileIo;
  return AnalyzeMxfFile(&file, &records->base);
}

class FfmpegClipConformed : public ::testing::TestWithParam<FfmpegClip> {};

TEST_P(FfmpegClipConformed, LoadsAfterwardsAndHoldsTheSameEssence) {
  const TempFolder folder;
  const std::string inName = folder.Path() / "in.mxf", outName = folder.Path() / "out.mxf";
  const std::u16string in = folder.PathOf("in.mxf"), out = folder.PathOf("out.mxf");
  ASSERT_EQ(MakeFfmpegClip(inName, GetParam()), "");
  MxfRecords refused, records;
  const std::int32_t code = Analyze(in, &refused);
  EXPECT_TRUE(code == kRandomIndexNotFound || code == kPrefaceNotFound) << code;
  JobProgress progress;
  const ConformResult result = ConformClip({.in = in, .out = out}, &progress);
  ASSERT_TRUE(result.IsDone()) << result.reason;
  ASSERT_EQ(Analyze(out, &records), 0);
  EXPECT_EQ(records.timecode.frameCount, records.timecode.duration);
  EXPECT_EQ(records.audio.trackCount, GetParam().tracks);
  EXPECT_EQ(records.timecode.startFrames % 36000, 0U);

  for (const char* question :
       {"ffmpeg -v error -i {} -map 0 -c copy -f framemd5 -",
        "ffmpeg -v error -ss 1.5 -i {} -map 0 -c copy -f framemd5 -",
        "ffprobe -v error -of json -show_streams -show_entries "
        "format=nb_streams,nb_programs,format_name,start_time,duration:format_tags {}"}) {
    const auto answer = [&](const std::string& path) {
      return RunCommand(fmt::format(fmt::runtime(question), path)).output;
    };
    const std::string before = answer(inName);
    EXPECT_NE(before, "");
    EXPECT_EQ(before, answer(outName)) << question;
  }

  ASSERT_TRUE(ConformClip({.in = out, .out = folder.PathOf("twice.mxf")}, &progress).IsDone());
  EXPECT_EQ(ReadAll(outName), ReadAll(folder.Path() / "twice.mxf"));
}

INSTANTIATE_TEST_SUITE_P(All, FfmpegClipConformed,
                         ::testing::Values(FfmpegClip{"25", 12, 2, 24},
                                           FfmpegClip{"30000/1001", 3, 8, 16},
                                           FfmpegClip{"50", 2, 4, 24, true}));

}  // namespace
}  // namespace quorvan::test
