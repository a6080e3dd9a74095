#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "platform/path.h"
#include "platform/text.h"
#include "report/report_text.h"
#include "report/rewrap_log.h"
#include "report/timecode_log.h"
#include "state/clip_text.h"
#include "state/track_assignment.h"
#include "support/call_hook.h"
#include "support/golden.h"
#include "support/loaded_clip.h"
#include "support/wav_builder.h"

namespace quorvan {
namespace {

using namespace test;
using namespace std::string_literals;

constexpr platform::CalendarTime kNow = {2026, 3, 4, 5, 6, 7, 3};

struct LogClip : LoadedClip {
  explicit LogClip(const ClipSpec& description = {}) : LoadedClip(description) {}

  std::filesystem::path At(const std::string& name) const { return folder.Path() / name; }

  std::string Text(const std::string& name) const {
    const Bytes bytes = ReadAll(At(name));
    return {bytes.begin(), bytes.end()};
  }

  std::ptrdiff_t Files() const {
    const std::filesystem::directory_iterator files(folder.Path());
    return std::distance(begin(files), end(files));
  }

  void PutPath(std::u16string_view text) {
    app.info.mxfPath[text.copy(app.info.mxfPath, kMxfPathChars - 1)] = 0;
  }

  WAV_FILE_INFO* Add(const std::string& name, const WavSpec& wav) {
    const std::u16string file = folder.Write(name, BuildWav(wav).bytes);
    EXPECT_EQ(AddWavFile(file.c_str(), app.info.wavList, app.mxf.base), kWavOk);
    return app.info.wavList->prev;
  }

  // Write a log: the system's number of the reason when there is none.
  std::uint32_t WriteRewrap(std::u16string_view notice = {}) {
    std::uint32_t error = 0;
    return WriteRewrapLog(&app.info, notice, &error) ? 0 : error;
  }
  std::uint32_t WriteBreaks(const std::string& name) {
    std::uint32_t error = 0;
    return WriteTimecodeLog(folder.PathOf(name), app.info, &error) ? 0 : error;
  }

