// Describes the job of a command in the state record, from the arguments of the command.
//
// Each function returns kDone when all is well. Otherwise it writes the reason to standard error
// and returns another exit status. May throw std::bad_alloc.

#pragma once

#include <string>
#include <vector>

#include "cli/clip_session.h"
#include "cli/commands.h"
#include "state/frame_range.h"

namespace quorvan::cli {

// Checks whether the job `kind` can work on the loaded clip at all (CheckClipFor). kFailed when
// not.
int CheckClipOrSay(JobKind kind, ClipSession* session);

// Puts the source files and the silence of `arguments` on tracks of the loaded clip and switches
// these tracks ON. A file of several channels also takes the tracks behind its first track.
// kWrongUsage when no track is named, an argument cannot be read, silence is meant for a track that
// the clip does not have, or a track is given twice; kFailed when a file cannot be used or does not
// fit on its tracks; kInterrupted when the operator stopped the reading of a file. Files placed
// before a failure stay placed.
int PlaceAll(const PlacementArguments& arguments, ClipSession* session);

// Stores the range of `arguments` in the members of the record of tracks that `fields` names.
// kWrongUsage when a text is no timecode on the timecode base of the clip. Does not check whether
// the range lies within the clip: PrepareOrSay does.
int SetRange(const RangeArguments& arguments, const RangeFields& fields, ClipSession* session);

// Makes `kind` the job of `session` and checks the arguments of the job (PrepareJob). kFailed when
// the job cannot start.
int PrepareOrSay(JobKind kind, ClipSession* session);

// Reads a list such as "1,3-5" into `*tracks`: tracks from 0, ascending, each once. kWrongUsage,
// with `*tracks` unchanged, when `text` is no such list or names a track that the clip does not
// have.
int ReadTrackList(const std::string& text, const ClipSession& session,
                  std::vector<std::uint32_t>* tracks);

}  // namespace quorvan::cli
