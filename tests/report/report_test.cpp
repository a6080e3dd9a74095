#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "mxf/essence/continuity.h"
#include "platform/fault_seam.h"
#include "platform/path.h"
#include "platform/text.h"
#include "report/report_text.h"
#include "report/rewrap_log.h"
#include "report/timecode_log.h"
#include "state/track_assignment.h"
#include "support/loaded_clip.h"
#include "support/wav_builder.h"

namespace quorvan {
namespace {

using namespace test;

constexpr uid_t kNobody = 65534;
constexpr platform::CalendarTime kNow = {2026, 3, 4, 5, 6, 7, 3};

void PutPath(std::u16string_view path, LoadedClip* clip) {
  char16_t* field = clip->app.info.mxfPath;
  field[path.copy(field, kMxfPathChars - 1)] = 0;
}

WAV_FILE_INFO* Add(LoadedClip* clip, const std::string& name, const WavSpec& spec) {
  const std::u16string path = clip->folder.Write(name, BuildWav(spec).bytes);
  EXPECT_EQ(AddWavFile(path.c_str(), clip->app.info.wavList, clip->app.mxf.base), kWavOk);
  return clip->app.info.wavList->prev;
}

std::string Text(const std::filesystem::path& path) {
  const Bytes bytes = ReadAll(path);
  return {bytes.begin(), bytes.end()};
}

std::string SizeText(std::size_t bytes, std::size_t unit, const char* name) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f %s",
                static_cast<double>(bytes) / static_cast<double>(unit), name);
  return text;
}

std::string Hex(const std::array<std::uint8_t, 32>& umid) {
  std::string hex;
  for (const std::uint8_t byte : umid) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", byte);
    hex += digits;
  }
  return hex;
}

// What the test clips have in common, from the size of the file to the name of the codec.
std::string FactsText(const std::string& size, const LoadedClip& clip) {
  return size + "\r\n作成日: " + platform::ToUtf8(clip.app.mxf.base.creationDateText) +
         "\r\n更新日: 2026/03/04  05:06:07\r\n\r\n"
         "[ ファイルクリエーター ]\r\n製品名: Bench Writer 1.2.3\r\n    OS: Bench\r\n"
         "会社名: Northlight\r\n\r\n"
         "[ MXFファイルメタ情報 ]\r\nMXF version\r\n1.3\r\nメディア固有UMID\r\n" +
         Hex(kMaterialUmid) + "\r\n\r\n素材UMID\r\n" + Hex(kSourceUmid) + "\r\n\r\nVIDEO\r\n" +
         platform::ToUtf8(clip.app.mxf.video.codecName) + "\r\n";
}

