// The track view, in which each audio track of the clip has a row: where the rows lie, which of
// them show, and what a press, the wheel or a key does to them. The functions change the state
// record, in which places and sizes are in pixels. Tracks count from 0, rows from 0 at the first
// visible row.
//
// A function that returns a number returns a set of Refresh, unless its comment says otherwise.

#pragma once

#include <cstddef>
#include <cstdint>

#include "state/app_state_info.h"
#include "state/window_state_info.h"

namespace quorvan {

// Pixels.
inline constexpr std::int32_t kRowHeight = 52;

// What the caller has to do after a change of the state. Sets of several changes may be merged, and
// an action may be repeated.
enum Refresh : std::uint32_t {
  kRefreshNothing = 0,
  kRefreshTracks = 1,  // count the selected tracks
  kRefreshMenus = 2,   // find anew which commands and buttons are enabled
  kRefreshList = 4,    // read the selection of the library's table
  kRepaint = 8,        // paint the track area
};

// Values of repaintMask: the parts of the track view that a change of the state has altered.
inline constexpr std::uint32_t kRepaintAll = 0xF00F0000;
inline constexpr std::uint32_t kRepaintBandAndRows = 0xF00000F0;
inline constexpr std::uint32_t kRepaintRows = 0xF0000000;

// The kind of place on which the left button went down.
enum PressZone : std::int32_t {
  kNoZone = -1,
  kNameZone = 0,
  kLampZone = 1,
  kUpArrowZone = 2,
  kDownArrowZone = 3,
};

// The place that lies under a point.
struct PressTarget {
  PressZone zone;
  std::int32_t track;  // of a name or a lamp; meaningless for any other zone
};

// Lays out rows, arrows and bands for a view of `width` x `height` pixels, the client area without
// the status bar, and scrolls until the row of the focus track shows.
void LayoutTrackArea(APP_STATE_INFO* app, std::int32_t width, std::int32_t height);

// Moves all rows so that the cut row lies at the other end of the area: at the top instead of at
// the bottom, or back. Does nothing when no row is cut.
void FlipRowAlignment(APP_STATE_INFO* app);

// Hides an arrow when no row is hidden or cut in its direction, shows a hidden arrow otherwise, and
// stores the first and the last visible track.
void UpdateArrowStates(APP_STATE_INFO* app);

// The part of the track area, without a margin at its top and bottom, in which rows are painted and
// take presses.
RECTANGLE RowArea(const APP_STATE_INFO& app);

// Finds what lies at the point (`x`, `y`) of the view, in pixels. A hidden arrow, the part of a row
// outside RowArea and everything else that cannot be pressed give kNoZone.
PressTarget HitTest(const APP_STATE_INFO& app, std::int32_t x, std::int32_t y);

enum class SelectMode { kReplace, kExtend, kToggle };  // no modifier, Shift, Ctrl

// Selects tracks after a press of the left button on the name of `track`, which must be visible. A
// cut row moves whole into the area. kReplace selects `track` alone; kExtend adds all tracks from
// the focus track to `track`; both move the focus to `track`. kToggle turns the selection of
// `track`, unless it is the focus track, and leaves the focus where it is.
std::uint32_t PressName(APP_STATE_INFO* app, std::int32_t track, SelectMode mode);

// Turns the rewrite switch of `track`, from OFF to ON or to OFF from any other value, after a press
// on its lamp. Unless noAutoTrackSwitch is set, the tracks of the other channels of the same WAV
// file get the same value.
std::uint32_t ToggleTrackSwitch(APP_STATE_INFO* app, std::int32_t track);

// Turns the rewrite switches of all tracks OFF when the switch of the first track is ON, else ON.
std::uint32_t ToggleAllTrackSwitches(APP_STATE_INFO* app);

// Gives the rewrite switches of the selected tracks the opposite value of the focus track's switch.
// Unless noAutoTrackSwitch is set, the tracks of the other channels of each WAV file on a selected
// track are first selected, too.
std::uint32_t ToggleSelectedTrackSwitches(APP_STATE_INFO* app);

// Turns the export switch of `track`, from OFF to ON or to OFF from any other value.
void ToggleExportSwitch(APP_STATE_INFO* app, std::size_t track);
// Sets the export switches of all tracks of the loaded clip to ON or OFF.
void SetExportSwitches(APP_STATE_INFO* app, bool on);

// Selects all tracks.
std::uint32_t SelectAllTracks(APP_STATE_INFO* app);

// Scrolls by a row, if there is a further row, after a press of the left button on the arrow `zone`
// (kUpArrowZone or kDownArrowZone). A row that is cut at that end moves whole into the area. The
// focus stays on its track. kRefreshNothing without tracks.
std::uint32_t PressArrow(APP_STATE_INFO* app, PressZone zone);
// Shows the arrow `zone` as not pressed after the left button was released. kRefreshNothing when
// `zone` is no arrow.
std::uint32_t ReleaseArrow(APP_STATE_INFO* app, PressZone zone);

// Scrolls like one press on an arrow after a turn of the wheel by `delta`, which is 120 for each
// notch and above 0 away from the user: up when it is above 0, down when it is below, by one row
// however many notches there are. Turns of less than a notch in the same direction add up to a
// notch. kRefreshNothing when no row was scrolled.
std::uint32_t TurnWheel(APP_STATE_INFO* app, std::int32_t delta);

// Moves the focus to the track above or below after the key Up or Down, scrolls until the row of
// that track shows, and selects the track. Other tracks stay selected only with `extend` (Shift).
// At the first or last track the focus and the selection stay. kRefreshNothing without tracks.
std::uint32_t MoveUp(APP_STATE_INFO* app, bool extend);
std::uint32_t MoveDown(APP_STATE_INFO* app, bool extend);

// The number of selected tracks of the loaded clip; 0 while no clip is loaded.
std::uint32_t CountSelectedTracks(const APP_STATE_INFO& app);

}  // namespace quorvan
