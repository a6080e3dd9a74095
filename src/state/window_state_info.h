// What the window shows, and nobody but the window: where its parts lie, which rows are in sight,
// what the next paint redraws.

#pragma once

#include <array>
#include <cstdint>

#include "mxf/records.h"

namespace quorvan {

enum ScrollArrowState : std::uint32_t { kArrowShown = 0, kArrowPressed = 1, kArrowHidden = 2 };

enum RowAlign : std::uint8_t {
  kWholeRows = 0,    // no row is cut
  kFlushBottom = 1,  // the last row ends with the area, the first one is cut
  kFlushTop = 2,     // the first row starts with the area, the last one is cut
};

// In pixels of the window's client area; right and bottom lie outside.
struct RECTANGLE {
  std::int32_t left;
  std::int32_t top;
  std::int32_t right;
  std::int32_t bottom;
};

inline constexpr std::uint32_t kBandHeight = 160;  // of the top and the bottom band, in pixels

// One instance in the process, zero at start; APP_STATE_INFO leads to it. The window's thread
// writes and reads all of it.
struct WINDOW_STATE_INFO {
  std::uint32_t repaintMask;  // parts that the next paint redraws
  ScrollArrowState upArrowState;
  ScrollArrowState downArrowState;
  std::uint32_t rowRemainder;  // pixels of the partly visible row, 0 when all are whole
  std::int32_t firstVisibleTrack;
  std::int32_t lastVisibleTrack;
  std::int32_t visibleRows;     // rows laid out, at most kMaxTracks
  std::uint32_t topBandHeight;  // pixels
  std::uint32_t trackBandHeight;
  std::uint32_t bottomBandHeight;
  RowAlign rowAlign;
  std::uint8_t scrollTop;                                 // track of the first row
  std::array<std::uint8_t, kMaxTracks> trackChannelMark;  // 0, or channel of its file from 1
  std::array<RECTANGLE, kMaxTracks> lampRect;
  RECTANGLE viewRect;  // client area without the status bar
  std::array<RECTANGLE, kMaxTracks> channelMarkRect;
  std::array<RECTANGLE, kMaxTracks> nameRect;
  RECTANGLE trackAreaRect;
  RECTANGLE upArrowRect;
  RECTANGLE downArrowRect;
  std::uint32_t viewScrolled;  // 1 after the rows moved without the focus
  RECTANGLE listRect;          // of the library's list; base of its column widths
};

}  // namespace quorvan
