// What only the window needs to know: where its parts lie, which track rows are visible, what the
// next paint redraws.

#pragma once

#include <array>
#include <cstdint>

#include "mxf/records.h"

namespace quorvan {

enum ScrollArrowState : std::uint32_t { kArrowShown = 0, kArrowPressed = 1, kArrowHidden = 2 };

// Which track row is cut when the rows do not fill the track area exactly.
enum RowAlign : std::uint8_t {
  kWholeRows = 0,    // no row is cut
  kFlushBottom = 1,  // the last row ends with the area, the first one is cut
  kFlushTop = 2,     // the first row starts with the area, the last one is cut
};

// A rectangle in pixels of the window's client area. The column `right` and the line `bottom` lie
// outside the rectangle.
struct RECTANGLE {
  std::int32_t left;
  std::int32_t top;
  std::int32_t right;
  std::int32_t bottom;
};

inline constexpr std::uint32_t kBandHeight =
    160;  // of the top band and of the bottom band, in pixels

// The process has one instance, to which APP_STATE_INFO points; InitializeAppState gives the zeroed
// fields their first values. The front end's thread writes and reads all of it.
struct WINDOW_STATE_INFO {
  std::uint32_t repaintMask;  // parts to redraw next; Qt repaints without reading this mask
  ScrollArrowState upArrowState;
  ScrollArrowState downArrowState;
  std::uint32_t rowRemainder;      // visible pixels of the cut row; 0 when no row is cut
  std::int32_t firstVisibleTrack;  // from 0
  std::int32_t lastVisibleTrack;   // from 0
  std::int32_t visibleRows;        // rows laid out, with the cut row; at most kMaxTracks
  std::uint32_t topBandHeight;     // pixels
  std::uint32_t trackBandHeight;   // pixels
  std::uint32_t bottomBandHeight;  // pixels
  RowAlign rowAlign;
  std::uint8_t scrollTop;  // track (from 0) in the first row
  // Channel of the track's multichannel file, from 1; 0 for a track without such a file.
  std::array<std::uint8_t, kMaxTracks> trackChannelMark;
  std::array<RECTANGLE, kMaxTracks> lampRect;
  RECTANGLE viewRect;  // client area without the status bar
  std::array<RECTANGLE, kMaxTracks> channelMarkRect;
  std::array<RECTANGLE, kMaxTracks> nameRect;
  RECTANGLE trackAreaRect;
  RECTANGLE upArrowRect;
  RECTANGLE downArrowRect;
  std::uint32_t viewScrolled;  // 1 after the rows were scrolled and the focus stayed
  RECTANGLE listRect;          // of the library's list
  std::int32_t wheelRest;      // what the wheel has turned since its last notch, 120 a notch
};

}  // namespace quorvan
