#include "cli/job_runner.h"

#include <atomic>
#include <thread>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/progress_bar.h"
#include "job/worker.h"
#include "mxf/analysis.h"
#include "platform/text.h"

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
          [&] { return std::uint64_t{tracks.totalFrames}; },
          [&] { tracks.cancel = 1; },
          "frames",
          {}};
}

void RunAnalysis(APP_STATE_INFO* app) {
  // Each stage's text lives as long as the program, so that a pointer to it can be handed on.
  std::atomic<const char16_t*> stage = nullptr;
  app->ui.stageTextControl = [&](std::u16string_view text) { stage = text.data(); };
  app->stageThreadStop = 0;
  app->stageThread = std::thread(StageTextThread, app);
  RunWithProgress([app] { WorkerThread(app); }, ProgressOfAnalysis(app, &stage));
  app->stageThreadStop = 1;
  app->stageThread.join();
}

}  // namespace

JobOutcome RunJob(APP_STATE_INFO* app) {
  JobOutcome outcome{};
  app->ui.progressDialog = [&](const JobReport& report) {
    if (report.message == JOB_MSG_PHASE) return;
    outcome.result = report.result;
    if (report.text != nullptr) outcome.text = report.text;
  };
  app->jobStartTime = platform::LocalTimeNow();
  if (app->jobKind == kAnalysisJob) {
    RunAnalysis(app);
  } else {
    RunWithProgress([app] { WorkerThread(app); }, ProgressOfJob(app));
  }
  app->ui = {};
  return outcome;
}

int ReportJob(const JobOutcome& outcome) {
  if (outcome.result == kSuccess) {
    return PrintLine(platform::ToUtf8(outcome.text)) ? kDone : kFailed;
  }
  PrintError(outcome.text);
  return outcome.result == kCancelled ? kInterrupted : kFailed;
}

}  // namespace quorvan::cli
