#include "cli/job_runner.h"

#include <atomic>
#include <new>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/progress_bar.h"
#include "job/process_table.h"
#include "job/worker.h"
#include "mxf/analysis.h"
#include "platform/text.h"
#include "platform/thread.h"

namespace quorvan::cli {
namespace {

JobProgress ProgressOfAnalysis(APP_STATE_INFO* app, const std::atomic<const char16_t*>* stage) {
  MXF_TIMECODE_INFO& timecode = *app->mxf->timecode;
  return {[&] { return std::uint64_t{timecode.progressFrame}; },
          [&] { return std::uint64_t{timecode.progressTotal}; }, [&] { timecode.stopRequest = 1; },
          "frames",
          [stage] {
            const char16_t* text = *stage;
            return text == nullptr ? std::string() : platform::ToUtf8(text);
          }};
}

JobProgress ProgressOfJob(APP_STATE_INFO* app) {
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  return {[&] { return std::uint64_t{tracks.currentFrame}; },
          // A wait for the medium has no length.
          [&] { return tracks.phase == kPhaseFlushing ? 0 : std::uint64_t{tracks.totalFrames}; },
          [&] { tracks.cancel = 1; }, "frames",
          [] { return std::string("waiting until all of it is on the medium"); }};
}

bool RunAnalysis(APP_STATE_INFO* app) {
  // Each stage's text lives as long as the program, so that a pointer to it can be handed on.
  std::atomic<const char16_t*> stage = nullptr;
  app->ui.stageTextControl = [&](std::u16string_view text) { stage = text.data(); };
  app->stageThreadStop = 0;
  // Without that thread the analysis only goes on without its stages' names.
  const bool named = platform::StartThread(&app->stageThread, [app] { StageTextThread(app); });
  const bool ran = RunWithProgress([app] { WorkerThread(app); }, ProgressOfAnalysis(app, &stage));
  app->stageThreadStop = 1;
  if (named) app->stageThread.join();
  return ran;
}

// The job never began.
JobOutcome NotStarted(const APP_STATE_INFO& app) {
  constexpr auto code = static_cast<std::int32_t>(kStageRewrapMapped) + kNoThread;
  return {code, platform::ToUtf16(std::string(platform::ToUtf8(app.mxfPath)) + "\n" +
                                  platform::ToUtf8(FailureText(kStageRewrapMapped, code)))};
}

}  // namespace

JobOutcome RunJob(APP_STATE_INFO* app) {
  JobOutcome outcome{};
  app->ui.progressDialog = [&](const JobReport& report) {
    if (report.message == JOB_MSG_PHASE) return;
    outcome.result = report.result;
    if (report.text == nullptr) return;
    try {
      outcome.text = report.text;
    } catch (const std::bad_alloc&) {
      outcome.text.clear();  // the result says enough
    }
  };
  app->jobStartTime = platform::LocalTimeNow();
  const bool ran = app->jobKind == kAnalysisJob
                       ? RunAnalysis(app)
                       : RunWithProgress([app] { WorkerThread(app); }, ProgressOfJob(app));
  app->ui = {};
  return ran ? outcome : NotStarted(*app);
}

int ReportJob(const JobOutcome& outcome) {
  // The job has ended as it has, whatever happens to the words about it.
  try {
    outcome.result == kSuccess ? static_cast<void>(PrintLine(outcome.text))
                               : PrintError(outcome.text);
  } catch (const std::bad_alloc&) {
    PrintRaw("out of memory\n");
  }
  switch (outcome.result) {
    case kSuccess:
      return kDone;
    case kDoneWithNotice:
      return kDoneNotice;
    case kCancelled:
      return kInterrupted;
    default:
      return kFailed;
  }
}

}  // namespace quorvan::cli
