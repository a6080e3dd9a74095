#include <new>
#include <string_view>

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

using platform::Language;

bool IsYes(std::string_view answer) {
  return answer == "y" || answer == "Y" || answer == "yes" || answer == "YES";
}

// Asks on the terminal whether there is a backup; `yes` answers in advance. kFailed without a
// terminal, kInterrupted for any answer but yes.
int ConfirmBackup(Language language, bool yes, bool keepsUmids) {
  if (yes) return kDone;
  if (!platform::InputIsTerminal() || !platform::ErrorIsTerminal()) {
    PrintError(language,
               {"バックアップの確認には端末または --yes が必要です。何も書込んでいません。",
                "without a terminal to ask for a backup, --yes is needed; nothing was written"});
    return kFailed;
  }
  PrintRaw(platform::ToUtf8(BackupQuestion(keepsUmids, language)) + " [y/N] ");
  std::string answer;
  if (platform::ReadLine(&answer) && IsYes(answer)) return kDone;
  PrintError(language, {"確認されませんでした。何も書込んでいません。",
                        "not confirmed; nothing was written"});
  return kInterrupted;
}

// A clip whose UMIDs cannot be renewed is rewritten only with --keep-umids; else kFailed.
int CheckIdentity(bool keepUmids, ClipSession* session) {
  APP_STATE_INFO* app = &session->app.info;
  if (!NeedsOldIdentity(*app)) return kDone;
  app->tracks->keepUmids = keepUmids ? 1 : 0;
  if (keepUmids) return kDone;
  PrintError(JobRefusalMessage(app->mxfPath, kUmidTooLong,
                               FailureText(kStageRewrapMapped, kUmidTooLong, session->language),
                               app->useFileIo));
  PrintError(session->language,
             {"--keep-umids を指定すると、元のUMIDのまま音声を書換えます。何も書込んでいません。",
              "--keep-umids rewrites the sound under the old UMIDs; nothing was written"});
  return kFailed;
}

// kFailed when the log beside the clip would have a name that is too long for a file.
int CheckLogName(const ClipSession& session) {
  const std::u16string refusal = NoRewrapLogMessage(session.app.info.mxfPath, session.language);
  if (refusal.empty()) return kDone;
  PrintError(refusal);
  PrintError(session.language,
             {"--no-log を指定すると、ログを作成せずに書換えます。何も書込んでいません。",
              "--no-log rewrites the clip without a log; nothing was written"});
  return kFailed;
}

// Ends a rewrite that is done, writes its outcome and returns the exit status. The status tells
// that the clip is rewritten even when the log or the text of the outcome cannot be written.
int ReportDone(Language language, bool noLog, const JobOutcome& outcome, APP_STATE_INFO* app) {
  try {
    const RewriteEnd end = EndRewrite(outcome.result, !noLog, app, language);
    if (!end.logFailure.empty()) PrintError(end.logFailure);
    const int status = ReportJob(language, outcome.result, end.text);
    if (end.logged) PrintLine(language, RewrapLogPath(app->mxfPath));
    return status;
  } catch (const std::bad_alloc&) {
    return ReportJob(language, outcome.result, outcome.text.In(language));
  }
}

int Prepare(const RewrapArguments& arguments, ClipSession* session) {
  APP_STATE_INFO* app = &session->app.info;
  if (const int status = CheckClipOrSay(kRewriteJob, session)) return status;
  if (arguments.buffer) app->tracks->wavBufferIndex = *arguments.buffer;
  app->tracks->noFlush = arguments.noFlush ? 1 : 0;
  if (const int status = PlaceAll(arguments.placement, session)) return status;
  if (const int status = SetRange(arguments.range, kRewrapRange, session)) return status;
  if (const int status = PrepareOrSay(kRewriteJob, session)) return status;
  if (const int status = CheckIdentity(arguments.keepUmids, session)) return status;
  return arguments.noLog ? kDone : CheckLogName(*session);
}

}  // namespace

int RunRewrap(const RewrapArguments& arguments, Language language) {
  WatchForInterrupts();
  ClipSession session(language);
  if (const int status = LoadClipOrSay(arguments.file, arguments.load, &session)) return status;
  APP_STATE_INFO& app = session.app.info;
  if (const int status = Prepare(arguments, &session)) return status;
  if (const int status = ConfirmBackup(language, arguments.yes, app.tracks->keepUmids == 1)) {
    return status;
  }
  if (Interrupted()) {
    PrintError(language,
               {"中断しました。何も書込んでいません。", "cancelled; nothing was written"});
    return kInterrupted;
  }
  const JobOutcome outcome = RunJob(language, &app);
  const bool done = outcome.result == kSuccess || outcome.result == kDoneWithNotice;
  return done ? ReportDone(language, arguments.noLog, outcome, &app)
              : ReportJob(language, outcome.result, outcome.text.In(language));
}

}  // namespace quorvan::cli
