// One clip in the companion's hands: opened, analysed, and the state around it.

#pragma once

#include <cstdint>
#include <string>

#include "state/app_state_info.h"

namespace quorvan::cli {

struct ClipSession {
  AppState app;
  std::int32_t result = 0;  // of the analysis
  std::u16string message;   // why it was refused or stopped; empty when accepted
};

struct LoadOptions {
  bool fileIo = false;         // plain file access instead of mapped views
  bool timecodeCheck = false;  // the continuity check too
};

// Opens the clip at `path` (UTF-8), analyses it and closes it again. True when it is accepted and
// `session` holds it as loaded; else `session->result` and `session->message` say why.
bool LoadClip(const std::string& path, const LoadOptions& options, ClipSession* session);

// The same for a command that needs the clip: tells why it is refused, and returns the exit status,
// kDone when it is loaded.
int LoadClipOrSay(const std::string& path, const LoadOptions& options, ClipSession* session);

}  // namespace quorvan::cli
