#include <gtest/gtest.h>

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
#include "support/temp_folder.h"
#include "support/wav_builder.h"

namespace quorvan::test {
namespace {

using nlohmann::json;

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

TEST_F(CommandLine, RefusesWrongUsageWithStatusTwoAndWritesNothing) {
  const std::pair<std::string, std::vector<const char*>> cases[] = {
      {"", {"", "sing", "verify clip.mxf", "conform clip.mxf"}},
      {"info ", {"", "--json", "clip.mxf --method magic"}},
      {"rewrap clip.mxf --yes ",
       {"", "--track mono.wav", "--track 0=mono.wav", "--track 25=mono.wav",
        "--track 1=", "--silence 5", "--silence 0", "--silence 1 --silence 1",
        "--track 1=stereo.wav --track 2=mono.wav", "--track 1=stereo.wav --silence 2"}},
      {"rewrap clip.mxf --yes --silence 1 ",
       {"--in ''", "--in 1", "--in 23:59:59:25", "--in 235959.24", "--in 2359592x", "--out 235959",
        "--buffer 14", "--method fast"}},
      {"export clip.mxf ",
       {"--tracks 1", "--folder .", "--folder . --tracks 5", "--folder . --tracks 3-2",
        "--folder . --tracks 1,", "--folder . --tracks ''", "--folder . --tracks 1 --prefix ../a"}},
      {"loudness clip.mxf ", {"", "--tracks 1,2,3", "--tracks 1 --in x"}}};
  for (const auto& [command, tails] : cases) {
    for (const char* tail : tails) {
      const CommandResult result = Run(command + tail);
      EXPECT_EQ(result.status, 2) << command << tail;
      EXPECT_NE(result.error, "") << command << tail;
    }
  }
  EXPECT_TRUE(IsUntouched());
}

TEST_F(CommandLine, EndsWithAStatusAndItsReason) {
  ClipSpec longUmid;
  longUmid.umidSize = 64;
  folder_.Write("umid.mxf", BuildClip(longUmid).bytes);
  const std::string longName = std::string(250, 'n') + ".mxf";
  folder_.Write(longName, clip_);
  struct Case {
    std::string arguments;
    int status;
    const char* says;  // on standard output for status 0, else on standard error
  };
  const Case cases[] = {
      {"--version", 0, "MXF Quorvan 1.7.8.3\n"},
      {"rewrap --help", 0, "--keep-umids"},
      {"info none.mxf", 1, "MXFファイルを開くことができません。"},
      {"info mono.wav", 1, "ERR: 204  process: Memory Mapping"},
      {"info mono.wav --method file", 1, "ERR: 204  process: Generic File I/O"},
      {"info clip.mxf >/dev/full", 1, "standard output cannot be written"},
      {"rewrap clip.mxf --silence 1", 1, "--yes is needed"},
      {"rewrap clip.mxf --track 1=none.wav --yes", 1, "ファイルが見つかりません。"},
      {"rewrap clip.mxf --track 1=clip.mxf --yes", 1, "WAVファイルではありません。"},
      {"rewrap clip.mxf --track 1=cd.wav --yes", 1, "サンプル周波数が48kHzではありません。"},
      {"rewrap clip.mxf --track 2=stereo.wav --yes", 1, "偶数トラックに割当てることはできません。"},
      {"rewrap clip.mxf --track 5=mono.wav --yes", 1, "トラック上限を越えてしまう"},
      {"rewrap clip.mxf --silence 1 --in 00:00:00:05 --yes", 1, "ERR: 2005"},
      {"rewrap clip.mxf --silence 1 --in 00000000 --out 23595924 --yes", 1, "ERR: 2005"},
      {"rewrap clip.mxf --silence 1 --in 00:00:00:05 --method file --yes", 1, "ERR: 3005"},
      {"rewrap " + longName + " --silence 1 --yes", 1, "--no-log rewrites the clip without a log"},
      {"rewrap umid.mxf --silence 1 --yes", 1, "--keep-umids rewrites the sound"},
      {"rewrap umid.mxf --silence 1 --yes --keep-umids", 4, "64バイトのUMIDのため"},
      {"verify umid.mxf --silence 1", 0, "umid.mxf: the sources' samples in all of 10 frames\n"},
      {"verify clip.mxf --silence 1 --in 23:59:59,22", 1,
       "clip.mxf: differs first at 23:59:59:22, frame 2 of the clip from 0, track 1, sample 0 of "
       "the frame: "},
      {"verify clip.mxf --track 1=none.wav", 1, "ERR: 92"},
      {"export clip.mxf --tracks 1 --folder none", 1, "BWFファイルが作成出来ません。"},
      {"export clip.mxf --tracks 1 --folder none --method file", 1, "ERR: 5008"},
      {"loudness none.mxf --tracks 1,2", 1, "MXFファイルを開くことができません。"},
      {"loudness clip.mxf --tracks 1 --in 00:00:00:05", 1, "ERR: 4005"},
      {"conform clip.mxf mono.wav", 1, "mono.wav"},
      {"conform none.mxf out.mxf", 1, "none.mxf"},
      {"conform clip.mxf copy.mxf", 0, ""},
  };
  for (const Case& c : cases) {
    const CommandResult result = Run(c.arguments);
    EXPECT_EQ(result.status, c.status) << c.arguments;
    const std::string& said = c.status == 0 ? result.output : result.error;
    EXPECT_NE(said.find(c.says), std::string::npos) << c.arguments << "\n" << said;
  }
  EXPECT_TRUE(IsUntouched());
  EXPECT_FALSE(Exists("out.mxf"));
  EXPECT_NE(Text("umid_LOG.txt").find("[ UMID ]"), std::string::npos);
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

constexpr char kPage[] = R"(File              clip.mxf
Size              262.57 KB (268872 bytes)
MXF version       1.3
Written by        Northlight / Bench Writer / 1.2.3 / Bench
Created           2024/03/05  14:07:09
Modified          2024/03/06  08:30:00
Material UMID     060A2B340101010501010F20130000004D3185C2179E44A08B5C6D02F133907E
Source UMID       060A2B340101010501010D201300000053721BE9640A4FD59126B87C3E4905AA

Timecode
First frame       23:59:59:20
Last frame        00:00:00:04
Duration          00:00:00:10 (10 frames)
Base              25
Frame rate        25
Index entries     10

Audio
Tracks            4
Format            48000 Hz, 24 bits
Element           AES3, 6144 bytes with fill
Ancillary data    none

Video
Coding            MPEG2 i HD422P@HL
Picture           1920 x 1080 interlaced, 16:9
Bit rate          50.0 Mbps

Partitions
      kind             offset      header       index     body offset  body index      KAG
    0 header                0        5120           0               0     0     0      512
    1 body               5632           0           0               0     1     0      512
    2 body             136192           0         512          130048     1     2      512
    3 footer           267776           0         512               0     0     2      512

Index
   frame partition          offset       slice  deltas  flags  samples temp  key
       0         1            6144        1024       6     C0     1920    0    0
       1         1           31744        1536       6     22     1920    0   -1
)";

constexpr char kRecords[] = R"({
  "result": 0, "processCode": 1000, "notices": [],
  "MXF_BASE_INFO": {
    "fileSize": 268872, "versionMajor": 1, "versionMinor": 3, "processCode": 1000,
    "creationDateText": "2024/03/05  14:07:09", "modifiedDateText": "2024/03/06  08:30:00",
    "companyName": "Northlight", "productName": "Bench Writer", "productVersion": "1.2.3",
    "platform": "Bench", "hasAncillaryData": 0, "ancillaryElementSize": 0,
    "materialUmid": "060A2B340101010501010F20130000004D3185C2179E44A08B5C6D02F133907E",
    "sourceUmid": "060A2B340101010501010D201300000053721BE9640A4FD59126B87C3E4905AA",
    "materialUmidSize": 32, "sourceUmidSize": 32},
  "MXF_TIMECODE_INFO": {
    "dropFrame": 0, "startFrames": 2159995, "startShifted": 89995, "lastFrames": 4,
    "lastShifted": 90004, "duration": 10, "fpsIndex": 1, "roundedBase": 25,
    "editRateNumerator": 25, "editRateDenominator": 1, "rateIndex": 1, "frameCount": 10,
    "errorCount": 0, "startHour23": 1, "maxIndexDuration": 5, "progressTotal": 10,
    "progressFrame": 9, "stopRequest": 0, "useFileIo": 0, "rangeKnown": 1},
  "MXF_AUDIO_INFO": {
    "trackCount": 4, "sampleRate": 48000, "avgBytesPerSecond": 144000, "blockAlign": 3,
    "quantizationBits": 24, "elementSize": 6144, "integratedLoudness": 0, "truePeak": 0,
    "loudnessRange": 0},
  "MXF_VIDEO_INFO": {
    "codingLabel": "060E2B34040101030401020201040200", "codecName": "MPEG2 i HD422P@HL",
    "codecIndex": 3, "height": 1080, "width": 1920, "aspectNumerator": 16,
    "aspectDenominator": 9, "bitRate": 50000000, "frameLayout": 1}
})";

