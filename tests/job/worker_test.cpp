#include "job/worker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "job/job_steps.h"
#include "job/process_table.h"
#include "platform/text.h"
#include "support/call_hook.h"
#include "support/golden.h"
#include "support/loaded_clip.h"

namespace quorvan {
namespace {

using namespace test;

constexpr JobKind kJobs[] = {kRewriteJob, kExportJob, kLoudnessJob};
constexpr Method kMethods[] = {Method::kMemoryMapping, Method::kGenericFileIo};

// A clip ready for every job, with a front end that writes down what it is told.
struct FrontEnd : LoadedClip {
  explicit FrontEnd(const ClipSpec& description = {}) : LoadedClip(description) {
    AUDIOTRACK_IO_INFO& tracks = app.tracks;
    tracks.rewrapSwitch[0] = tracks.exportSwitch[0] = kSwitchOn;
    tracks.exportCount = 1;
    const std::u16string out = folder.PathOf(".");
    tracks.exportFolder[out.copy(tracks.exportFolder, 1023)] = 0;
    std::u16string(u"Track-").copy(tracks.exportName, 255);
    app.info.ui.progressDialog = [this](const JobReport& report) {
      told += report.message == JOB_MSG_DONE    ? "done "
              : report.message == JOB_MSG_PHASE ? "phase "
                                                : "failed ";
      told += std::to_string(report.result) + '\n';
      for (const char16_t* text : {report.caption, report.text})
        told += text == nullptr ? "<none>\n" : platform::ToUtf8(text) + '\n';
      if (whenTold) whenTold();
    };
  }

  // Runs one job on a thread of its own; everything that it told.
  std::string Run(JobKind kind) {
    app.info.jobKind = kind;
    if (kind == kAnalysisJob)
      app.info.mxfFile = platform::File::Open(path, platform::OpenMode::kReadAlone);
    app.info.workerThread = std::thread(WorkerThread, &app.info);
    app.info.workerThread.join();
    app.info.mxfFile.Close();
    return std::exchange(told, {});
  }

