#include "cli/job_runner.h"

#include <new>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/progress_bar.h"
#include "job/job_steps.h"
#include "job/worker.h"
#include "mxf/analysis.h"
#include "platform/text.h"
#include "platform/thread.h"

namespace quorvan::cli {
namespace {

constexpr std::string_view kUnit = "frames";
constexpr char16_t kFlushText[] = u"waiting until all of it is on the medium";

// The text to print when there is no memory for the text of an outcome with `result`.
std::string_view WithoutWords(std::int32_t result) {
  if (result == kSuccess) return "done; out of memory for the message\n";
  if (result == kDoneWithNotice) return "done, but the UMIDs are not as they should be\n";
  return "stopped, and out of memory for the message: the clip may have been rewritten in part\n";
}

bool RunAnalysis(APP_STATE_INFO* app) {
  MXF_TIMECODE_INFO& timecode = *app->mxf->timecode;
  JobProgress progress;
  progress.stage = u"";  // an analysis has stages to show, and nothing to count yet
  // The texts of the stages live as long as the program, so that keeping a pointer is enough.
  app->ui.stageTextControl = [&](std::u16string_view text) { progress.stage = text.data(); };
  app->stageThreadStop = 0;
  // Without the thread for the stage texts, the analysis runs all the same and its stages have no
  // text.
  platform::StartThread(&app->stageThread, [app] { StageTextThread(app); });
  const bool ran = RunWithProgress([app] { WorkerThread(app); }, kUnit, &progress,
                                   [&] {
                                     progress.done = timecode.progressFrame.load();
                                     progress.total = timecode.progressTotal.load();
                                     if (progress.cancel == 1) timecode.stopRequest = 1;
                                   });
  app->stageThreadStop = 1;
  const platform::JoinAtEnd joined(&app->stageThread);
  return ran;
}

bool RunEngine(APP_STATE_INFO* app) {
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  JobProgress progress;
  progress.stage = kFlushText;
  return RunWithProgress([app] { WorkerThread(app); }, kUnit, &progress,
                         [&] {
                           progress.done = tracks.currentFrame.load();
                           // The wait for the medium has no known length.
                           progress.total =
                               tracks.phase == kPhaseFlushing ? 0 : tracks.totalFrames.load();
                           // A job clears `cancel` when it starts: repeat the request until the job
                           // has ended.
                           if (progress.cancel == 1) tracks.cancel = 1;
                         });
}

// The outcome of a job that never began, since the system had no thread for it.
JobOutcome NotStarted(const APP_STATE_INFO& app) {
  const JobRefusal refusal = NoThreadRefusal();
  return {refusal.result, std::u16string(app.mxfPath).append(u"\n").append(refusal.text)};
}

}  // namespace

JobOutcome RunJob(APP_STATE_INFO* app) {
  JobOutcome outcome{};
  // The worker's thread may not throw: memory for the text is reserved before the job starts.
  outcome.text.reserve(kMostReportChars);
  app->ui.progressDialog = [&](const JobReport& report) {
    if (report.message == JOB_MSG_PHASE) return;
    outcome.result = report.result;
    const std::u16string_view text = report.text == nullptr ? u"" : report.text;
    outcome.text.assign(text.substr(0, outcome.text.capacity()));
  };
  const bool ran = app->jobKind == kAnalysisJob ? RunAnalysis(app) : RunEngine(app);
  app->ui = {};
  if (!ran) return NotStarted(*app);
  return outcome;
}

int ReportJob(const JobOutcome& outcome) {
  // The exit status tells how the job has ended, even when there is no memory for the text.
  try {
    outcome.result == kSuccess ? static_cast<void>(PrintLine(outcome.text))
                               : PrintError(outcome.text);
  } catch (const std::bad_alloc&) {
    PrintRaw(WithoutWords(outcome.result));
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
