// Which commands and buttons the operator can use at the moment.

#pragma once

#include <cstdint>

#include "state/app_state_info.h"
#include "view/commands.h"
#include "view/timecode_entry.h"

namespace quorvan {

// All that the rules look at.
struct EnableFacts {
  bool loaded;
  bool rangeSet;  // IN and OUT of the rewrite
  bool hasTracks;
  bool libraryView;
  bool hasEntries;         // in the library
  bool oneWavSelected;     // exactly
  bool twoTracksSelected;  // exactly
};
EnableFacts FactsOf(const APP_STATE_INFO& app);

enum class MenuKind { kMain, kTrackPopup, kLibraryPopup };

// Whether the item of `command` is enabled in that menu. An item that no rule names is.
bool IsEnabled(MenuKind menu, Command command, const EnableFacts& facts);

// Whether a double click on the display of IN or OUT opens the entry: that of OUT only behind a set
// IN.
bool OpensEntry(TimecodeTarget display, const APP_STATE_INFO& app);

enum class MainButton { kLoad, kView, kRewrap, kExport, kIn, kOut, kDuration };
bool IsEnabled(MainButton button, const EnableFacts& facts);

}  // namespace quorvan