TEST(RewrapLog, TellsWhatWasDoneToEachTrack) {
  LoadedClip clip{ClipSpec()};
  PutPath(u"/clips/テスト.mxf", &clip);
  WavSpec mono;
  mono.bits = 16;
  mono.sampleFrames = 47950;
  mono.timeReference = 36000ull * 48000 + 3 * 1920 + 1000;
  WavSpec stereo;
  stereo.channels = 2;
  stereo.sampleFrames = 4800;
  APP_STATE_INFO& app = clip.app.info;
  ASSERT_EQ(AssignWavFile(&app, Add(&clip, "mono.wav", mono), 1), AssignResult::kAssigned);
  ASSERT_EQ(AssignWavFile(&app, Add(&clip, "stereo.wav", stereo), 2), AssignResult::kAssigned);
  clip.app.tracks.rewrapSwitch = {kSwitchOn, kSwitchOn, kSwitchOff, kSwitchOn};
  clip.SetRange(kRewrapRange, 2, 7);
  const std::string folder = clip.folder.Path().string();
  EXPECT_EQ(RewrapLogText(app, kNow),
            "再ラップ処理ログ [MXF Quorvan 1.7.8.3]\r\n作成日: 2026/03/04  05:06:07\r\n\r\n"
            "[ 書込み方式 ]\r\nメモリマッピング\r\n\r\n"
            "[ 対象ファイル ]\r\nテスト.mxf\r\n/clips/テスト.mxf\r\n" +
                FactsText(SizeText(clip.clip.bytes.size(), 1024, "KB"), clip) +
                "50.00Mb/s\r\n25i\r\n\r\n"
                "AUDIO\r\nAES3/BWF LPCM\r\n48000Hz\r\n24bit\r\n\r\nTRACKS\r\n4\r\n\r\n"
                "NDE = 6\r\nAudio Element Size = 6144\r\nData Element size  = 0\r\n"
                "Segment Max frame  = 5\r\n\r\nタイムコード\r\n25 NDF\r\n"
                "開始 = 10:00:00:00   900000 frames\r\n終了 = 10:00:00:09   900009 frames\r\n"
                "長さ = 00:00:00:10       10 frames\r\n\r\n"
                "[ 処理範囲 ]\r\nIN  10:00:00:02\r\nOUT 10:00:00:07\r\nDUR 00:00:00:06\r\n\r\n"
                "[ トラック割当てファイル詳細 ]\r\n"
                "Track 1\r\n\t無音を書込みました。\r\n\r\n"
                "Track 2\r\n\tmono.wav\r\n\t" +
                folder +
                "\r\n\t1/1ch  16bit  48000Hz\r\n"
                "\t開始 = 10:00:00:03 *1000  1728006760 samples\r\n"
                "\t終了 = 10:00:01:02 *0970  1728054710 samples\r\n"
                "\t長さ = 00:00:00:24 *-030       47950 samples\r\n\r\n"
                "Track 3\r\n\t未処理\r\n\r\n"
                "Track 4\r\n\tstereo.wav\r\n\t" +
                folder +
                "\r\n\t2/2ch  24bit  48000Hz\r\n"
                "\t開始 = 00:00:00:00 *0000           0 samples\r\n"
                "\t終了 = 00:00:00:02 *0960        4800 samples\r\n"
                "\t長さ = 00:00:00:02 *0960        4800 samples\r\n\r\n");
  app.jobStartTime = {2026, 3, 4, 1, 2, 3, 3};
  app.jobEndTime = kNow;
  EXPECT_EQ(RewrapLogEnd(app),
            "\r\n-------------------------------------------------\r\n"
            "処理開始: 01:02;03\r\n処理終了: 05:06:07\r\n");
}

TEST(RewrapLog, CountsDropFrameAcrossMidnight) {
  ClipSpec spec;
  spec.rate = Rate::k59_94;
  spec.dropFrame = true;
  spec.start = {23, 59, 59, 0};
  spec.frames = 4000;
  spec.framesPerPartition = 2000;
  spec.tracks = 1;
  spec.bits = 16;
  spec.elementKag = 0;
  spec.frameLayout = 0;
  LoadedClip clip(spec);
  clip.app.info.useFileIo = 1;
  PutPath(u"a.mxf", &clip);
  EXPECT_EQ(RewrapLogText(clip.app.info, kNow),
            "再ラップ処理ログ [MXF Quorvan 1.7.8.3]\r\n作成日: 2026/03/04  05:06:07\r\n\r\n"
            "[ 書込み方式 ]\r\n標準ファイル入出力\r\n\r\n"
            "[ 対象ファイル ]\r\na.mxf\r\na.mxf\r\n" +
                FactsText(SizeText(clip.clip.bytes.size(), 1024 * 1024, "MB"), clip) +
                "50.00Mb/s\r\n59.94p\r\n\r\n"
                "AUDIO\r\nAES3/BWF LPCM\r\n48000Hz\r\n16bit\r\n\r\nTRACKS\r\n1\r\n\r\n"
                "NDE = 3\r\nAudio Element Size = 1622\r\nData Element size  = 0\r\n"
                "Segment Max frame  = 2000\r\n\r\nタイムコード\r\n59.94 DF\r\n"
                "開始 = 23:59:59.00  5178756 frames\r\n終了 = 00:01:05.43     3939 frames\r\n"
                "長さ = 00:01:06.44     4000 frames\r\n\r\n"
                "[ 処理範囲 ]\r\nIN  23:59:59.00\r\nOUT 00:01:05.43\r\nDUR 00:01:06.44\r\n\r\n"
                "[ トラック割当てファイル詳細 ]\r\nTrack 1\r\n\t未処理\r\n\r\n");
}

