// Decides which commands and buttons the operator can use at the moment.

#pragma once

#include <cstdint>

#include "state/app_state_info.h"
#include "view/commands.h"
#include "view/timecode_entry.h"

namespace quorvan {

// The facts about the program from which the rules decide.
struct EnableFacts {
  bool loaded;             // a clip is loaded
  bool rangeSet;           // IN and OUT of the rewrite are both set
  bool hasTracks;          // the loaded clip has an audio track
  bool libraryView;        // the library view shows, not the track view
  bool hasEntries;         // the library holds a file
  bool oneWavSelected;     // exactly one row of the library is selected
  bool twoTracksSelected;  // exactly two tracks are selected
};
// The facts that `app` holds at the moment.
EnableFacts FactsOf(const APP_STATE_INFO& app);

// The menu bar, and the menus of a right click in the track view and in the library view.
enum class MenuKind { kMain, kTrackPopup, kLibraryPopup };

// True when the item of `command` in the menu `menu` is enabled. An item that no rule names is
// always enabled.
bool IsEnabled(MenuKind menu, Command command, const EnableFacts& facts);

// True when a double click on the display of the point `display` (kInTarget or kOutTarget) opens
// its entry: setting points must be enabled, and the entry of OUT also needs a set IN.
bool OpensEntry(TimecodeTarget display, const APP_STATE_INFO& app);

// The picture buttons of the main window; kDuration stands beside the duration and runs nothing.
enum class MainButton { kLoad, kView, kRewrap, kExport, kIn, kOut, kDuration };
// True when the button is enabled.
bool IsEnabled(MainButton button, const EnableFacts& facts);

}  // namespace quorvan
