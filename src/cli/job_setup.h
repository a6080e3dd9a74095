// From the arguments of a command to the state record that describes its job.

#pragma once

#include <string>
#include <vector>

#include "cli/commands.h"
#include "state/app_state_info.h"
#include "state/frame_range.h"

namespace quorvan::cli {

// Each of these tells what is wrong on standard error and returns the exit status, kDone when all
// is well.

// Asks CheckClipFor whether the job `kind` takes the loaded clip.
int CheckClipOrSay(JobKind kind, const APP_STATE_INFO& app);

// Puts files and silence on the tracks of the loaded clip and switches them ON.
int PlaceAll(const PlacementArguments& arguments, APP_STATE_INFO* app);

// Sets a range of the job; PrepareOrSay compares the range with the clip.
int SetRange(const RangeArguments& arguments, const RangeFields& fields, APP_STATE_INFO* app);

// Prepares the job `kind`.
int PrepareOrSay(JobKind kind, APP_STATE_INFO* app);

// Reads "1,3-5" into tracks from 0, ascending, each of which the clip must have.
int ReadTrackList(const std::string& text, const APP_STATE_INFO& app,
                  std::vector<std::uint32_t>* tracks);

}  // namespace quorvan::cli
