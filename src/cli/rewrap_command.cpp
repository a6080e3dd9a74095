#include <new>
#include <string_view>
#include <utility>

#include "cli/clip_session.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/job_runner.h"
#include "cli/job_setup.h"
#include "job/job_steps.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "platform/console.h"
#include "platform/text.h"
#include "report/rewrap_log.h"

namespace quorvan::cli {
namespace {

bool IsYes(std::string_view answer) {
  return answer == "y" || answer == "Y" || answer == "yes" || answer == "YES";
}

// Asks on the terminal whether there is a backup; `yes` answers in advance. kFailed without a
// terminal, kInterrupted for any answer but yes.
int ConfirmBackup(bool yes, bool keepsUmids) {
  if (yes) return kDone;
  if (!platform::InputIsTerminal() || !platform::ErrorIsTerminal()) {
    PrintError("without a terminal to ask for a backup, --yes is needed; nothing was written");
    return kFailed;
  }
  PrintRaw(platform::ToUtf8(BackupQuestion(keepsUmids)) + " [y/N] ");
  std::string answer;
  if (platform::ReadLine(&answer) && IsYes(answer)) return kDone;
  PrintError("not confirmed; nothing was written");
  return kInterrupted;
}

// A clip whose UMIDs cannot be renewed is rewritten only with --keep-umids; else kFailed.
int CheckIdentity(bool keepUmids, APP_STATE_INFO* app) {
  if (!NeedsOldIdentity(*app)) return kDone;
  app->tracks->keepUmids = keepUmids ? 1 : 0;
  if (keepUmids) return kDone;
  PrintError(JobRefusalMessage(app->mxfPath, kUmidTooLong,
                               FailureText(kStageRewrapMapped, kUmidTooLong), app->useFileIo));
  PrintError("--keep-umids rewrites the sound under the old UMIDs; nothing was written");
  return kFailed;
}

// kFailed when the log beside the clip would have a name that is too long for a file.
int CheckLogName(const APP_STATE_INFO& app) {
  const std::u16string refusal = NoRewrapLogMessage(app.mxfPath);
  if (refusal.empty()) return kDone;
  PrintError(refusal);
  PrintError("--no-log rewrites the clip without a log; nothing was written");
  return kFailed;
}

// Ends a rewrite that is done, writes its outcome and returns the exit status. The status tells
// that the clip is rewritten even when the log or the text of the outcome cannot be written.
int ReportDone(bool noLog, JobOutcome outcome, APP_STATE_INFO* app) {
  try {
    RewriteEnd end = EndRewrite(outcome.result, !noLog, app);
    if (!end.logFailure.empty()) PrintError(end.logFailure);
    outcome.text = std::move(end.text);
    const int status = ReportJob(outcome);
    if (end.logged) PrintLine(RewrapLogPath(app->mxfPath));
    return status;
  } catch (const std::bad_alloc&) {
    return ReportJob(outcome);
  }
}

int Prepare(const RewrapArguments& arguments, APP_STATE_INFO* app) {
  if (const int status = CheckClipOrSay(kRewriteJob, *app)) return status;
  if (arguments.buffer) app->tracks->wavBufferIndex = *arguments.buffer;
  app->tracks->noFlush = arguments.noFlush ? 1 : 0;
  if (const int status = PlaceAll(arguments.placement, app)) return status;
  if (const int status = SetRange(arguments.range, kRewrapRange, app)) return status;
  if (const int status = PrepareOrSay(kRewriteJob, app)) return status;
  if (const int status = CheckIdentity(arguments.keepUmids, app)) return status;
  return arguments.noLog ? kDone : CheckLogName(*app);
}

}  // namespace

int RunRewrap(const RewrapArguments& arguments) {
  WatchForInterrupts();
  ClipSession session;
  if (const int status = LoadClipOrSay(arguments.file, arguments.load, &session)) return status;
  APP_STATE_INFO& app = session.app.info;
  if (const int status = Prepare(arguments, &app)) return status;
  if (const int status = ConfirmBackup(arguments.yes, app.tracks->keepUmids == 1)) return status;
  if (Interrupted()) {
    PrintError("cancelled; nothing was written");
    return kInterrupted;
  }
  JobOutcome outcome = RunJob(&app);
  const bool done = outcome.result == kSuccess || outcome.result == kDoneWithNotice;
  return done ? ReportDone(arguments.noLog, std::move(outcome), &app) : ReportJob(outcome);
}

}  // namespace quorvan::cli
