#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "cli/companion.h"
#include "platform/fault_seam.h"
#include "support/clip_builder.h"
#include "support/command.h"
#include "support/golden.h"
#include "support/temp_folder.h"
#include "support/wav_builder.h"

namespace quorvan::test {
namespace {

const std::string kCompanion = CompanionOf(COMPANION);

using nlohmann::json;
using platform::ToUtf8;

class CommandLine : public ::testing::Test {
 protected:
  void SetUp() override {
    ClipSpec spec{.start = {23, 59, 59, 20}};
    clip_ = BuildClip(spec).bytes;
    folder_.Write("clip.mxf", clip_);
    WavSpec wav;
    folder_.Write("mono.wav", BuildWav(wav).bytes);
    wav.channels = 2;
    folder_.Write("stereo.wav", BuildWav(wav).bytes);
    wav.sampleRate = 44100;
    folder_.Write("cd.wav", BuildWav(wav).bytes);
  }

  // A command in the folder, with the companion in front and the variables of its locale before.
  CommandResult Run(const std::string& arguments, const std::string& locale = "LC_ALL=C") const {
    return RunCommand("cd " + folder_.Path().string() + " && " + locale + " " + kCompanion + " " +
                      arguments);
  }

  std::string Text(const char* name) const {
    const Bytes bytes = ReadAll(folder_.Path() / name);
    return {bytes.begin(), bytes.end()};
  }

  bool Exists(const char* name) const { return std::filesystem::exists(folder_.Path() / name); }

  // The clip as it was at first.
  bool IsUntouched() const { return ReadAll(folder_.Path() / "clip.mxf") == clip_; }

  TempFolder folder_;
  Bytes clip_;
};

bool IsEnglish(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > 0 && c <= '~'; });
}

// The status of each command with what it says, in English and in Japanese: on standard output for
// 0, else on standard error. Where a row has no Japanese, any whole sentence will do.
TEST_F(CommandLine, EndsWithAStatusAndItsReason) {
  ClipSpec longUmid{.umidSize = 64};
  folder_.Write("umid.mxf", BuildClip(longUmid).bytes);
  folder_.Write(std::string(250, 'n') + ".mxf", clip_);
  for (const auto& row : GoldenRows("cli/golden/statuses.txt")) {
    for (const std::string language : {"en", "ja"}) {
      const std::string command = "--language " + language + " " + ToUtf8(row.at(1));
      std::filesystem::remove(folder_.Path() / "copy.mxf");
      const CommandResult result = Run(command);
      EXPECT_EQ(std::to_string(result.status), ToUtf8(row.at(0))) << command;
      const std::string& said = result.status == 0 ? result.output : result.error;
      const bool english = language == "en";
      const std::string wanted = english          ? ToUtf8(row.at(2))
                                 : row.size() > 3 ? ToUtf8(row[3])
                                                  : "。";
      EXPECT_NE(said.find(wanted), std::string::npos) << command << "\n" << said;
      EXPECT_EQ(IsEnglish(said), english || IsEnglish(wanted)) << command << "\n" << said;
      EXPECT_TRUE(result.status == 0 || said != "") << command;
    }
  }
  EXPECT_TRUE(IsUntouched());
  EXPECT_FALSE(Exists("out.mxf"));
  EXPECT_TRUE(Exists("copy.mxf"));
  EXPECT_NE(Text("umid_LOG.txt").find("[ UMID ]"), std::string::npos);
}

