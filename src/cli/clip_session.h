// One clip in the companion's hands: opened, analysed, and the state around it.

#pragma once

#include <cstdint>
#include <string>

#include "cli/commands.h"
#include "state/app_state_info.h"

namespace quorvan::cli {

struct ClipSession {
  AppState app;
  std::int32_t result = 0;  // of the analysis
  std::u16string message;   // why it was refused or stopped; empty when accepted
};

// Opens the clip at `path` (UTF-8), analyses it, compares the timecodes of its frames unless told
// not to, and closes it again. True when it is accepted and `session` holds it as loaded; else
// `session->result` and `session->message` say why.
bool LoadClip(const std::string& path, const LoadArguments& arguments, ClipSession* session);

// The same for a command that needs the clip: tells why it is refused, and returns the exit status,
// kDone when it is loaded.
int LoadClipOrSay(const std::string& path, const LoadArguments& arguments, ClipSession* session);

}  // namespace quorvan::cli
