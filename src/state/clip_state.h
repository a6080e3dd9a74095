// The change between the states "no file" and "a clip is loaded", and the points of a range in the
// clip.

#pragma once

#include <cstdint>

#include "state/app_state_info.h"
#include "state/frame_range.h"

namespace quorvan {

// Puts `app` into the state after an accepted analysis, which `mxf` must hold: a clip is loaded,
// the switches of its tracks are OFF, the switches of tracks that the clip does not have are
// kNoSuchTrack, and only the first track is selected and has the focus.
void EnterLoadedState(APP_STATE_INFO* app);

// Puts `app` into the state without a file: unloads the clip, frees the library with its index and
// the list of timecode breaks, and undoes the choices made for the tracks and the range of a
// rewrite, and the method of file access. Settings that do not belong to a clip stay, such as
// noAutoTrackSwitch, noTimecodeCheck and wavBufferIndex. The range of the measurement stays with
// its flags; the values of the export range stay, but their flags are cleared.
void ClearMxfState(APP_STATE_INFO* app);

// The point at the real count `frames` of a clip with `timecode`: slot 0 is `frames`; slot 1 is one
// hour on, wrapped at midnight, when the clip starts in hour 23, else `frames` too. Slot 1 is
// kInvalidTimecode when that count cannot be made.
FramePoint MakeFramePoint(const MXF_TIMECODE_INFO& timecode, std::int32_t frames);

// True when both points of a range are set.
bool IsRangeSet(const PointSet& points);

// Copies the range of the rewrite into the range `fields` of `app->tracks` and marks both of its
// points as set in `*points`. False, with nothing changed, when the range of the rewrite is not
// set.
bool TakeRewrapRange(APP_STATE_INFO* app, const RangeFields& fields, PointSet* points);

// The points of the clip's first frame and of its last frame.
FramePoint FirstFramePoint(const MXF_TIMECODE_INFO& timecode);
FramePoint LastFramePoint(const MXF_TIMECODE_INFO& timecode);

}  // namespace quorvan
