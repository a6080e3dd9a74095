#include "job/worker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>

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

  // Runs the job; `meanwhile` runs on this thread.
  const Received& Run(JobKind kind, const std::function<void()>& meanwhile = {}) {
    received.clear();
    app_.jobKind = kind;
    if (kind == kAnalysisJob) {
      app_.mxfFile = platform::File::Open(app_.mxfPath, platform::OpenMode::kReadAlone);
    }
    app_.workerThread = std::thread(WorkerThread, &app_);
    if (meanwhile) meanwhile();
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

TEST(Worker, RunsEveryJobAndTellsItsOutcomeOnce) {
  LoadedClip clip{ClipSpec()};
  PrepareEveryJob(&clip);
  Face face(&clip);
  const std::pair<JobKind, const char16_t*> jobs[] = {
      {kRewriteJob, u"ラッピング"},
      {kExportJob, u"BWFファイルの書出し"},
      {kLoudnessJob, u"ラウドネス測定"},
  };
  for (const std::uint8_t fileIo : {std::uint8_t{0}, std::uint8_t{1}}) {
    const std::u16string method = fileIo == 0 ? u"Memory Mapping" : u"Generic File I/O";
    clip.app.info.useFileIo = fileIo;
    for (const auto& [kind, title] : jobs) {
      const Received& done = face.Run(kind);
      EXPECT_EQ(face.received.size(), 1u);
      EXPECT_EQ(done.message, JOB_MSG_DONE);
      EXPECT_EQ(done.caption, u"MXF Lattice Core");
      EXPECT_EQ(done.text, u"clip.mxf\n\n" + std::u16string(title) +
                               u"が完了しました。\n\n\tprocess: " + method);
    }
    EXPECT_EQ(clip.app.mxf.base.processCode, 6000u);
    EXPECT_TRUE(
        platform::QueryFileInfo(clip.folder.PathOf(fileIo == 0 ? "Track-1.wav" : "Track-1 1.wav")));
  }
}

TEST(Worker, TellsWhyAJobHasFailed) {
  ClipSpec spec;
  spec.umidSize = 64;
  LoadedClip clip(spec);
  PrepareEveryJob(&clip);
  Face face(&clip);
  clip.app.info.useFileIo = 1;
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
  LoadedClip clip(LongClip(6000));
  PrepareEveryJob(&clip);
  Face face(&clip);
  for (const JobKind kind : {kExportJob, kLoudnessJob, kRewriteJob}) {
    EXPECT_TRUE(clip.Now() == clip.clip.bytes);
    std::atomic<bool> ended = false;
    face.whenTold = [&](const JobReport&) { ended = true; };
    const Received& told = face.Run(kind, [&] {
      while (!ended)
        clip.app.tracks.cancel = 1;
    });
    EXPECT_EQ(told.message, JOB_MSG_FAILED);
    EXPECT_EQ(told.result, kCancelled);
    EXPECT_EQ(told.text.find(u"MXFファイル\nclip.mxf\n\n"), 0u);
    EXPECT_NE(told.text.find(u"を中断しました。\n\n\tprocess: "), std::u16string::npos);
  }
}

TEST(Worker, AnalysesInTwoPhases) {
  for (const std::uint8_t fileIo : {std::uint8_t{0}, std::uint8_t{1}}) {
    LoadedClip clip{ClipSpec()};
    clip.app.info.useFileIo = fileIo;
    Face face(&clip);
    face.Run(kAnalysisJob);
    ASSERT_EQ(face.received.size(), 2u);
    EXPECT_EQ(face.received[0].message, JOB_MSG_PHASE);
    EXPECT_EQ(face.received[1].message, JOB_MSG_DONE);
    EXPECT_EQ(face.received[1].caption, u"");
    EXPECT_EQ(clip.app.mxf.timecode.useFileIo, fileIo);
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

// The check can be left out by the operator; a clip whose analysis was stopped cannot be loaded.
TEST(Worker, AsksWhatToDoWithACheckThatWasStopped) {
  for (const bool inCheck : {true, false}) {
    LoadedClip clip(LongClip(6000));
    Face face(&clip);
    std::atomic<bool> ended = false;
    std::atomic<bool> asks = !inCheck;
    face.whenTold = [&](const JobReport& report) {
      asks = true;
      ended = report.message != JOB_MSG_PHASE;
    };
    const Received& told = face.Run(kAnalysisJob, [&] {
      while (!ended) {
        if (asks) clip.app.mxf.timecode.stopRequest = 1;
      }
    });
    EXPECT_EQ(told.result, kCancelled);
    const std::u16string text = u"clip.mxf\n\n解析を中断しました。";
    EXPECT_EQ(told.text, inCheck ? text + u"\nこのままロードしますか？" : text);
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
