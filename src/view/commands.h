// The commands of the program, with the texts and keys of its menus. Texts carry their mnemonic
// behind "&".

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

// One line of a menu: a command, a line between groups, or a menu of its own.
struct MenuItem {
  Command command;           // kNoCommand for a line and a submenu
  std::u16string_view text;  // empty for a line
  std::u16string_view keys;  // as shown behind the text, empty for none
  std::span<const MenuItem> submenu;
};

// The menu bar, whose items are all submenus, and what opens on a right click in each view.
std::span<const MenuItem> MainMenu();
std::span<const MenuItem> TrackPopup();
std::span<const MenuItem> LibraryPopup();

// A key that runs a command, in the form of QKeySequence's portable text.
struct Accelerator {
  std::string_view keys;
  Command command;
};
std::span<const Accelerator> Accelerators();

}  // namespace quorvan
