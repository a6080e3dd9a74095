#include "cli/clip_session.h"

#include <utility>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/job_runner.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "platform/path.h"
#include "platform/text.h"
#include "state/clip_state.h"

namespace quorvan::cli {
namespace {

bool Refuse(std::int32_t result, std::u16string message, ClipSession* session) {
  session->result = result;
  session->message = std::move(message);
  return false;
}

}  // namespace

bool LoadClip(const std::string& path, const LoadOptions& options, ClipSession* session) {
  APP_STATE_INFO& app = session->app.info;
  const std::u16string fullPath = platform::AbsolutePath(platform::ToUtf16(path));
  if (fullPath.size() >= kMxfPathChars) {
    return Refuse(kNoFileHandle, ClipCannotBeOpenedMessage(fullPath, kNoFileHandle), session);
  }
  app.mxfFile = platform::File::Open(fullPath, platform::OpenMode::kReadAlone);
  if (!app.mxfFile.IsOpen()) {
    const std::uint32_t reason = platform::LastSystemError();
    return Refuse(kNoFileHandle, ClipCannotBeOpenedMessage(fullPath, reason), session);
  }
  platform::CopyText(app.mxfPath, kMxfPathChars, fullPath);
  app.jobKind = kAnalysisJob;
  app.useFileIo = options.fileIo ? 1 : 0;
  app.noTimecodeCheck = options.timecodeCheck ? 0 : 1;
  JobOutcome outcome = RunJob(&app);
  app.mxfFile.Close();
  if (outcome.result != kSuccess) return Refuse(outcome.result, std::move(outcome.text), session);
  EnterLoadedState(&app);
  return true;
}

int LoadClipOrSay(const std::string& path, const LoadOptions& options, ClipSession* session) {
  if (LoadClip(path, options, session)) return kDone;
  PrintError(session->message);
  return session->result == kCancelled ? kInterrupted : kFailed;
}

}  // namespace quorvan::cli