TEST_F(CommandLine, SpeaksTheLanguageOfItsOptionElseOfItsLocale) {
  const std::tuple<const char*, const char*, bool> rows[] = {
      {"LC_ALL= LC_MESSAGES= LANG=", "sing", true},
      {"LC_ALL= LC_MESSAGES= LANG=C", "--help", true},
      {"LC_ALL= LC_MESSAGES= LANG=ja_JP.UTF-8", "info none.mxf", false},
      {"LC_ALL= LC_MESSAGES=ja LANG=C", "info --help", false},
      {"LC_ALL=en_US.UTF-8 LC_MESSAGES=ja_JP LANG=ja_JP", "info clip.mxf", true},
      {"LC_ALL=ja_JP.eucJP LANG=de_DE", "conform clip.mxf --check", false},
      {"LC_ALL=jav LANG=ja_JP", "sing", true},
      {"LC_ALL=ja_JP", "info clip.mxf --language=en", true},
      {"LC_ALL=C", "info --bogus --language ja", false},
      {"LC_ALL=C", "--language en info --language ja --help", false},
      {"LC_ALL=C", "--language fr --help", true},
      {"LC_ALL=ja_JP", "info clip.mxf --language fr", false}};
  for (const auto& [locale, command, english] : rows) {
    const CommandResult result = Run(command, locale);
    EXPECT_EQ(IsEnglish(result.output + result.error), english)
        << locale << " " << command << result.output << result.error;
  }
}

std::atomic<bool> cancels = false;

// The interrupt key at the first read of a command, and storage that is slow from then on.
platform::CallOutcome InterruptAtFirstRead(platform::SystemCall call) {
  if (call != platform::SystemCall::kRead) return platform::CallOutcome::kAsEver;
  if (!cancels.exchange(true)) std::raise(SIGINT);
  std::this_thread::sleep_for(std::chrono::milliseconds(25));
  return platform::CallOutcome::kAsEver;
}

platform::CallOutcome FailFlush(platform::SystemCall call) {
  return call == platform::SystemCall::kFlush ? platform::CallOutcome::kFails
                                              : platform::CallOutcome::kAsEver;
}

TEST_F(CommandLine, TellsByItsStatusWhatStopsACommand) {
  const std::string rewrap = "rewrap clip.mxf --silence 1 --yes --method file";
  const std::string exporting = "export clip.mxf --tracks 1 --folder . --method file";
  const std::tuple<std::string, platform::FaultSeam, int> cases[] = {
      {"info clip.mxf --method file", InterruptAtFirstRead, 3},
      {rewrap, InterruptAtFirstRead, 3},
      {exporting, InterruptAtFirstRead, 3},
      {"conform clip.mxf out.mxf", InterruptAtFirstRead, 3},
      {exporting, FailFlush, 1},
      {exporting + " --no-flush", FailFlush, 0},
      {rewrap, FailFlush, 1},
      {rewrap + " --no-flush", FailFlush, 0}};
  for (const auto& [command, seam, status] : cases) {
    std::istringstream words("mxf-quorvan-cli " + command);
    const std::vector<std::string> arguments(std::istream_iterator<std::string>(words), {});
    const auto run = [&, faulty = seam] {
      std::filesystem::current_path(folder_.Path());
      std::vector<const char*> argv;
      for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());
      platform::SetFaultSeam(faulty);
      std::exit(cli::RunCompanion(static_cast<int>(argv.size()), argv.data()));
    };
    if (seam == FailFlush) folder_.Write("clip.mxf", clip_);
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(status), status == 0 ? "" : "clip.mxf") << command;
    EXPECT_TRUE(IsUntouched() || seam == FailFlush);
  }
  EXPECT_FALSE(Exists("out.mxf"));
}

