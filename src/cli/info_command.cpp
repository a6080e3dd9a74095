#include "cli/clip_session.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/info_views.h"

namespace quorvan::cli {

int RunInfo(const InfoArguments& arguments) {
  ClipSession session;
  const bool accepted = LoadClip(arguments.file, arguments.fileIo, &session);
  bool printed = true;
  if (arguments.json) {
    printed = PrintLine(InfoJson(session, arguments.index && accepted));
  } else if (accepted) {
    printed = PrintLine(InfoText(session, arguments.index));
  }
  if (!accepted) PrintError(session.message);
  if (!printed) PrintError("the output could not be written");
  return accepted && printed ? kDone : kFailed;
}

}  // namespace quorvan::cli
