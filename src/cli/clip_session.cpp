#include "cli/clip_session.h"

#include "cli/console.h"
#include "cli/job_runner.h"
#include "job/job_steps.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "mxf/essence/continuity.h"
#include "platform/path.h"
#include "platform/text.h"
#include "state/clip_state.h"

namespace quorvan::cli {
namespace {

using platform::Language;

// Stores why the clip is not loaded: what `compose` says in a language. Always false.
template <typename Compose>
bool Refuse(std::int32_t result, Compose compose, ClipSession* session) {
  session->result = result;
  session->message = platform::ComposeInBoth(compose);
  return false;
}

// The text of the outcome of an analysis. Some texts of the worker ask the operator what to do
// next. The console does not ask after an analysis: for these outcomes it has texts that only tell
// what has happened.
std::u16string TextWithoutQuestion(const APP_STATE_INFO& app, const JobOutcome& outcome,
                                   Language language) {
  if (outcome.result == kContinuityBreaks) return TimecodeBreaksMessage(app.mxfPath, language);
  if (outcome.result == kCancelled) return LoadStoppedMessage(app.mxfPath, language);
  return outcome.text.In(language);
}

}  // namespace

bool LoadClip(const std::string& path, const LoadArguments& arguments, ClipSession* session) {
  APP_STATE_INFO& app = session->app.info;
  const std::u16string fullPath = platform::AbsolutePath(platform::ToUtf16(path));
  if (!FitsMxfPath(fullPath)) {
    return Refuse(
        kNoFileHandle, [&](Language l) { return ClipPathTooLongMessage(fullPath, l); }, session);
  }
  app.mxfFile = platform::File::Open(fullPath, platform::OpenMode::kReadAlone);
  if (!app.mxfFile.IsOpen()) {
    const std::uint32_t reason = platform::LastSystemError();
    return Refuse(
        kNoFileHandle, [&](Language l) { return ClipCannotBeOpenedMessage(fullPath, reason, l); },
        session);
  }
  platform::CopyText(app.mxfPath, kMxfPathChars, fullPath);
  PrepareAnalysis(&app);
  app.useFileIo = arguments.method;
  app.noTimecodeCheck = arguments.noTimecodeCheck ? 1 : 0;
  const JobOutcome outcome = RunJob(session->language, &app);
  app.mxfFile.Close();
  if (outcome.result != kSuccess) {
    return Refuse(
        outcome.result, [&](Language l) { return TextWithoutQuestion(app, outcome, l); }, session);
  }
  EnterLoadedState(&app);
  return true;
}

int LoadClipOrSay(const std::string& path, const LoadArguments& arguments, ClipSession* session) {
  if (LoadClip(path, arguments, session)) return kDone;
  PrintError(session->message.In(session->language));
  return session->result == kCancelled ? kInterrupted : kFailed;
}

}  // namespace quorvan::cli
