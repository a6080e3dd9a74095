#include <fmt/format.h>

#include "cli/clip_session.h"
#include "cli/commands.h"
#include "cli/info_views.h"

namespace quorvan::cli {

int RunInfo(const InfoArguments& arguments) {
  ClipSession session;
  const bool accepted = LoadClip(arguments.file, arguments.fileIo, &session);
  if (arguments.json) {
    fmt::print("{}\n", InfoJson(session, arguments.index && accepted));
  } else if (accepted) {
    fmt::print("{}", InfoText(session, arguments.index));
  }
  if (accepted) return kDone;
  PrintError(session.message);
  return kFailed;
}

}  // namespace quorvan::cli
