// The commands of the program, and the texts and keys of its menus. In a text, "&" stands in front
// of the item's mnemonic.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace quorvan {

enum Command : std::uint32_t {
  kNoCommand = 0,
  kAbout = 104,
  kQuit = 105,
  kRewriteAudio = 32793,
  kExportBwf = 32794,
  kSetIn = 32795,
  kAssignWav = 32797,
  kSelectAll = 32799,
  kAddWav = 32800,
  kSetOut = 32815,
  kDelete = 32831,
  kSwitchView = 32832,
  kLoadMxf = 32843,
  kUnloadMxf = 32856,
  kSortByName = 32868,
  kSortByChannels = 32869,
  kSortByBits = 32870,
  kSortBySampleRate = 32871,
  kSortByStart = 32872,
  kSortByDuration = 32873,
  kSortByCreated = 32874,
  kSortByUpdated = 32875,
  kSortBySize = 32876,
  kOpenLocation = 32884,
  kSettings = 32889,
  kToggleAllTracks = 32897,
  kToggleSelectedTracks = 32911,
  kMetaInformation = 32917,
  kResetColumnWidths = 32924,
  kMeasureLoudness = 32931,
};

// One line of a menu: a command, a separator between groups, or a submenu.
struct MenuItem {
  Command command;                    // kNoCommand for a separator and a submenu
  std::u16string_view text;           // empty for a separator
  std::u16string_view keys;           // shown behind the text; empty for none
  std::span<const MenuItem> submenu;  // empty for a command and a separator
};

// The items of the menu bar, each of which is a submenu.
std::span<const MenuItem> MainMenu();
// The menu that a right click in the track view opens, and the menu of the library view.
std::span<const MenuItem> TrackPopup();
std::span<const MenuItem> LibraryPopup();

// A key that runs a command. `keys` is the portable text of a QKeySequence, terminated with a zero.
struct Accelerator {
  std::string_view keys;
  Command command;
};
// All keys that run a command.
std::span<const Accelerator> Accelerators();

}  // namespace quorvan
