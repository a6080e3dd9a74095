// Opens and analyses the clip that a command works on.

#pragma once

#include <cstdint>
#include <string>

#include "cli/commands.h"
#include "platform/language.h"
#include "state/app_state_info.h"

namespace quorvan::cli {

// A clip, the state record that describes it, and the language of what the command says of it.
struct ClipSession {
  explicit ClipSession(platform::Language spoken) : language(spoken) {}

  const platform::Language language;
  AppState app;
  // The result of what has failed: the analysis, the preparation of a job, or the job;
  // kNoFileHandle when the clip was not opened. 0 while nothing has failed.
  std::int32_t result = 0;
  platform::InBoth<std::u16string> message;  // about `result`; empty for 0
};

// Opens the clip at `path` (UTF-8), analyses it and closes it again. The analysis compares the
// timecodes of all frames, unless `noTimecodeCheck` of `arguments` is true. True when the analysis
// accepts the clip; `session`, which must be new, then holds the clip as loaded. Otherwise
// `session->result` and `session->message` say why the clip is not loaded, and the records hold
// what the analysis found before it ended. Throws std::bad_alloc.
bool LoadClip(const std::string& path, const LoadArguments& arguments, ClipSession* session);

// Calls LoadClip for a command that cannot work without the clip, and writes the message of a
// refusal to standard error. Returns kDone when the clip is loaded, kInterrupted when the operator
// stopped the analysis, else kFailed. Throws std::bad_alloc.
int LoadClipOrSay(const std::string& path, const LoadArguments& arguments, ClipSession* session);

}  // namespace quorvan::cli