TEST_F(CommandLine, TellsAllOfAClipToPeopleAndPrograms) {
  EXPECT_EQ(Run("info clip.mxf --index").output, GoldenText("cli/golden/info.txt"));
  json records = json::parse(Run("info clip.mxf --index --json").output);
  json& partitions = records["MXF_PARTITION_INFO"];
  partitions = {{"count", partitions.size()}, {"third", partitions[2]}};
  json& frames = records["INDEX_ENTRY_ARRAY"];
  frames = {{"count", frames.size()}, {"ninth", frames[8]}};
  EXPECT_EQ(records, json::parse(GoldenText("cli/golden/info.json"))) << records.dump(1);
  EXPECT_FALSE(json::parse(Run("info clip.mxf --json").output).contains("INDEX_ENTRY_ARRAY"));
  EXPECT_EQ(Run("info clip.mxf").output.find("\nIndex\n"), std::string::npos);

  // A name with all that a text in JSON has to escape, and a byte that is no UTF-8.
  WriteBytes(folder_.Path() / "odd\"\\\n\x01 \xFF😀.mxf", Bytes(100));
  const auto failure = json::parse(Run("info odd*.mxf --json --method file").output);
  EXPECT_EQ(failure["result"], 204);
  EXPECT_EQ(failure["processCode"], 200);
  EXPECT_EQ(failure["message"].get<std::string>().find("odd\"\\\n\x01 \uFFFD😀.mxf\n"), 0u)
      << failure["message"];
  EXPECT_EQ(failure["messages"]["ja"], failure["message"]);
  EXPECT_NE(failure["messages"]["en"].dump().find("no Random Index Pack"), std::string::npos);
  const auto reason = json::parse(Run("conform odd*.mxf --check --json --language ja").output);
  EXPECT_EQ(reason["reasons"]["en"], reason["reason"]);
  EXPECT_TRUE(IsEnglish(reason["reason"]) && !IsEnglish(reason["reasons"]["ja"]));
  EXPECT_EQ(reason["messages"], failure["messages"]);
  const auto measured = json::parse(Run("loudness odd*.mxf --tracks 1 --json").output);
  EXPECT_EQ(measured["result"], 204);
  EXPECT_EQ(measured["messages"]["ja"], measured["message"]);
}

TEST_F(CommandLine, TellsWhatIsUncommonInAClip) {
  ClipSpec other{.rate = Rate::k29_97};
  other.dropFrame = other.waveAudio = other.dataTrack = other.dataElement = true;
  other.bits = 16;
  other.frameLayout = 0;
  other.SetTag(SetKind::kMpegVideoDescriptor, 0, tag::kAspectRatio, {0, 0, 0, 4, 0, 0, 0, 9});
  other.umidSize = 64;
  ClipSpec mute{.tracks = 1, .timecodeTracks = 0};
  mute.RemoveTag(SetKind::kAes3Descriptor, 0, tag::kAudioSamplingRate);
  mute.SetTag(SetKind::kMpegVideoDescriptor, 0, tag::kSampleRate, {0, 0, 0, 48, 0, 0, 0, 1});
  ClipSpec lengths;
  lengths.SetTag(SetKind::kTimecodeComponent, 0, tag::kDuration, Big64(12));
  ClipSpec hidden;
  hidden.DropSet(SetKind::kTimelineTrack, 3);
  const std::pair<const char*, ClipSpec> clips[] = {
      {"other.mxf", other}, {"mute.mxf", mute}, {"lengths.mxf", lengths}, {"hidden.mxf", hidden}};
  for (const auto& [name, spec] : clips)
    folder_.Write(name, BuildClip(spec).bytes);
  const auto rows = GoldenRows("cli/golden/uncommon.txt");
  EXPECT_EQ(rows.size(), 15u);
  for (const auto& row : rows) {
    const std::string line = ToUtf8(row.at(1)) + "\n";
    const std::string page = Run("info --no-timecode-check " + ToUtf8(row.at(0)) + ".mxf").output;
    EXPECT_NE(page.find(line), std::string::npos) << line << page;
  }
}