  // A page with words for what differs from run to run.
  std::string Neutral(std::string page) const {
    const std::string size = FileSizeText(clip.bytes.size());
    for (const auto& [text, word] :
         {std::pair{folder.Path().string(), "<folder>"}, {size, "<size>"}, {"\\"s, "/"}}) {
      for (std::size_t at = 0; (at = page.find(text)) != page.npos;)
        page.replace(at, text.size(), word);
    }
    return page;
  }
};

TEST(RewrapLog, TellsWhatWasDoneToEachTrack) {
  LogClip clip;
  clip.PutPath(u"/clips/テスト.mxf");
  const WavSpec mono{
      .bits = 16, .sampleFrames = 47950, .timeReference = 36000ull * 48000 + 3 * 1920 + 1000};
  const WavSpec stereo{.channels = 2, .sampleFrames = 4800};
  APP_STATE_INFO& app = clip.app.info;
  ASSERT_EQ(AssignWavFile(&app, clip.Add("mono.wav", mono), 1), AssignResult::kAssigned);
  ASSERT_EQ(AssignWavFile(&app, clip.Add("stereo.wav", stereo), 2), AssignResult::kAssigned);
  clip.app.tracks.rewrapSwitch = {kSwitchOn, kSwitchOn, kSwitchOff, kSwitchOn};
  clip.SetRange(kRewrapRange, 2, 7);
  app.jobStartTime = {2026, 3, 4, 1, 2, 3, 3};
  app.jobEndTime = kNow;
  EXPECT_EQ(clip.Neutral(RewrapLogText(app, kNow) + RewrapLogEnd(app)),
            GoldenText("report/golden/rewrap_log.txt"));
}

TEST(RewrapLog, CountsDropFrameAcrossMidnight) {
  LogClip clip({.rate = Rate::k59_94,
                .dropFrame = true,
                .start = {23, 59, 59, 0},
                .frames = 4000,
                .framesPerPartition = 2000,
                .tracks = 1,
                .bits = 16,
                .elementKag = 0,
                .frameLayout = 0});
  clip.app.info.useFileIo = Method::kGenericFileIo;
  clip.PutPath(u"a.mxf");
  EXPECT_EQ(clip.Neutral(RewrapLogText(clip.app.info, kNow)),
            GoldenText("report/golden/rewrap_log_drop_frame.txt"));
}

TEST(RewrapLog, StandsBesideTheClipAndReplacesOnlyItsPredecessor) {
  LogClip clip;
  APP_STATE_INFO& app = clip.app.info;
  const auto log = clip.At("clip_LOG.txt");
  // A link of the log's name that leads to the clip, where there are links.
  MakeLink(clip.At("clip.mxf"), log);
  const platform::CalendarTime before = platform::LocalTimeNow();
  ASSERT_EQ(clip.WriteRewrap(), 0u);
  const std::string end = TimeText(app.jobEndTime);
  EXPECT_TRUE(end == TimeText(before) || end == TimeText(platform::LocalTimeNow())) << end;
  const std::string first = clip.Text("clip_LOG.txt");
  EXPECT_TRUE(first.ends_with("\r\n処理終了: " + end + "\r\n"));
  EXPECT_TRUE(clip.Now() == clip.clip.bytes);
  EXPECT_FALSE(std::filesystem::is_symlink(log));
  ASSERT_EQ(clip.WriteRewrap(), 0u);
  EXPECT_EQ(clip.Text("clip_LOG.txt").size(), first.size());
  EXPECT_EQ(clip.Files(), 2) << "something was left behind";

  clip.PutPath(clip.folder.PathOf("a.b/clip"));
  ASSERT_NE(clip.WriteRewrap(), 0u);
  std::u16string told = RewrapLogFailureMessage(app.mxfPath, 2) + u"\n===\n";
  std::filesystem::create_directory(clip.At("a.b"));
  ASSERT_EQ(clip.WriteRewrap(), 0u);
  const std::u16string path = RewrapLogPath(app.mxfPath);
  EXPECT_EQ(path, clip.folder.PathOf("a.b/clip_LOG.txt"));
  told += RewrapCompletionMessage(app.mxfPath, path) + u"\n";
  EXPECT_EQ(clip.Neutral(platform::ToUtf8(told)), GoldenText("report/golden/messages.txt"));
}

TEST(Logs, NeverTakeThePlaceOfTheClipOrASource) {
  LogClip clip;
  std::filesystem::create_hard_link(clip.At("clip.mxf"), clip.At("b.txt"));
  EXPECT_NE(clip.WriteBreaks("clip.mxf"), 0u);
  EXPECT_NE(clip.WriteBreaks("b.txt"), 0u);
  // A clip that was opened through a link.
  MakeLink("clip.mxf", clip.At("link.mxf"));
  clip.PutPath(clip.folder.PathOf("link.mxf"));
  EXPECT_NE(clip.WriteBreaks("clip.mxf"), 0u);
  clip.PutPath(clip.path);
  EXPECT_TRUE(clip.Now() == clip.clip.bytes);
  clip.Add("clip_LOG.txt", WavSpec());
  const std::string source = clip.Text("clip_LOG.txt");
  EXPECT_NE(clip.WriteRewrap(), 0u);
  EXPECT_EQ(clip.Text("clip_LOG.txt"), source);
  // Nor of anything else that begins as MXF or RIFF.
  for (const char* start : {"\x06\x0E\x2B\x34", "RIFF", "RF64"}) {
    clip.folder.Write("other", Bytes(start, start + 4));
    EXPECT_NE(clip.WriteBreaks("other"), 0u);
    EXPECT_EQ(clip.Text("other"), start);
  }
}

#ifndef _WIN32
constexpr uid_t kNobody = 65534;

// A folder that takes no new file, with a longer log in it; and a clip whose log can have no name.
TEST(Logs, AreOverwrittenInPlaceWhereNoFileCanBeMade) {
  LogClip clip;
  using std::filesystem::perms;
  const auto log = clip.At("clip_LOG.txt");
  ASSERT_TRUE(WriteBytes(log, Bytes(100000, 1)));
  std::filesystem::permissions(log, perms::all);
  std::filesystem::permissions(clip.folder.Path(), static_cast<perms>(0555));
  const bool root = geteuid() == 0;  // who may write everywhere
  ASSERT_EQ(root ? seteuid(kNobody) : 0, 0);
  const std::uint32_t error = clip.WriteRewrap(u"notice");
  ASSERT_EQ(root ? seteuid(0) : 0, 0);
  std::filesystem::permissions(clip.folder.Path(), perms::owner_all);
  ASSERT_EQ(error, 0u);
  const std::string text = clip.Text("clip_LOG.txt");
  EXPECT_EQ(text.find('\x01'), std::string::npos);
  EXPECT_TRUE(text.ends_with("\r\n[ UMID ]\r\nnotice\r\n"));
  EXPECT_EQ(NoRewrapLogMessage(clip.path), u"");
  EXPECT_NE(NoRewrapLogMessage(clip.folder.PathOf(std::string(250, 'a') + ".mxf")), u"");
}
#endif

TEST(Logs, ComeWholeOrNotAtAll) {
  LogClip clip;
  const std::string longest = std::string(251, 'a') + ".txt";
  ASSERT_EQ(clip.WriteBreaks(longest), 0u);
  const std::string first = clip.Text(longest);
  {
    const CallHook full([](platform::SystemCall call, int) {
      return call == platform::SystemCall::kWrite ? platform::CallOutcome::kFails
                                                  : platform::CallOutcome::kAsEver;
    });
    EXPECT_NE(clip.WriteBreaks(longest), 0u);
  }
  EXPECT_EQ(clip.Text(longest), first);
  std::filesystem::create_directory(clip.At("folder.txt"));
  EXPECT_NE(clip.WriteBreaks("folder.txt"), 0u);
  EXPECT_EQ(clip.WriteBreaks("clip.mxf"), platform::NameTakenError());
  EXPECT_EQ(clip.Files(), 3) << "something was left behind";
  // A link in the way of the temporary name.
  const bool hasLink = MakeLink("clip.mxf", clip.At("quorvan_log.part0"));
  EXPECT_EQ(clip.WriteBreaks("b.txt"), 0u);
  EXPECT_TRUE(clip.Now() == clip.clip.bytes);
  EXPECT_EQ(clip.Files(), hasLink ? 5 : 4);
#ifndef _WIN32
  // What is no file stays, also where a link leads to it.
  ASSERT_EQ(mkfifo(clip.At("pipe").c_str(), 0600), 0);
  ASSERT_TRUE(MakeLink("pipe", clip.At("to_pipe.txt")));
  for (const char* name : {"pipe", "to_pipe.txt"})
    EXPECT_EQ(clip.WriteBreaks(name), platform::NameTakenError()) << name;
  EXPECT_EQ(clip.Files(), 7);
#endif
}

// Both logs by far longer than what is written at a time.
TEST(Logs, LoseNothingWhenTheyAreLong) {
  LogClip clip({.tracks = 24});
  APP_STATE_INFO& app = clip.app.info;
  WAV_FILE_INFO* wav = clip.Add("a.wav", WavSpec());
  const std::u16string path = u"/" + std::u16string(1000, u'長') + u"/a.wav";
  wav->filePath[path.copy(wav->filePath, std::size(wav->filePath) - 1)] = 0;
  clip.app.tracks.wav.fill(wav);
  clip.app.tracks.rewrapSwitch.fill(kSwitchOn);
  std::vector<TIMECODE_ERROR_INFO> breaks(3000);
  std::string lines;
  TIMECODE_ERROR_INFO* last = clip.app.mxf.timecode.errorList;
  for (std::uint32_t i = 0; i < breaks.size(); ++i) {
    breaks[i] = {i, i + 1, 2, i, nullptr, nullptr};
    lines += TimecodeLogLine(app, i, breaks[i]);
    last = last->next = &breaks[i];
  }
  ASSERT_EQ(clip.WriteRewrap(), 0u);
  ASSERT_EQ(clip.WriteBreaks("breaks.txt"), 0u);
  clip.app.mxf.timecode.errorList->next = nullptr;
  // What both say of the present time lies in front of this.
  const auto rest = [](const std::string& text) { return text.substr(text.find("製品名")); };
  EXPECT_TRUE(rest(clip.Text("clip_LOG.txt")) ==
              rest(RewrapLogText(app, kNow) + RewrapLogEnd(app)));
  EXPECT_TRUE(rest(clip.Text("breaks.txt")) == rest(TimecodeLogHead(app, kNow) + lines));
}

TEST(Logs, NameRateAndScan) {
  MXF_TIMECODE_INFO timecode{};
  std::string labels;
  for (; timecode.rateIndex < 9; ++timecode.rateIndex) {
    labels += std::string(RateLabel(timecode)) + ' ';
    timecode.dropFrame = 0;
    labels += std::string(DropLabel(timecode)) + ' ';
    timecode.dropFrame = 1;
    labels += std::string(DropLabel(timecode)) + '\n';
  }
  EXPECT_EQ(labels, GoldenText("report/golden/rate_labels.txt"));
  // What stands on a line of both logs behind `start`.
  const auto line = [](const std::string& log, const std::string& start) {
    const std::size_t at = log.find(start) + start.size();
    return log.substr(at, log.find('\r', at) - at);
  };
  std::string scans;
  LogClip clip;
  for (std::uint8_t codec = 4; codec < 7; ++codec) {
    for (std::uint8_t frameLayout = 0; frameLayout < 3; ++frameLayout) {
      clip.app.mxf.video.codecIndex = codec;
      clip.app.mxf.video.frameLayout = frameLayout;
      scans += line(RewrapLogText(clip.app.info, kNow), "Mb/s\r\n") + ' ' +
               line(TimecodeLogHead(clip.app.info, kNow), "FPS                = ") + '\n';
    }
  }
  EXPECT_EQ(scans,
            "25p 25\n25i 25p\n25p 25i\n25i 25p\n25i 25p\n25i 25i\n25i 25p\n25i 25p\n25i 25i\n");
}

TEST(TimecodeLog, ListsEveryBreak) {
  LogClip clip({.rate = Rate::k59_94, .dropFrame = true, .frameLayout = 2});
  clip.PutPath(u"/clips/a.mxf");
  clip.app.mxf.timecode.errorCount = 4;
  std::string page = TimecodeLogHead(clip.app.info, kNow);
  std::uint32_t number = 0;
  for (const TIMECODE_ERROR_INFO& each :
       {TIMECODE_ERROR_INFO{1078920, 1078925, 2, 0, nullptr, nullptr},
        {2589408, 2589407, 3, 4, nullptr, nullptr},
        {7, 7, 4, 70000, nullptr, nullptr},
        {0, 0xFFFFFFFE, 1, 6, nullptr, nullptr}})
    page += TimecodeLogLine(clip.app.info, number++, each);
  EXPECT_EQ(clip.Neutral(page), GoldenText("report/golden/timecode_log.txt"));
}

}  // namespace
}  // namespace quorvan
