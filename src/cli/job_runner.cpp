#include "cli/job_runner.h"

#include <new>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/progress_bar.h"
#include "job/job_steps.h"
#include "job/outcome.h"
#include "job/process_table.h"
#include "job/worker.h"
#include "mxf/analysis.h"
#include "platform/thread.h"

namespace quorvan::cli {
namespace {

using platform::Language;

constexpr platform::Text kFlushText = {u"ストレージへの書込みの完了を待っています",
                                       u"waiting until all of it is on the medium"};
// An analysis has stages to show, and nothing to count yet.
constexpr platform::Text kNoStageYet = {u"", u""};

// The text to print when there is no memory for the text of an outcome with `result`.
platform::InBoth<std::string_view> WithoutWords(std::int32_t result) {
  if (result == kSuccess) {
    return {"完了しました。メモリが確保できないため、詳細を表示できません。\n",
            "done; out of memory for the message\n"};
  }
  if (result == kDoneWithNotice) {
    return {"完了しましたが、UMIDの更新が正しく行われませんでした。\n",
            "done, but the UMIDs are not as they should be\n"};
  }
  return {
      "中断しました。メモリが確保できないため、詳細を表示できません。"
      "音声は途中まで書換えられている可能性があります。\n",
      "stopped, and out of memory for the message: the clip may have been rewritten in part\n"};
}

bool RunAnalysis(Language language, APP_STATE_INFO* app) {
  MXF_TIMECODE_INFO& timecode = *app->mxf->timecode;
  JobProgress progress;
  progress.stage = &kNoStageYet;
  app->ui.stageTextControl = [&](std::u16string_view) {
    progress.stage = &StageTexts(app->mxf->processCode);
  };
  app->stageThreadStop = 0;
  // Without the thread for the stage texts, the analysis runs all the same and its stages have no
  // text.
  platform::StartThread(&app->stageThread, [app] { StageTextThread(app); });
  const bool ran = RunWithProgress(
      language, [app] { WorkerThread(app); }, kFrames, &progress,
      [&] {
        progress.done = timecode.progressFrame.load();
        progress.total = timecode.progressTotal.load();
        if (progress.cancel == 1) timecode.stopRequest = 1;
      });
  app->stageThreadStop = 1;
  const platform::JoinAtEnd joined(&app->stageThread);
  return ran;
}

bool RunEngine(Language language, APP_STATE_INFO* app) {
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  JobProgress progress;
  progress.stage = &kFlushText;
  platform::InBoth<std::string_view> unit = kFrames;
  return RunWithProgress(
      language, [app] { WorkerThread(app); }, unit, &progress,
      [&] {
        const bool proving = tracks.phase == kPhaseProving && app->jobKind != kLoudnessJob;
        unit = proving ? kProvenFrames : kFrames;
        progress.done = proving ? tracks.provenFrames.load() : tracks.currentFrame.load();
        // The wait for the medium has no known length.
        progress.total = tracks.phase == kPhaseFlushing ? 0 : tracks.totalFrames.load();
        // A job clears `cancel` when it starts: repeat the request until the job
        // has ended.
        if (progress.cancel == 1) tracks.cancel = 1;
      });
}

// The outcome of a job that never began, since the system had no thread for it.
JobOutcome NotStarted(const APP_STATE_INFO& app) {
  const std::int32_t result = NoThreadRefusal().result;
  return {result, platform::ComposeInBoth([&](Language language) {
            return std::u16string(app.mxfPath)
                .append(u"\n")
                .append(FailureText(kStageRewrapMapped, result, language));
          })};
}

}  // namespace

JobOutcome RunJob(Language language, APP_STATE_INFO* app) {
  JobOutcome outcome{};
  // Reserved before the job, since memory may be out when the job has ended.
  outcome.text.ja.reserve(kMostPlainChars);
  outcome.text.en.reserve(kMostPlainChars);
  app->ui.progressDialog = [&](const JobReport& report) {
    if (report.message != JOB_MSG_PHASE) outcome.result = report.result;
  };
  const bool ran =
      app->jobKind == kAnalysisJob ? RunAnalysis(language, app) : RunEngine(language, app);
  app->ui = {};
  if (!ran) return NotStarted(*app);
  try {
    outcome.text = platform::ComposeInBoth(
        [&](Language either) { return OutcomeMessage(*app, outcome.result, either); });
  } catch (const std::bad_alloc&) {
    outcome.text.ja = PlainOutcomeText(app->jobKind, outcome.result, Language::kJapanese);
    outcome.text.en = PlainOutcomeText(app->jobKind, outcome.result, Language::kEnglish);
  }
  return outcome;
}

int ReportJob(Language language, std::int32_t result, std::u16string_view text) {
  // The exit status tells how the job has ended, even when there is no memory for the text.
  try {
    result == kSuccess ? static_cast<void>(PrintLine(language, text)) : PrintError(text);
  } catch (const std::bad_alloc&) {
    PrintRaw(WithoutWords(result).In(language));
  }
  switch (result) {
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
