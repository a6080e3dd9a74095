// Loudness as the companion measures it, against ffmpeg's own filter.

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "support/command.h"
#include "support/temp_folder.h"

namespace quorvan::test {
namespace {

const std::string kCompanion = CompanionOf(COMPANION);

// Speech-like: pink noise in syllables, with a pause every four seconds.
constexpr char kLeft[] =
    "anoisesrc=c=pink:a=0.5:seed=3:r=48000,tremolo=f=3:d=0.9,"
    "volume='if(lt(mod(t,4),3),0.2+0.1*mod(t,7),0.003)':eval=frame";
constexpr char kRight[] =
    "anoisesrc=c=pink:a=0.5:seed=4:r=48000,tremolo=f=2.5:d=0.9,"
    "volume='if(lt(mod(t,4),3),0.3,0.003)':eval=frame";

// The number behind `label` in the summary.
double Summary(const std::string& text, const std::string& label) {
  const std::size_t place = text.rfind(label);
  return place == std::string::npos ? NAN : std::atof(text.c_str() + place + label.size());
}

TEST(Loudness, AgreesWithFfmpegsFilter) {
  const TempFolder folder;
  const std::string made = (folder.Path() / "made.mxf").string();
  const std::string clip = (folder.Path() / "clip.mxf").string();
  FfmpegClip spec;
  spec.seconds = 21;
  spec.rate = "30000/1001";
  spec.start = "01:00:00;00";
  spec.picture = "color=c=gray:s=64x64";
  spec.audio = {kLeft, kRight};
  ASSERT_EQ(MakeFfmpegClip(made, spec), "");
  ASSERT_EQ(RunCommand(kCompanion + " conform " + made + " " + clip).status, 0);
  const CommandResult measured =
      RunCommand(kCompanion + " loudness " + clip + " --tracks 1,2 --json");
  ASSERT_EQ(measured.status, 0) << measured.error;
  const auto ours = nlohmann::json::parse(measured.output);
  const CommandResult filtered = RunCommand(
      "ffmpeg -hide_banner -i " + clip +
      " -filter_complex "
      "'[0:a:0][0:a:1]join=inputs=2:channel_layout=stereo,adelay=5s:all=1,apad=pad_dur=5,"
      "ebur128=peak=true:framelog=verbose' "
      "-f null -");
  ASSERT_EQ(filtered.status, 0) << filtered.error;
  EXPECT_NEAR(ours["integratedLoudness"], Summary(filtered.error, "I:"), 0.1);
  EXPECT_NEAR(ours["truePeak"], Summary(filtered.error, "Peak:"), 0.2);
  char text[160];
  std::snprintf(text, sizeof text,
                "Integrated Loudness  %6.1f LKFS\nTrue Peak            %6.1f dBTP\n"
                "Loudness Range(LRA)  %6.1f LU\n",
                ours["integratedLoudness"].get<double>(), ours["truePeak"].get<double>(),
                ours["loudnessRange"].get<double>());
  EXPECT_EQ(RunCommand(kCompanion + " loudness " + clip + " --tracks 1,2").output, text);
}

}  // namespace
}  // namespace quorvan::test
