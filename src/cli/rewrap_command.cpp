#include <string_view>

#include "cli/clip_session.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/job_runner.h"
#include "cli/job_setup.h"
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

int ConfirmBackup(bool yes) {
  if (yes) return kDone;
  if (!platform::InputIsTerminal() || !platform::ErrorIsTerminal()) {
    PrintError("without a terminal to ask for a backup, --yes is needed; nothing was written");
    return kFailed;
  }
  PrintRaw(platform::ToUtf8(BackupQuestion()) + " [y/N] ");
  std::string answer;
  if (platform::ReadLine(&answer) && IsYes(answer)) return kDone;
  PrintError("not confirmed; nothing was written");
  return kInterrupted;
}

// The rewrite stands, with or without a log.
void WriteLog(APP_STATE_INFO* app) {
  std::u16string logPath;
  std::uint32_t error = 0;
  if (WriteRewrapLog(app, &logPath, &error)) {
    PrintLine(platform::ToUtf8(logPath));
  } else {
    PrintError(RewrapLogFailureMessage(app->mxfPath, error));
  }
}

}  // namespace

int RunRewrap(const RewrapArguments& arguments) {
  WatchForInterrupts();
  ClipSession session;
  if (const int status = LoadClipOrSay(arguments.file, {arguments.fileIo, false}, &session)) {
    return status;
  }
  APP_STATE_INFO& app = session.app.info;
  app.jobKind = kRewriteJob;
  if (arguments.buffer) app.tracks->wavBufferIndex = *arguments.buffer;
  if (const int status = PlaceAll(arguments.placement, &app)) return status;
  if (const int status = SetRange(arguments.range, kRewrapRange, &app)) return status;
  if (const int status = ConfirmBackup(arguments.yes)) return status;
  if (Interrupted()) {
    PrintError("cancelled; nothing was written");
    return kInterrupted;
  }
  const JobOutcome outcome = RunJob(&app);
  const int status = ReportJob(outcome);
  if (outcome.result == kSuccess && !arguments.noLog) WriteLog(&app);
  return status;
}

}  // namespace quorvan::cli
