// From "no file" to "a clip is loaded", and the points of a range within it.

#pragma once

#include <cstdint>

#include "state/app_state_info.h"
#include "state/frame_range.h"

namespace quorvan {

// Puts `app` into the state behind an accepted analysis: a file is loaded, all its track switches
// are OFF, switches of tracks that it has not stay at kNoSuchTrack, the first track is selected.
void EnterLoadedState(APP_STATE_INFO* app);

// The way back: nothing is loaded, the library is empty, and every choice made for the clip is
// undone, among them the method of file access. What outlives a clip stays: noAutoTrackSwitch,
// wavBufferIndex, the range of the measurement with its flags, and the values, without their flags,
// of the export range.
void ClearMxfState(APP_STATE_INFO* app);

// Both slots of the point with the real count `frames`: the second one hour on when the clip starts
// in hour 23, else the same.
FramePoint MakeFramePoint(const MXF_TIMECODE_INFO& timecode, std::int32_t frames);

// True when both points of a range are set.
bool IsRangeSet(const PointSet& points);

// Makes the range of the rewrite the range of `fields` and sets its `points`. False, and nothing
// has changed, when the range of the rewrite is not set.
bool TakeRewrapRange(APP_STATE_INFO* app, const RangeFields& fields, PointSet* points);

// The clip's first and last frame.
FramePoint FirstFramePoint(const MXF_TIMECODE_INFO& timecode);
FramePoint LastFramePoint(const MXF_TIMECODE_INFO& timecode);

}  // namespace quorvan
