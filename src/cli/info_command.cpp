#include "cli/clip_session.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/info_views.h"
#include "conform/conform.h"
#include "mxf/analysis.h"
#include "platform/file.h"
#include "platform/path.h"
#include "platform/text.h"
#include "report/timecode_log.h"

namespace quorvan::cli {
namespace {

// Writes the list of timecode breaks when it is wanted and there are breaks. False when it cannot
// be written; the reason is on standard error.
bool WriteLog(const InfoArguments& arguments, const ClipSession& session) {
  if (!arguments.timecodeLog || session.app.mxf.timecode.errorCount == 0) return true;
  const std::u16string path = platform::AbsolutePath(platform::ToUtf16(*arguments.timecodeLog));
  std::uint32_t error = 0;
  if (WriteTimecodeLog(path, session.app.info, &error)) return true;
  PrintError(TimecodeLogFailureMessage(session.app.info.mxfPath, error, session.language));
  return false;
}

}  // namespace

int RunInfo(const InfoArguments& arguments, platform::Language language) {
  WatchForInterrupts();
  ClipSession session(language);
  const bool accepted = LoadClip(arguments.file, arguments.load, &session);
  LongOutput output(language);
  if (arguments.json) {
    WriteInfoJson(session, arguments.index && accepted, &output);
  } else if (accepted) {
    WriteInfoText(session, arguments.index, &output);
  }
  const bool printed = (!arguments.json && !accepted) || output.Finish();
  if (!accepted) PrintError(session.message.In(language));
  if (session.result == kUnknownSamplePattern && HasOtherPattern(session.app.mxf.audio)) {
    PrintErrorLine(PatternLine(language, session.app.mxf.audio));
  }
  if (!accepted && session.app.mxf.base.indexContradicted != 0) {
    PrintErrorLine(WrongIndexLine(language));
  }
  if (MayConform(session.result, session.app.mxf.base)) {
    PrintError(language, {"conform でコピーを作成すると、音声を処理できる場合があります。",
                          "conform may make a copy of this clip whose audio can be used"});
  }
  const bool logged = WriteLog(arguments, session);
  if (session.result == kCancelled || (!printed && Interrupted())) return kInterrupted;
  return accepted && printed && logged ? kDone : kFailed;
}

}  // namespace quorvan::cli