TEST_F(CommandLine, WritesALogUnlessToldNotTo) {
  const std::string rewrap = "rewrap clip.mxf --track 3=stereo.wav --in 00000000 --yes ";
  EXPECT_EQ(Run(rewrap + "--no-log").status, 0);
  EXPECT_FALSE(Exists("clip_LOG.txt"));
  const CommandResult logged = Run(rewrap + "--method file --buffer 13");
  EXPECT_EQ(logged.status, 0);
  EXPECT_NE(logged.output.find("The rewrite is done."), std::string::npos);
  EXPECT_NE(logged.output.find("clip_LOG.txt\n"), std::string::npos);
  const std::string log = Text("clip_LOG.txt");
  EXPECT_NE(log.find("標準ファイル入出力"), std::string::npos);
  EXPECT_NE(log.find("IN  00:00:00:00\r\nOUT 00:00:00:04\r\n"), std::string::npos);
  EXPECT_EQ(log.find("処理開始: 00:00;00"), std::string::npos);
  EXPECT_EQ(Run("verify clip.mxf --track 3=stereo.wav --in 00000000").status, 0);
  EXPECT_EQ(Run("verify clip.mxf --track 3=mono.wav --in 00000000").status, 0)
      << "its left channel";
  // One file may stand on several tracks.
  const std::string tracks =
      " clip.mxf --track 1=mono.wav --track 3=mono.wav --silence 4 "
      "--in '23:59:59;24' --out 00000000";
  EXPECT_EQ(Run("rewrap" + tracks + " --yes").status, 0);
  EXPECT_EQ(Run("verify" + tracks).status, 0);
}

TEST_F(CommandLine, ExportsAndMeasuresTheRange) {
  EXPECT_EQ(Run("export clip.mxf --tracks 1,3-4 --folder . --prefix T --in 00000000").status, 0);
  for (const char* name : {"T1.wav", "T3.wav", "T4.wav"})
    EXPECT_EQ(Text(name).size(), 714u + 5 * 1920 * 3) << name;
  EXPECT_FALSE(Exists("T2.wav"));
  EXPECT_EQ(Run("rewrap clip.mxf --silence 1 --silence 2 --yes").status, 0);
  const CommandResult silent = Run("loudness clip.mxf --tracks 1,2 --json");
  EXPECT_EQ(json::parse(silent.output), json::parse(R"({
    "integratedLoudness": null, "truePeak": -99.9, "loudnessRange": 0.0})"));
}

TEST_F(CommandLine, RefusesAClipWhoseTimecodeBreaksAndListsTheBreaks) {
  ClipSpec spec;
  spec.timecodeWords[3] = spec.timecodeWords[4] = 0;
  folder_.Write("broken.mxf", BuildClip(spec).bytes);
  for (const std::string method : {"mapped", "file"}) {
    const std::string info = "info broken.mxf --method " + method;
    const CommandResult refused = Run(info + " --timecode-log breaks.txt --json");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.error.find("The timecode breaks."), std::string::npos);
    const auto records = json::parse(refused.output);
    EXPECT_EQ(records["result"], 1009);
    EXPECT_EQ(records["TIMECODE_ERROR_INFO"].size(), 3u);
    EXPECT_EQ(records["TIMECODE_ERROR_INFO"][0], json::parse(R"({
      "previousTimecode": 900002, "nextTimecode": 0, "kind": 3, "frameNumber": 2})"));
    EXPECT_NE(Text("breaks.txt").find("     0  10:00:00:02  00:00:00:00  00:00:00:02  dec\r\n"),
              std::string::npos);
    std::filesystem::remove(folder_.Path() / "breaks.txt");
    EXPECT_EQ(Run(info + " --no-timecode-check --timecode-log breaks.txt").status, 0);
    EXPECT_FALSE(Exists("breaks.txt"));
    EXPECT_EQ(Run(info + " --timecode-log none/breaks.txt").status, 1);
  }
}

TEST_F(CommandLine, IsCancelledByTheInterruptKeyBeforeItWrites) {
  // A terminal that asks for the backup, the interrupt key, and a yes that comes too late.
  const CommandResult asked =
      Run("--help >/dev/null; touch asked; (until grep -q backup asked; do sleep 0.01; done; "
          "printf '\\003'; sleep 0.2; echo y) | LC_ALL=C script -qefc 'exec " +
          kCompanion + " rewrap clip.mxf --silence 3' asked; echo status $?");
  EXPECT_NE(asked.output.find("status 3"), std::string::npos) << asked.output;
  EXPECT_TRUE(IsUntouched());
}

}  // namespace
}  // namespace quorvan::test
