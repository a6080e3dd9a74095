// The rows of the track view: where they lie, which of them show, and what a press, a wheel or a
// key does to them. All of it works on the state record; sizes and places are in pixels.

#pragma once

#include <cstddef>
#include <cstdint>

#include "state/app_state_info.h"

namespace quorvan {

inline constexpr std::int32_t kRowHeight = 52;

// What has to follow a change of the state. Refreshes may be repeated and merged.
enum Refresh : std::uint32_t {
  kRefreshNothing = 0,
  kRefreshTracks = 1,  // recount the selected tracks
  kRefreshMenus = 2,   // every enable state
  kRefreshList = 4,    // reread the selection of the list
  kRepaint = 8,        // the track area
};

// Parts that the painter redraws, in repaintMask.
inline constexpr std::uint32_t kRepaintAll = 0xF00F0000;
inline constexpr std::uint32_t kRepaintBandAndRows = 0xF00000F0;
inline constexpr std::uint32_t kRepaintRows = 0xF0000000;

// What the left button went down on.
enum PressZone : std::int32_t {
  kNoZone = -1,
  kNameZone = 0,
  kLampZone = 1,
  kUpArrowZone = 2,
  kDownArrowZone = 3,
};

struct PressTarget {
  PressZone zone;
  std::int32_t track;  // of a name or a lamp
};

// Lays out rows, arrows and bands for a view of `width` x `height`, the client area without the
// status bar, and brings the focus row onto the screen.
void LayoutTrackArea(APP_STATE_INFO* app, std::int32_t width, std::int32_t height);

// Moves all rows between the two positions of a partial row.
void FlipRowAlignment(APP_STATE_INFO* app);

// Hides or shows the arrows and sets the first and the last visible track.
void UpdateArrowStates(APP_STATE_INFO* app);

// What lies at a point of the view.
PressTarget HitTest(const APP_STATE_INFO& app, std::int32_t x, std::int32_t y);

enum class SelectMode { kReplace, kExtend, kToggle };  // without a modifier, Shift, Ctrl

// The left button goes down on the name of `track`.
std::uint32_t PressName(APP_STATE_INFO* app, std::int32_t track, SelectMode mode);

// The lamp of `track` is pressed: its switch turns, and with it, unless noAutoTrackSwitch, those of
// the other channels of its file.
std::uint32_t ToggleTrackSwitch(APP_STATE_INFO* app, std::int32_t track);

// All switches turn to the opposite of the first track's.
std::uint32_t ToggleAllTrackSwitches(APP_STATE_INFO* app);

// The selected tracks' switches turn to the opposite of the focus track's, with whole files unless
// noAutoTrackSwitch.
std::uint32_t ToggleSelectedTrackSwitches(APP_STATE_INFO* app);

// The export switch of `track` turns; the export switches of all tracks become ON or OFF.
void ToggleExportSwitch(APP_STATE_INFO* app, std::size_t track);
void SetExportSwitches(APP_STATE_INFO* app, bool on);

std::uint32_t SelectAllTracks(APP_STATE_INFO* app);

// The left button goes down on an arrow, and up again.
std::uint32_t PressArrow(APP_STATE_INFO* app, PressZone zone);
std::uint32_t ReleaseArrow(APP_STATE_INFO* app, PressZone zone);

// One step of the wheel, `notches` away from the user (above 0) or toward them.
std::uint32_t TurnWheel(APP_STATE_INFO* app, std::int32_t notches);

// The keys Up and Down.
std::uint32_t MoveUp(APP_STATE_INFO* app, bool extend);
std::uint32_t MoveDown(APP_STATE_INFO* app, bool extend);

// Number of selected tracks of the loaded file.
std::uint32_t CountSelectedTracks(const APP_STATE_INFO& app);

}  // namespace quorvan