constexpr char kSecondBody[] = R"({
  "kind": 1, "partitionCount": 4, "packKey": "060E2B34020501010D01020101030400",
  "operationalPattern": "060E2B34040101010D01020101010900", "packLength": 136,
  "majorVersion": 1, "minorVersion": 3, "kagSize": 512, "thisPartition": 136192,
  "headerByteCount": 0, "indexByteCount": 512, "indexSid": 2, "bodyOffset": 130048,
  "bodySid": 1, "essenceBase": 7168})";

constexpr char kLastFrameButOne[] = R"({
  "partition": 2, "segmentStart": 5, "segmentDuration": 5, "temporalOffset": 0,
  "keyFrameOffset": -2, "flags": 34, "fileOffset": 215552, "sliceOffset": 2048,
  "deltaCount": 6, "audioSamples": 1920, "delta": [
    {"posTableIndex": 0, "slice": 0, "elementDelta": 0},
    {"posTableIndex": 255, "slice": 0, "elementDelta": 512},
    {"posTableIndex": 0, "slice": 1, "elementDelta": 0},
    {"posTableIndex": 0, "slice": 1, "elementDelta": 6144},
    {"posTableIndex": 0, "slice": 1, "elementDelta": 12288},
    {"posTableIndex": 0, "slice": 1, "elementDelta": 18432}]})";

