#include "job/worker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "../rewrite/call_hook.h"
#include "job/job_steps.h"
#include "job/process_table.h"
#include "mxf/essence/continuity.h"
#include "platform/text.h"
#include "support/loaded_clip.h"

namespace quorvan {
namespace {

using namespace test;

struct Received {
  JobMessage message;
  std::int32_t result;
  std::u16string caption;
  std::u16string text;
};

// A face that runs one job on a thread of its own and keeps what it is told.
class Face {
 public:
  explicit Face(LoadedClip* clip) : app_(clip->app.info) {
    app_.ui.progressDialog = [this](const JobReport& report) {
      received.push_back({report.message, report.result,
                          report.caption == nullptr ? u"<none>" : report.caption,
                          report.text == nullptr ? u"<none>" : report.text});
      if (whenTold) whenTold(report);
    };
  }

  const Received& Run(JobKind kind) {
    received.clear();
    app_.jobKind = kind;
    if (kind == kAnalysisJob) {
      app_.mxfFile = platform::File::Open(app_.mxfPath, platform::OpenMode::kReadAlone);
    }
    app_.workerThread = std::thread(WorkerThread, &app_);
    app_.workerThread.join();
    app_.mxfFile.Close();
    EXPECT_FALSE(received.empty());
    return received.back();
  }

  std::vector<Received> received;
  std::function<void(const JobReport&)> whenTold;

