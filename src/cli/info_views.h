// What an analysis has found, in the two forms in which `info` shows it.

#pragma once

#include <string>

#include "cli/clip_session.h"

namespace quorvan::cli {

// Aligned text for people, with a line for each frame when `index` is set.
std::string InfoText(const ClipSession& session, bool index);

// One JSON object: result, processCode, message on a failure, and each record under its name, with
// INDEX_ENTRY_ARRAY when `index` is set.
std::string InfoJson(const ClipSession& session, bool index);

}  // namespace quorvan::cli