TEST(RewrapLog, StandsBesideTheClipAndReplacesOnlyItsPredecessor) {
  LoadedClip clip{ClipSpec()};
  APP_STATE_INFO& app = clip.app.info;
  const auto log = clip.folder.Path() / "clip_LOG.txt";
  std::uint32_t error = 0;
  // A link of the log's name that leads to the clip.
  std::filesystem::create_symlink(clip.folder.Path() / "clip.mxf", log);
  ASSERT_TRUE(WriteRewrapLog(&app, {}, &error));
  EXPECT_EQ(platform::ToUtf8(RewrapLogPath(app.mxfPath)), log.string());
  EXPECT_TRUE(clip.Now() == clip.clip.bytes);
  EXPECT_FALSE(std::filesystem::is_symlink(log));
  EXPECT_GT(app.jobEndTime.year, 2000);
  const std::string first = Text(log);
  EXPECT_EQ(first.find("再ラップ処理ログ"), 0u);
  EXPECT_NE(first.find("\r\n処理終了: "), std::string::npos);
  ASSERT_TRUE(WriteRewrapLog(&app, {}, &error));
  EXPECT_EQ(Text(log).size(), first.size());
  const std::filesystem::directory_iterator files(clip.folder.Path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 2) << "something was left behind";

  PutPath(clip.folder.PathOf("a.b/clip"), &clip);
  EXPECT_FALSE(WriteRewrapLog(&app, {}, &error));
  EXPECT_EQ(RewrapLogFailureMessage(app.mxfPath, error),
            u"clip\n\nログファイルを作成できません。\n保存場所・接続デバイスを確認して下さい。\n"
            u"ERR: 2");
  std::filesystem::create_directory(clip.folder.Path() / "a.b");
  ASSERT_TRUE(WriteRewrapLog(&app, {}, &error));
  const std::u16string path = RewrapLogPath(app.mxfPath);
  EXPECT_EQ(path, clip.folder.PathOf("a.b/clip_LOG.txt"));
  EXPECT_EQ(RewrapCompletionMessage(app.mxfPath, path),
            u"再ラップ処理が完了しました。\n詳細ログをMXFファイルと同じ場所に作成しましたのでご確"
            u"認ください。\n\nファイル名\nclip\n場所\n" +
                clip.folder.PathOf("a.b"));
}

TEST(Logs, NeverTakeThePlaceOfTheClipOrASource) {
  LoadedClip clip{ClipSpec()};
  std::uint32_t error = 0;
  EXPECT_FALSE(WriteTimecodeLog(clip.path, clip.app.info, &error));
  std::filesystem::create_hard_link(clip.folder.Path() / "clip.mxf", clip.folder.Path() / "b.txt");
  EXPECT_FALSE(WriteTimecodeLog(clip.folder.PathOf("b.txt"), clip.app.info, &error));
  // A clip that was opened through a link.
  std::filesystem::create_symlink("clip.mxf", clip.folder.Path() / "link.mxf");
  PutPath(clip.folder.PathOf("link.mxf"), &clip);
  EXPECT_FALSE(WriteTimecodeLog(clip.path, clip.app.info, &error));
  PutPath(clip.path, &clip);
  EXPECT_TRUE(clip.Now() == clip.clip.bytes);
  Add(&clip, "clip_LOG.txt", WavSpec());
  const std::string source = Text(clip.folder.Path() / "clip_LOG.txt");
  EXPECT_FALSE(WriteRewrapLog(&clip.app.info, {}, &error));
  EXPECT_EQ(Text(clip.folder.Path() / "clip_LOG.txt"), source);
  // Nor of anything else that begins as MXF or RIFF.
  for (const char* start : {"\x06\x0E\x2B\x34", "RIFF", "RF64"}) {
    const std::u16string other = clip.folder.Write("other", Bytes(start, start + 4));
    EXPECT_FALSE(WriteTimecodeLog(other, clip.app.info, &error));
    EXPECT_EQ(ReadAll(clip.folder.Path() / "other").size(), 4u);
  }
}

