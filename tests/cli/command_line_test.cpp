#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "support/clip_builder.h"
#include "support/command.h"
#include "support/temp_folder.h"
#include "support/wav_builder.h"

namespace quorvan::test {
namespace {

class CommandLine : public ::testing::Test {
 protected:
  void SetUp() override {
    ClipSpec spec;
    spec.start = {23, 59, 59, 20};
    clip_ = BuildClip(spec).bytes;
    folder_.Write("clip.mxf", clip_);
    WavSpec wav;
    folder_.Write("mono.wav", BuildWav(wav).bytes);
    wav.channels = 2;
    folder_.Write("stereo.wav", BuildWav(wav).bytes);
    wav.sampleRate = 44100;
    folder_.Write("cd.wav", BuildWav(wav).bytes);
  }

  // A command in the folder, with the companion in front.
  CommandResult Run(const std::string& arguments) const {
    return RunCommand("cd " + folder_.Path().string() + " && " COMPANION " " + arguments);
  }

  // The clip as it was at first.
  bool IsUntouched() const { return ReadAll(folder_.Path() / "clip.mxf") == clip_; }

  TempFolder folder_;
  Bytes clip_;
};

TEST_F(CommandLine, RefusesWrongUsageWithStatusTwoAndWritesNothing) {
  for (const char* arguments : {"",
                                "sing",
                                "info",
                                "info --json",
                                "info clip.mxf --method magic",
                                "rewrap clip.mxf --yes",
                                "rewrap clip.mxf --track mono.wav --yes",
                                "rewrap clip.mxf --track 0=mono.wav --yes",
                                "rewrap clip.mxf --track 25=mono.wav --yes",
                                "rewrap clip.mxf --track 1= --yes",
                                "rewrap clip.mxf --silence 5 --yes",
                                "rewrap clip.mxf --silence 0 --yes",
                                "rewrap clip.mxf --silence 1 --silence 1 --yes",
                                "rewrap clip.mxf --track 1=stereo.wav --track 2=mono.wav --yes",
                                "rewrap clip.mxf --track 1=stereo.wav --silence 2 --yes",
                                "rewrap clip.mxf --silence 1 --in '' --yes",
                                "rewrap clip.mxf --silence 1 --in 1 --yes",
                                "rewrap clip.mxf --silence 1 --in 23:59:59:25 --yes",
                                "rewrap clip.mxf --silence 1 --out 235959 --yes",
                                "rewrap clip.mxf --silence 1 --buffer 14 --yes",
                                "rewrap clip.mxf --silence 1 --method fast --yes",
                                "verify clip.mxf",
                                "export clip.mxf --tracks 1",
                                "export clip.mxf --folder .",
                                "export clip.mxf --tracks 5 --folder .",
                                "export clip.mxf --tracks 3-2 --folder .",
                                "export clip.mxf --tracks 1, --folder .",
                                "export clip.mxf --tracks '' --folder .",
                                "export clip.mxf --tracks 1 --folder . --prefix ../a",
                                "loudness clip.mxf",
                                "loudness clip.mxf --tracks 1,2,3",
                                "loudness clip.mxf --tracks 1 --in x",
                                "conform clip.mxf"}) {
    const CommandResult result = Run(arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_NE(result.error, "") << arguments;
  }
  EXPECT_TRUE(IsUntouched());
}

TEST_F(CommandLine, RefusesWithStatusOneAndTheReason) {
  const std::pair<const char*, const char*> cases[] = {
      {"info none.mxf", "MXFファイルを開くことができません。"},
      {"info mono.wav", "ERR: 204  process: Memory Mapping"},
      {"info mono.wav --method file", "ERR: 204  process: Generic File I/O"},
      {"rewrap clip.mxf --silence 1", "--yes is needed"},
      {"rewrap clip.mxf --track 1=none.wav --yes", "ファイルが見つかりません。"},
      {"rewrap clip.mxf --track 1=clip.mxf --yes", "WAVファイルではありません。"},
      {"rewrap clip.mxf --track 1=cd.wav --yes", "サンプル周波数が48kHzではありません。"},
      {"rewrap clip.mxf --track 2=stereo.wav --yes", "偶数トラックに割当てることはできません。"},
      {"rewrap clip.mxf --track 5=mono.wav --yes", "トラック上限を越えてしまう"},
      {"rewrap clip.mxf --silence 1 --in 00:00:00:05 --yes", "ERR: 2005"},
      {"rewrap clip.mxf --silence 1 --in 00:00:00:00 --out 23:59:59:24 --yes", "ERR: 2005"},
      {"rewrap clip.mxf --silence 1 --in 00:00:00:05 --method file --yes", "ERR: 3005"},
      {"verify clip.mxf --track 1=mono.wav", "differs first at 23:59:59:20, frame 0"},
      {"verify clip.mxf --track 1=none.wav", "ERR: 92"},
      {"export clip.mxf --tracks 1 --folder none", "BWFファイルが作成出来ません。"},
      {"export clip.mxf --tracks 1 --folder none --method file", "ERR: 5008"},
      {"loudness none.mxf --tracks 1,2", "MXFファイルを開くことができません。"},
      {"loudness clip.mxf --tracks 1 --in 00:00:00:05", "ERR: 4005"},
      {"conform clip.mxf mono.wav", "mono.wav"},
      {"conform none.mxf out.mxf", "none.mxf"},
  };
  for (const auto& [arguments, reason] : cases) {
    const CommandResult result = Run(arguments);
    EXPECT_EQ(result.status, 1) << arguments;
    EXPECT_NE(result.error.find(reason), std::string::npos) << arguments << "\n" << result.error;
  }
  EXPECT_TRUE(IsUntouched());
  EXPECT_FALSE(std::filesystem::exists(folder_.Path() / "out.mxf"));
}

TEST_F(CommandLine, TellsTheSameToPeopleAndPrograms) {
  const CommandResult text = Run("info clip.mxf --index");
  EXPECT_EQ(text.status, 0);
  EXPECT_NE(text.output.find("First frame       23:59:59:20\n"), std::string::npos);
  EXPECT_NE(text.output.find("Last frame        00:00:00:04\n"), std::string::npos);
  const auto json = nlohmann::json::parse(Run("info clip.mxf --json").output);
  EXPECT_EQ(json["MXF_PARTITION_INFO"].size(), 4u);
  EXPECT_EQ(json["MXF_TIMECODE_INFO"]["startHour23"], 1);
  EXPECT_FALSE(json.contains("INDEX_ENTRY_ARRAY"));

  const CommandResult refused = Run("info mono.wav --json");
  EXPECT_EQ(refused.status, 1);
  const auto failure = nlohmann::json::parse(refused.output);
  EXPECT_EQ(failure["result"], 204);
  EXPECT_EQ(failure["processCode"], 200);
  EXPECT_EQ(failure["message"].get<std::string>() + "\n", refused.error);
  EXPECT_EQ(Run("info clip.mxf >/dev/full").status, 1);
}

TEST_F(CommandLine, RewritesOneFileOnSeveralTracksAndReportsIt) {
  const CommandResult done =
      Run("rewrap clip.mxf --track 1=mono.wav --track 3=mono.wav --silence 4 "
          "--in 235959.24 --out 00000000 --yes");
  EXPECT_EQ(done.status, 2) << "a timecode has no point in front of its frames alone";
  EXPECT_TRUE(IsUntouched());
  const CommandResult good =
      Run("rewrap clip.mxf --track 1=mono.wav --track 3=mono.wav --silence 4 "
          "--in '23:59:59;24' --out 00000000 --yes");
  EXPECT_EQ(good.status, 0) << good.error;
  EXPECT_NE(good.output.find("ラッピングが完了しました。"), std::string::npos);
  EXPECT_FALSE(IsUntouched());
}

TEST_F(CommandLine, WritesALogUnlessToldNotTo) {
  const std::string rewrap = "rewrap clip.mxf --track 3=stereo.wav --in 00000000 --yes ";
  EXPECT_EQ(Run(rewrap + "--no-log").status, 0);
  EXPECT_FALSE(std::filesystem::exists(folder_.Path() / "clip_LOG.txt"));
  const CommandResult logged = Run(rewrap + "--method file --buffer 13");
  EXPECT_EQ(logged.status, 0);
  EXPECT_NE(logged.output.find("clip_LOG.txt\n"), std::string::npos);
  const auto bytes = ReadAll(folder_.Path() / "clip_LOG.txt");
  const std::string log(bytes.begin(), bytes.end());
  EXPECT_NE(log.find("標準ファイル入出力"), std::string::npos);
  EXPECT_NE(log.find("IN  00:00:00:00\r\nOUT 00:00:00:04\r\n"), std::string::npos);
  EXPECT_EQ(log.find("処理開始: 00:00;00"), std::string::npos);
  EXPECT_EQ(Run("verify clip.mxf --track 3=stereo.wav --in 00000000").status, 0);
  EXPECT_EQ(Run("verify clip.mxf --silence 3 --in 00000000 --out 00000000").status, 1);
}

TEST_F(CommandLine, ExportsAndMeasuresTheRange) {
  EXPECT_EQ(Run("export clip.mxf --tracks 1,3-4 --folder . --prefix T --in 00000000").status, 0);
  for (const char* name : {"T1.wav", "T3.wav", "T4.wav"})
    EXPECT_EQ(std::filesystem::file_size(folder_.Path() / name), 714u + 5 * 1920 * 3) << name;
  EXPECT_FALSE(std::filesystem::exists(folder_.Path() / "T2.wav"));
  EXPECT_EQ(Run("rewrap clip.mxf --silence 1 --silence 2 --yes").status, 0);
  const CommandResult silent = Run("loudness clip.mxf --tracks 1,2 --json");
  EXPECT_EQ(silent.status, 0);
  const auto json = nlohmann::json::parse(silent.output);
  EXPECT_TRUE(json["integratedLoudness"].is_null());
  EXPECT_EQ(json["truePeak"], -99.9);
  EXPECT_EQ(json["loudnessRange"], 0.0);
}

TEST_F(CommandLine, RefusesAClipWhoseTimecodeBreaksAndListsTheBreaks) {
  ClipSpec spec;
  spec.timecodeWords[3] = spec.timecodeWords[4] = 0;
  folder_.Write("broken.mxf", BuildClip(spec).bytes);
  for (const std::string method : {"mapped", "file"}) {
    const std::string info = "info broken.mxf --method " + method;
    const CommandResult refused = Run(info + " --timecode-log breaks.txt --json");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.error.find("タイムコードエラーが検出されました。"), std::string::npos);
    const auto json = nlohmann::json::parse(refused.output);
    EXPECT_EQ(json["result"], 1009);
    EXPECT_EQ(json["TIMECODE_ERROR_INFO"].size(), 3u);
    EXPECT_EQ(json["TIMECODE_ERROR_INFO"][1]["kind"], 4);
    const auto bytes = ReadAll(folder_.Path() / "breaks.txt");
    const std::string log(bytes.begin(), bytes.end());
    EXPECT_NE(log.find("     0  10:00:00:02  00:00:00:00  00:00:00:02  dec\r\n"), std::string::npos)
        << log;
    std::filesystem::remove(folder_.Path() / "breaks.txt");
    EXPECT_EQ(Run(info + " --no-timecode-check --timecode-log breaks.txt").status, 0);
    EXPECT_FALSE(std::filesystem::exists(folder_.Path() / "breaks.txt"));
    EXPECT_EQ(Run(info + " --timecode-log none/breaks.txt").status, 1);
  }
}

TEST_F(CommandLine, IsCancelledByTheInterruptKeyBeforeItWrites) {
  // A terminal that asks for the backup, and an interrupt while it does.
  const CommandResult asked = Run(
      "--help >/dev/null; sleep 3 | script -qec 'timeout --preserve-status --foreground -s INT 1 " +
      std::string(COMPANION) + " rewrap clip.mxf --silence 3' /dev/null; echo status $?");
  EXPECT_NE(asked.output.find("status 3"), std::string::npos) << asked.output;
  EXPECT_NE(asked.output.find("バックアップ"), std::string::npos) << asked.output;
  EXPECT_TRUE(IsUntouched());
}

}  // namespace
}  // namespace quorvan::test