  std::string told;
  std::function<void()> whenTold;
};

TEST(Worker, RunsEveryJobAndTellsItsOutcomeOnce) {
  FrontEnd frontEnd;
  std::string told;
  for (const Method method : kMethods) {
    frontEnd.app.info.useFileIo = method;
    for (const JobKind kind : kJobs)
      told += frontEnd.Run(kind);
    EXPECT_EQ(frontEnd.app.mxf.base.processCode, 6000u);
  }
  EXPECT_EQ(told, GoldenText("job/golden/jobs_done.txt"));
  EXPECT_TRUE(platform::QueryFileInfo(frontEnd.folder.PathOf("Track-1 1.wav")));
}

TEST(Worker, TellsWhyAJobHasFailed) {
  FrontEnd frontEnd({.umidSize = 64});
  frontEnd.app.info.useFileIo = Method::kGenericFileIo;
  std::string told = frontEnd.Run(kRewriteJob);
  std::filesystem::remove(platform::ToUtf8(frontEnd.path));
  told += frontEnd.Run(kLoudnessJob);
  EXPECT_EQ(told, GoldenText("job/golden/jobs_failed.txt"));
  // A name as long as names can be: nothing of the message is lost.
  std::u16string name;
  while (name.size() < 250)
    name += u"\xD842\xDFB7";
  const std::u16string path = u"/none/" + name;
  frontEnd.app.info.mxfPath[path.copy(frontEnd.app.info.mxfPath, kMxfPathChars - 1)] = 0;
  told = frontEnd.Run(kExportJob);
  EXPECT_NE(told.find('\n' + platform::ToUtf8(name) + "\n\n"), told.npos);
  EXPECT_NE(told.find("ERR: 5007"), told.npos);
}

TEST(Worker, TellsOfACancel) {
  FrontEnd frontEnd;
  const auto stop = [&] { frontEnd.app.tracks.cancel = 1; };
  {
    const CallHook operatorStops([&](platform::SystemCall, int) {
      stop();
      return platform::CallOutcome::kAsEver;
    });
    std::string told;
    for (const JobKind kind : kJobs)
      told += frontEnd.Run(kind);
    EXPECT_EQ(told, GoldenText("job/golden/jobs_cancelled.txt"));
    EXPECT_TRUE(frontEnd.Now() == frontEnd.clip.bytes);
  }
  const CallHook operatorStopsLater(platform::SystemCall::kGatheredWrite, 0, stop);
  EXPECT_EQ(frontEnd.Run(kExportJob).find("作成していません。"), std::string::npos);
}

// In two phases; then with breaks, which can be left unchecked, with a file that is no clip, and
// with an audio descriptor that is missing or of another width, which have one number.
TEST(Worker, TellsWhetherAClipIsLoaded) {
  std::string told;
  for (const Method method : kMethods) {
    FrontEnd frontEnd;
    frontEnd.app.info.useFileIo = method;
    told += frontEnd.Run(kAnalysisJob);
    EXPECT_EQ(frontEnd.app.mxf.timecode.useFileIo, method);
    EXPECT_EQ(frontEnd.app.mxf.timecode.progressTotal, 10u);
    EXPECT_EQ(frontEnd.app.mxf.base.processCode, 1000u);
  }
  ClipSpec missing{.tracks = 1}, wide{.tracks = 1};
  missing.DropSet(SetKind::kAes3Descriptor);
  wide.SetTag(SetKind::kAes3Descriptor, 0, tag::kQuantizationBits, Big32(20));
  FrontEnd frontEnd({.timecodeWords = {{4, 0}}});
  told += frontEnd.Run(kAnalysisJob);
  frontEnd.app.info.noTimecodeCheck = 1;
  told += frontEnd.Run(kAnalysisJob);
  for (const Bytes& bytes : {Bytes(100000), BuildClip(missing).bytes, BuildClip(wide).bytes}) {
    ASSERT_TRUE(WriteBytes(platform::ToUtf8(frontEnd.path), bytes));
    told += frontEnd.Run(kAnalysisJob);
  }
  EXPECT_EQ(told, GoldenText("job/golden/analyses.txt"));
}

// The check can be left out by the operator; a clip whose analysis was stopped cannot be loaded.
TEST(Worker, AsksWhatToDoWithACheckThatWasStopped) {
  std::string told;
  for (const bool inCheck : {true, false}) {
    FrontEnd frontEnd;
    std::atomic<bool> stops = !inCheck;
    frontEnd.whenTold = [&] { stops = true; };
    const CallHook operatorStops([&](platform::SystemCall, int) {
      frontEnd.app.mxf.timecode.stopRequest = stops ? 1 : 0;
      return platform::CallOutcome::kAsEver;
    });
    told += frontEnd.Run(kAnalysisJob);
  }
  EXPECT_EQ(told, GoldenText("job/golden/analyses_stopped.txt"));
}

// With the numbers of the job's stage; those of a measurement are the export's.
TEST(JobCheck, RefusesWhatTheEnginesWould) {
  LoadedClip clip({.umidSize = 64}), unfit({.timecodeTracks = 0});
  EXPECT_EQ(ClipRefusal(clip.app.info), u"");
  EXPECT_EQ(ClipRefusal(unfit.app.info), FailureText(2000, 2016));
  EXPECT_TRUE(NeedsOldIdentity(clip.app.info));
  EXPECT_FALSE(NeedsOldIdentity(unfit.app.info));
  FrontEnd ready;
  for (const RangeFields& range : {kRewrapRange, kExportRange, kLoudnessRange})
    ready.SetRange(range, 3, 2);
  using Case = std::tuple<JobKind, int, int>;
  for (const auto& [kind, stage, withNothingOn] :
       {Case{kRewriteJob, 2000, 2015}, {kExportJob, 4000, 4015}, {kLoudnessJob, 4000, 0}}) {
    EXPECT_EQ(CheckClipFor(kind, clip.app.info).result, 0);
    EXPECT_EQ(CheckClipFor(kind, unfit.app.info).result, stage + kNoRange);
    EXPECT_EQ(PrepareJob(kind, &clip.app.info).result, withNothingOn);
    EXPECT_EQ(PrepareJob(kind, &ready.app.info).result, stage + kBadRange);
  }
}

TEST(StageText, FollowsTheStageUntilItIsStopped) {
  AppState state;
  APP_STATE_INFO& app = state.info;
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
  EXPECT_EQ(shown, (std::vector<std::u16string>{std::u16string(StageText(300)),
                                                std::u16string(StageText(1000))}));
}

}  // namespace
}  // namespace quorvan