 private:
  APP_STATE_INFO& app_;
};

void PrepareEveryJob(LoadedClip* clip) {
  AUDIOTRACK_IO_INFO& tracks = clip->app.tracks;
  tracks.rewrapSwitch[0] = tracks.exportSwitch[0] = kSwitchOn;
  tracks.exportCount = 1;
  const std::u16string folder = clip->folder.PathOf(".");
  tracks.exportFolder[folder.copy(tracks.exportFolder, 1023)] = 0;
  std::u16string(u"Track-").copy(tracks.exportName, 255);
}

constexpr std::pair<JobKind, const char16_t*> kJobs[] = {
    {kRewriteJob, u"ラッピング"},
    {kExportJob, u"BWFファイルの書出し"},
    {kLoudnessJob, u"ラウドネス測定"},
};

TEST(Worker, RunsEveryJobAndTellsItsOutcomeOnce) {
  LoadedClip clip{ClipSpec()};
  PrepareEveryJob(&clip);
  Face face(&clip);
  for (const Method method : {Method::kMemoryMapping, Method::kGenericFileIo}) {
    const std::u16string name =
        method == Method::kMemoryMapping ? u"Memory Mapping" : u"Generic File I/O";
    clip.app.info.useFileIo = method;
    for (const auto& [kind, title] : kJobs) {
      const Received& done = face.Run(kind);
      EXPECT_EQ(face.received.size(), 1u);
      EXPECT_EQ(done.message, JOB_MSG_DONE);
      EXPECT_EQ(done.caption, u"MXF Lattice Core");
      EXPECT_EQ(done.text, u"clip.mxf\n\n" + std::u16string(title) +
                               u"が完了しました。\n\n\tprocess: " + name);
    }
    EXPECT_EQ(clip.app.mxf.base.processCode, 6000u);
    EXPECT_TRUE(platform::QueryFileInfo(
        clip.folder.PathOf(method == Method::kMemoryMapping ? "Track-1.wav" : "Track-1 1.wav")));
  }
}

TEST(Worker, TellsWhyAJobHasFailed) {
  ClipSpec spec;
  spec.umidSize = 64;
  LoadedClip clip(spec);
  PrepareEveryJob(&clip);
  Face face(&clip);
  clip.app.info.useFileIo = Method::kGenericFileIo;
  const Received umid = face.Run(kRewriteJob);
  EXPECT_EQ(umid.message, JOB_MSG_FAILED);
  EXPECT_EQ(umid.result, 2014);
  EXPECT_EQ(umid.caption, u"ラッピング");
  EXPECT_EQ(
      umid.text,
      u"clip.mxf\n\nラッピング中にエラーが発生しました。\nUMIDのサイズが64バイトになっているた"
      u"め、現行バージョンでの新規生成ができません。\n\n\tERR: 2014  process: Generic File I/O"
      u"\n\nMXFファイルには何も書込んでいません。");

  std::filesystem::remove(platform::ToUtf8(clip.path));
  const Received lost = face.Run(kLoudnessJob);
  EXPECT_EQ(lost.result, 4007);
  EXPECT_NE(lost.text.find(u"\nMXFファイルを開くことができません。\n"), std::u16string::npos);
  // A name as long as names can be: nothing of the message is lost.
  std::u16string name;
  while (name.size() < 250)
    name += u"\xD842\xDFB7";
  name += u".mxf";
  const std::u16string path = u"/none/" + name;
  clip.app.info.mxfPath[path.copy(clip.app.info.mxfPath, kMxfPathChars - 1)] = 0;
  const Received named = face.Run(kExportJob);
  EXPECT_EQ(named.text.find(name + u"\n\n"), 0u);
  EXPECT_NE(named.text.find(u"ERR: 5007"), std::u16string::npos);
}

TEST(Worker, TellsOfACancel) {
  LoadedClip clip{ClipSpec()};
  PrepareEveryJob(&clip);
  Face face(&clip);
  const CallHook operatorStops([&](platform::SystemCall, int) {
    clip.app.tracks.cancel = 1;
    return platform::CallOutcome::kAsEver;
  });
  for (const auto& [kind, title] : kJobs) {
    const Received& told = face.Run(kind);
    EXPECT_EQ(told.message, JOB_MSG_FAILED);
    EXPECT_EQ(told.result, kCancelled);
    EXPECT_EQ(told.text.find(u"MXFファイル\nclip.mxf\n\n" + std::u16string(title) +
                             u"を中断しました。\n\n\tprocess: Memory Mapping"),
              0u);
    EXPECT_TRUE(clip.Now() == clip.clip.bytes);
  }
}

TEST(Worker, AnalysesInTwoPhases) {
  for (const Method method : {Method::kMemoryMapping, Method::kGenericFileIo}) {
    LoadedClip clip{ClipSpec()};
    clip.app.info.useFileIo = method;
    Face face(&clip);
    face.Run(kAnalysisJob);
    ASSERT_EQ(face.received.size(), 2u);
    EXPECT_EQ(face.received[0].message, JOB_MSG_PHASE);
    EXPECT_EQ(face.received[1].message, JOB_MSG_DONE);
    EXPECT_EQ(face.received[1].caption, u"");
    EXPECT_EQ(clip.app.mxf.timecode.useFileIo, method);
    EXPECT_EQ(clip.app.mxf.timecode.progressTotal, 10u);
    EXPECT_EQ(clip.app.mxf.base.processCode, 1000u);
  }
}

TEST(Worker, TellsWhyAClipIsNotLoaded) {
  ClipSpec broken;
  broken.timecodeWords[4] = 0;
  LoadedClip clip(broken);
  Face face(&clip);
  const Received breaks = face.Run(kAnalysisJob);
  EXPECT_EQ(breaks.message, JOB_MSG_FAILED);
  EXPECT_EQ(breaks.result, kContinuityBreaks);
  EXPECT_EQ(breaks.text,
            u"clip.mxf\n\nこのファイルはロードできません。\n\nタイムコードエラーが検出されました。"
            u"\r\nログファイルを作成しますか？\n\nsection: Timecode continuity check\nERR: 1009");
  clip.app.info.noTimecodeCheck = 1;
  EXPECT_EQ(face.Run(kAnalysisJob).message, JOB_MSG_DONE);

  ASSERT_TRUE(WriteBytes(platform::ToUtf8(clip.path), Bytes(100000)));
  const Received refused = face.Run(kAnalysisJob);
  EXPECT_EQ(face.received.size(), 1u);
  EXPECT_EQ(refused.result, 204);
  EXPECT_EQ(
      refused.text,
      u"clip.mxf\n\nこのファイルはロードできません。\n\nランダム・インデックス・テーブルが見つか"
      u"りません。\n\n処理セクション: Acquire RANDOM-INDEX TALBLE\nERR: 204  process: Memory "
      u"Mapping");
}

// One number for an audio descriptor that is missing and for one of another width.
TEST(Worker, TellsWhatIsWrongWithAnAudioDescriptor) {
  ClipSpec missing, wide;
  missing.tracks = wide.tracks = 1;
  missing.DropSet(SetKind::kAes3Descriptor);
  wide.SetTag(SetKind::kAes3Descriptor, 0, tag::kQuantizationBits, Big32(20));
  LoadedClip clip{ClipSpec()};
  Face face(&clip);
  const std::pair<ClipSpec, std::u16string_view> cases[] = {
      {missing, u"オーディオディスクリプターが見つかりません。"},
      {wide, u"サンプルビット数が対応していません。"}};
  for (const auto& [spec, text] : cases) {
    ASSERT_TRUE(WriteBytes(platform::ToUtf8(clip.path), BuildClip(spec).bytes));
    const Received& refused = face.Run(kAnalysisJob);
    EXPECT_EQ(refused.result, kAudioDescriptorUnfit);
    EXPECT_NE(refused.text.find(text), std::u16string::npos);
  }
}

// The check can be left out by the operator; a clip whose analysis was stopped cannot be loaded.
TEST(Worker, AsksWhatToDoWithACheckThatWasStopped) {
  for (const bool inCheck : {true, false}) {
    LoadedClip clip{ClipSpec()};
    Face face(&clip);
    std::atomic<bool> stops = !inCheck;
    face.whenTold = [&](const JobReport&) { stops = true; };
    const CallHook operatorStops([&](platform::SystemCall, int) {
      clip.app.mxf.timecode.stopRequest = stops ? 1 : 0;
      return platform::CallOutcome::kAsEver;
    });
    const Received& told = face.Run(kAnalysisJob);
    EXPECT_EQ(told.result, kCancelled);
    const std::u16string text = u"clip.mxf\n\n解析を中断しました。";
    EXPECT_EQ(told.text, inCheck ? text + u"\nこのままロードしますか？" : text);
  }
}

// With the numbers of the job's stage; those of a measurement are the export's.
TEST(JobCheck, RefusesWhatTheEnginesWould) {
  ClipSpec untimed;
  untimed.timecodeTracks = 0;
  ClipSpec longUmids;
  longUmids.umidSize = 64;
  LoadedClip clip{longUmids}, unfit(untimed);
  EXPECT_EQ(ClipRefusal(clip.app.info), u"");
  EXPECT_EQ(ClipRefusal(unfit.app.info), FailureText(2000, 2016));
  EXPECT_TRUE(NeedsOldIdentity(clip.app.info));
  EXPECT_FALSE(NeedsOldIdentity(unfit.app.info));
  struct Case {
    JobKind kind;
    std::int32_t stage;
    std::int32_t withNothingOn;
  };
  const Case cases[] = {
      {kRewriteJob, 2000, 2015}, {kExportJob, 4000, 4015}, {kLoudnessJob, 4000, 0}};
  for (const Case& c : cases) {
    EXPECT_EQ(CheckClipFor(c.kind, clip.app.info).result, 0);
    EXPECT_EQ(CheckClipFor(c.kind, unfit.app.info).result, c.stage + kNoRange);
    EXPECT_EQ(PrepareJob(c.kind, &clip.app.info).result, c.withNothingOn);
  }
  PrepareEveryJob(&clip);
  for (const RangeFields& range : {kRewrapRange, kExportRange, kLoudnessRange})
    clip.SetRange(range, 3, 2);
  for (const Case& c : cases) {
    EXPECT_EQ(PrepareJob(c.kind, &clip.app.info).result, c.stage + kBadRange);
  }
}

TEST(StageText, FollowsTheStageUntilItIsStopped) {
  LoadedClip clip{ClipSpec()};
  APP_STATE_INFO& app = clip.app.info;
  std::vector<std::u16string> shown;
  std::atomic<std::size_t> count = 0;
  app.ui.stageTextControl = [&](std::u16string_view text) {
    shown.emplace_back(text);
    ++count;
  };
  app.mxf->processCode = 300;
  app.stageThreadStop = 0;
  app.stageThread = std::thread(StageTextThread, &app);
  while (count < 1)
    std::this_thread::yield();
  app.mxf->processCode = 1000;
  while (count < 2)
    std::this_thread::yield();
  app.stageThreadStop = 1;
  app.stageThread.join();
  ASSERT_EQ(shown.size(), 2u);
  EXPECT_EQ(shown[0], u"オペレーショナルパターン / ラッピング形式 / アンシラリデータの有無を確認");
  EXPECT_EQ(shown[1], u"インデックステーブルとタイムコードを検証しています...");
}

}  // namespace
}  // namespace quorvan
