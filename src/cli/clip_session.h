// One clip in the companion's hands: opened, analysed, and the state around it.

#pragma once

#include <cstdint>
#include <string>

#include "state/app_state_info.h"

namespace quorvan::cli {

struct ClipSession {
  AppState app;
  std::int32_t result = 0;  // of the analysis
  std::u16string message;   // why it was refused; empty when accepted
};

// Opens the clip at `path` (UTF-8), analyses it and closes it again. True when it is accepted and
// `session` holds it as loaded; else `session->result` and `session->message` say why.
bool LoadClip(const std::string& path, bool fileIo, ClipSession* session);

}  // namespace quorvan::cli