TEST_F(CommandLine, TellsAllOfAClipToPeopleAndPrograms) {
  const CommandResult text = Run("info clip.mxf --index");
  EXPECT_EQ(text.output.substr(0, sizeof kPage - 1), kPage);
  json records = json::parse(Run("info clip.mxf --index --json").output);
  EXPECT_EQ(records["MXF_PARTITION_INFO"].size(), 4u);
  EXPECT_EQ(records["MXF_PARTITION_INFO"][2], json::parse(kSecondBody));
  EXPECT_EQ(records["INDEX_ENTRY_ARRAY"].size(), 10u);
  EXPECT_EQ(records["INDEX_ENTRY_ARRAY"][8], json::parse(kLastFrameButOne));
  for (const char* list : {"MXF_PARTITION_INFO", "INDEX_ENTRY_ARRAY"})
    records.erase(list);
  EXPECT_EQ(records, json::parse(kRecords)) << records.dump(1);
  EXPECT_FALSE(json::parse(Run("info clip.mxf --json").output).contains("INDEX_ENTRY_ARRAY"));
  EXPECT_EQ(Run("info clip.mxf").output.find("\nIndex\n"), std::string::npos);

  // A name with all that a text in JSON has to escape, and a byte that is no UTF-8.
  WriteBytes(folder_.Path() / "odd\"\\\n\x01 \xFF😀.mxf", Bytes(100));
  const auto failure = json::parse(Run("info odd*.mxf --json").output);
  EXPECT_EQ(failure["result"], 204);
  EXPECT_EQ(failure["processCode"], 200);
  EXPECT_EQ(failure["message"].get<std::string>().find("odd\"\\\n\x01 \uFFFD😀.mxf\n"), 0u)
      << failure["message"];
}