// A folder that takes no new file, with a longer log in it; and a clip whose log can have no name.
TEST(Logs, AreOverwrittenInPlaceWhereNoFileCanBeMade) {
  LoadedClip clip{ClipSpec()};
  APP_STATE_INFO& app = clip.app.info;
  const auto log = clip.folder.Path() / "clip_LOG.txt";
  ASSERT_TRUE(WriteBytes(log, Bytes(100000, 1)));
  using std::filesystem::perms;
  std::filesystem::permissions(log, perms::all);
  std::filesystem::permissions(clip.folder.Path(), perms::all & ~perms::owner_write &
                                                       ~perms::group_write & ~perms::others_write);
  const bool root = geteuid() == 0;  // who may write everywhere
  ASSERT_EQ(root ? seteuid(kNobody) : 0, 0);
  std::uint32_t error = 0;
  const bool written = WriteRewrapLog(&app, u"notice", &error);
  ASSERT_EQ(root ? seteuid(0) : 0, 0);
  std::filesystem::permissions(clip.folder.Path(), perms::owner_all);
  ASSERT_TRUE(written);
  const std::string text = Text(log);
  EXPECT_EQ(text.find('\x01'), std::string::npos);
  EXPECT_TRUE(text.ends_with("\r\n[ UMID ]\r\nnotice\r\n"));
  EXPECT_TRUE(CanHaveRewrapLog(app.mxfPath));
  EXPECT_FALSE(CanHaveRewrapLog(clip.folder.PathOf(std::string(250, 'a') + ".mxf")));
}

