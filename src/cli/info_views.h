// What an analysis has found, in the two forms in which `info` shows it.

#pragma once

#include <string>
#include <vector>

#include "cli/clip_session.h"
#include "cli/console.h"

namespace quorvan::cli {

// A sentence about each notice of the clip, in English.
std::vector<std::string> NoticeLines(const MXF_BASE_INFO& mxf);

// Aligned text for people, with a line for each frame when `index` is set.
void WriteInfoText(const ClipSession& session, bool index, LongOutput* output);

// One JSON object: result, processCode, message on a failure, notices, and each record under its
// name, with INDEX_ENTRY_ARRAY when `index` is set.
void WriteInfoJson(const ClipSession& session, bool index, LongOutput* output);

}  // namespace quorvan::cli