TEST_F(CommandLine, TellsWhatIsUncommonInAClip) {
  ClipSpec other;
  other.rate = Rate::k29_97;
  other.dropFrame = other.waveAudio = other.dataTrack = other.dataElement = true;
  other.bits = 16;
  other.frameLayout = 0;
  other.SetTag(SetKind::kMpegVideoDescriptor, 0, tag::kAspectRatio, {0, 0, 0, 4, 0, 0, 0, 9});
  other.umidSize = 64;
  ClipSpec mute;
  mute.tracks = 1;
  mute.timecodeTracks = 0;
  mute.RemoveTag(SetKind::kAes3Descriptor, 0, tag::kAudioSamplingRate);
  mute.SetTag(SetKind::kMpegVideoDescriptor, 0, tag::kSampleRate, {0, 0, 0, 48, 0, 0, 0, 1});
  ClipSpec lengths;
  lengths.SetTag(SetKind::kTimecodeComponent, 0, tag::kDuration, Big64(12));
  ClipSpec hidden;
  hidden.DropSet(SetKind::kTimelineTrack, 3);
  const std::pair<ClipSpec, std::vector<const char*>> cases[] = {
      {other,
       {"907E (first 32 of 64 bytes)\n", "05AA (first 32 of 64 bytes)\n",
        "Base              30 drop frame\n", "Frame rate        30000/1001 (29.97)\n",
        "Format            48000 Hz, 16 bits\n", "Element           Wave, 3584 bytes with fill\n",
        "Ancillary data    512 bytes with fill\n", "1920 x 540 progressive, 4:9\n"}},
      {mute,
       {"First frame       unknown\n",
        "\nNotices\n                  start, timecode base or duration cannot be read: nothing but "
        "looking is possible\n                  the edit rate is not supported: nothing but "
        "looking "
        "is possible\n                  sampling rate or sample width cannot be read: nothing but "
        "looking is possible\n"}},
      {lengths, {"  the duration says 12 frames, the index holds 10\n"}},
      {hidden, {"  the index holds 4 audio elements a frame, 3 audio tracks were counted\n"}}};
  for (const auto& [spec, lines] : cases) {
    folder_.Write("clip.mxf", BuildClip(spec).bytes);
    const std::string page = Run("info clip.mxf --no-timecode-check").output;
    for (const char* line : lines)
      EXPECT_NE(page.find(line), std::string::npos) << line << page;
  }
}

TEST_F(CommandLine, WritesALogUnlessToldNotTo) {
  const std::string rewrap = "rewrap clip.mxf --track 3=stereo.wav --in 00000000 --yes ";
  EXPECT_EQ(Run(rewrap + "--no-log").status, 0);
  EXPECT_FALSE(Exists("clip_LOG.txt"));
  const CommandResult logged = Run(rewrap + "--method file --buffer 13");
  EXPECT_EQ(logged.status, 0);
  EXPECT_NE(logged.output.find("ラッピングが完了しました。"), std::string::npos);
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
    EXPECT_NE(refused.error.find("タイムコードエラーが検出されました。"), std::string::npos);
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
      Run("--help >/dev/null; touch asked; (until grep -q バックアップ asked; do sleep 0.01; done; "
          "printf '\\003'; sleep 0.2; echo y) | script -qefc '" COMPANION
          " rewrap clip.mxf --silence 3' asked; echo status $?");
  EXPECT_NE(asked.output.find("status 3"), std::string::npos) << asked.output;
  EXPECT_TRUE(IsUntouched());
}

}  // namespace
}  // namespace quorvan::test
