// The results of an analysis in the two forms in which `info` shows them.

#pragma once

#include <string>
#include <vector>

#include "cli/clip_session.h"
#include "cli/console.h"

namespace quorvan::cli {

// The sentence that the sample pattern of the clip does not start with the clip, and where it
// starts.
std::string PatternLine(platform::Language language, const MXF_AUDIO_INFO& audio);

// The sentence that the index of the clip does not lead to the audio of every frame.
std::string WrongIndexLine(platform::Language language);

// One sentence for each notice of the accepted clip of `mxf`.
std::vector<std::string> NoticeLines(platform::Language language, const MXF_BASE_INFO& mxf);

// Appends the results of an accepted clip to `output` as aligned text in the language of the
// session, with a line for each index
// entry when `index` is set. Stops early when LongOutput::Send returns false.
void WriteInfoText(const ClipSession& session, bool index, LongOutput* output);

// Appends the results of a clip, accepted or not, to `output` as one JSON object (RFC 8259):
// result, processCode, each record under its name, TIMECODE_ERROR_INFO when there are breaks, and
// INDEX_ENTRY_ARRAY when `index` is set, which needs an accepted clip. An accepted clip also has
// its notices in English, a refused clip the message in Japanese and the messages in both
// languages. Leaves out further breaks and entries when
// LongOutput::Send returns false.
void WriteInfoJson(const ClipSession& session, bool index, LongOutput* output);

}  // namespace quorvan::cli