TEST(Logs, ComeWholeOrNotAtAll) {
  LoadedClip clip{ClipSpec()};
  const auto write = [&](const std::string& name, std::uint32_t* error) {
    return WriteTimecodeLog(clip.folder.PathOf(name), clip.app.info, error);
  };
  const auto files = [&] {
    const std::filesystem::directory_iterator all(clip.folder.Path());
    return std::distance(begin(all), end(all));
  };
  std::uint32_t error = 0;
  const std::string longest = std::string(251, 'a') + ".txt";
  ASSERT_TRUE(write(longest, &error)) << error;
  const std::string first = Text(clip.folder.Path() / longest);
  signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  rlimit small = limit;
  small.rlim_cur = 100;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const bool written = write(longest, &error);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  EXPECT_FALSE(written);
  EXPECT_EQ(error, static_cast<std::uint32_t>(EFBIG));
  EXPECT_EQ(Text(clip.folder.Path() / longest), first);
  std::filesystem::create_directory(clip.folder.Path() / "folder.txt");
  EXPECT_FALSE(write("folder.txt", &error));
  EXPECT_EQ(error, static_cast<std::uint32_t>(EISDIR));
  EXPECT_EQ(files(), 3) << "something was left behind";
  // What is no file stays, also where a link leads to it.
  ASSERT_EQ(mkfifo((clip.folder.Path() / "pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("pipe", clip.folder.Path() / "to_pipe.txt");
  for (const char* name : {"pipe", "to_pipe.txt", "clip.mxf"}) {
    EXPECT_FALSE(write(name, &error)) << name;
    EXPECT_EQ(error, static_cast<std::uint32_t>(EEXIST)) << name;
  }
  EXPECT_EQ(files(), 5);
  // A link in the way of the temporary name.
  std::filesystem::create_symlink("clip.mxf", clip.folder.Path() / "quorvan_log.part0");
  EXPECT_TRUE(write("b.txt", &error));
  EXPECT_TRUE(clip.Now() == clip.clip.bytes);
  EXPECT_EQ(files(), 7);
}

TEST(Logs, NameTheRate) {
  constexpr std::string_view kRates[] = {"24",    "25",    "30",    "50", "60",
                                         "23.98", "29.97", "59.94", ""};
  MXF_TIMECODE_INFO timecode{};
  for (const std::string_view rate : kRates) {
    EXPECT_EQ(RateLabel(timecode), rate);
    timecode.dropFrame = 1;
    EXPECT_EQ(DropLabel(timecode), rate == "29.97" || rate == "59.94" ? "DF" : "NDF") << rate;
    timecode.dropFrame = 0;
    EXPECT_EQ(DropLabel(timecode), "NDF") << rate;
    ++timecode.rateIndex;
  }
}

TEST(TimecodeLog, ListsEveryBreak) {
  ClipSpec spec;
  spec.rate = Rate::k59_94;
  spec.dropFrame = true;
  spec.frameLayout = 2;
  LoadedClip clip(spec);
  APP_STATE_INFO& app = clip.app.info;
  PutPath(u"/clips/a.mxf", &clip);
  TIMECODE_ERROR_INFO breaks[4] = {{1078920, 1078925, 2, 0, nullptr, nullptr},
                                   {2589408, 2589407, 3, 4, nullptr, nullptr},
                                   {7, 7, 4, 70000, nullptr, nullptr},
                                   {7, 0xFFFFFFFE, 1, 6, nullptr, nullptr}};
  clip.app.mxf.timecode.errorCount = 4;
  TIMECODE_ERROR_INFO* last = clip.app.mxf.timecode.errorList;
  for (TIMECODE_ERROR_INFO& node : breaks) {
    last->next = &node;
    last = &node;
  }
  const auto path = clip.folder.Path() / "log.txt";
  std::uint32_t error = 0;
  ASSERT_TRUE(WriteTimecodeLog(clip.folder.PathOf("log.txt"), app, &error));
  EXPECT_FALSE(WriteTimecodeLog(clip.folder.PathOf("none/log.txt"), app, &error));
  EXPECT_EQ(error, 2u);
  clip.app.mxf.timecode.errorList->next = nullptr;
  const std::string log = Text(path);
  EXPECT_EQ(log.find("LTCエラーログ作成日 [MXF Quorvan 1.7.8.3]\r\n作成日: "), 0u);
  const std::string tail = log.substr(log.find("想定フレーム数"));
  EXPECT_EQ(tail,
            "想定フレーム数   = 10\r\n実際のフレーム数 = 10\r\n\r\n\r\nLTCエラー数: 4\r\n"
            "この数値が全フレームと同じかそれに近い場合、エレメントが壊れている可能性があります。"
            "\r\n\r\n#       発生場所     再開ＴＣ     積算         状態\r\n"
            "     0  10:00:00.00  10:00:00.10  00:00:00.00  inc\r\n"
            "     1  24:00:00.00  23:59:59.58  00:00:00.04  dec\r\n"
            "     2  00:00:00.14  00:00:00.14  00:19:27.52  still\r\n"
            "     3  00:00:00.14  --:--:--.--  00:00:00.06  **\r\n");
}

TEST(TimecodeLog, StatesTheClip) {
  LoadedClip clip{ClipSpec()};
  PutPath(u"/clips/a.mxf", &clip);
  const std::string head = TimecodeLogHead(clip.app.info, kNow);
  const std::string created = platform::ToUtf8(clip.app.mxf.base.creationDateText);
  EXPECT_EQ(head.find("LTCエラーログ作成日 [MXF Quorvan 1.7.8.3]\r\n作成日: 2026/03/04  05:06:07"
                      "\r\n\r\n< MXF情報 >\r\na.mxf\r\n/clips\r\n"),
            0u);
  EXPECT_NE(head.find("KB\r\n\r\n作成日: " + created +
                      "\r\n更新日: 2026/03/04  05:06:07\r\n\r\n製品名: Bench Writer 1.2.3\r\n"
                      "    OS: Bench\r\n会社名: Northlight\r\n\r\nMXF version = 1.3\r\n\r\n"
                      "Video Codec        = " +
                      platform::ToUtf8(clip.app.mxf.video.codecName) +
                      "\r\nBit Rate           = 50.00 Mb/s\r\nFPS                = 25p\r\n"
                      "Audio Sample       = 48000\r\nAudio Bit Depth    = 24\r\n"
                      "Tracks             = 4\r\nDelta Entry        = 6\r\n"
                      "Audio Element size = 6144\r\nData Element size  = 0\r\n"
                      "Segment Max frame  = 5\r\n\r\nフレームレート = 25NDF\r\n"
                      "開始(フレーム) = 10:00:00:00 (900000)\r\n"
                      "終了(フレーム) = 10:00:00:09 (900009)\r\n"
                      "長さ(フレーム) = 00:00:00:10 (10)\r\n\r\n想定フレーム数   = 10\r\n"),
            std::string::npos)
      << head;
  // The scan letter: none, where the picture tells nothing.
  clip.app.mxf.video.frameLayout = 0;
  EXPECT_NE(TimecodeLogHead(clip.app.info, kNow).find("FPS                = 25\r\n"),
            std::string::npos);
  clip.app.mxf.video.codecIndex = 6;
  EXPECT_NE(TimecodeLogHead(clip.app.info, kNow).find("FPS                = 25p\r\n"),
            std::string::npos);
}

}  // namespace
}  // namespace quorvan
