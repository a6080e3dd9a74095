#include "view/track_panel.h"

#include <algorithm>

namespace quorvan {
namespace {

constexpr std::int32_t kRowsMargin = 13;    // from the top band to the first row
constexpr std::int32_t kRowsOutside = 340;  // both bands and the margins around the rows
constexpr std::int32_t kTrackAreaTop = 163;
constexpr std::int32_t kChannelMarkWidth = 25;
constexpr std::int32_t kChannelMarkGap = 45;  // from the mark's left edge to the lamp's
constexpr double kLampShare = 85;  // distance from the middle, in hundredths of half the width
constexpr double kNameShare = 75;
constexpr std::int32_t kRowAreaMargin = 10;  // from the track area's edge
constexpr std::int32_t kWheelNotch = 120;
constexpr std::int32_t kMostTurn = 1 << 20;  // in one message; more would count the same

std::int32_t TrackCount(const APP_STATE_INFO& app) {
  return static_cast<std::int32_t>(UsableTracks(*app.mxf->audio));
}

bool Contains(const RECTANGLE& r, std::int32_t x, std::int32_t y) {
  return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
}

std::uint32_t Repainted(APP_STATE_INFO* app, std::uint32_t mask, std::uint32_t refresh = 0) {
  app->window->repaintMask = mask;
  return refresh | kRepaint;
}

void MoveRows(APP_STATE_INFO* app, std::int32_t distance) {
  for (std::int32_t i = 0; i < app->window->visibleRows; ++i) {
    const auto row = static_cast<std::size_t>(i);
    for (RECTANGLE* r : {&app->window->nameRect[row], &app->window->channelMarkRect[row],
                         &app->window->lampRect[row]}) {
      r->top += distance;
      r->bottom += distance;
    }
  }
}

// Stores how many rows show, the track of the first row, and how many pixels of the cut row show, 0
// when no row is cut.
void CountRows(APP_STATE_INFO* app, std::int32_t height) {
  const std::int32_t room = std::max(height - kRowsOutside, 0);
  const std::int32_t tracks = TrackCount(*app);
  std::int32_t rows = room / kRowHeight;
  app->window->rowRemainder = 0;
  app->window->rowAlign = kWholeRows;
  if (tracks > rows && room % kRowHeight != 0) {
    app->window->rowRemainder = static_cast<std::uint32_t>(room % kRowHeight);
    app->window->rowAlign = kFlushTop;
    ++rows;
  }
  std::int32_t first = 0;
  if (rows < app->window->visibleRows) first = app->window->visibleRows - rows;
  if (tracks < first + rows) {
    app->window->rowRemainder = 0;
    app->window->rowAlign = kWholeRows;
    first = 0;
    rows = tracks;
  }
  app->window->scrollTop = static_cast<std::uint8_t>(first);
  app->window->visibleRows = rows;
  if (rows == 0) return;
  app->window->firstVisibleTrack = first;
  app->window->lastVisibleTrack = first + rows - 1;
}

void PlaceRows(APP_STATE_INFO* app, std::int32_t width) {
  const double middle = width / 2.0;
  const double hundredth = middle / 100;
  const double lamp = middle - kLampShare * hundredth;
  // In a view that is narrower than the smallest window should be, the name begins behind the lamp.
  const double name = std::max(middle - kNameShare * hundredth, lamp + kRowHeight);
  const auto whole = [](double place) { return static_cast<std::int32_t>(place); };
  for (std::int32_t i = 0; i < app->window->visibleRows; ++i) {
    const auto row = static_cast<std::size_t>(i);
    const std::int32_t top = static_cast<std::int32_t>(kBandHeight) + kRowsMargin + kRowHeight * i;
    const std::int32_t bottom = top + kRowHeight;
    const std::int32_t mark = whole(lamp - kChannelMarkGap);
    app->window->channelMarkRect[row] = {mark, top, mark + kChannelMarkWidth, bottom};
    app->window->lampRect[row] = {whole(lamp), top, whole(lamp) + kRowHeight, bottom};
    app->window->nameRect[row] = {whole(name), top, whole(width - name), bottom};
  }
  const std::int32_t arrow = whole(width - name + kRowHeight);
  const auto band = static_cast<std::int32_t>(app->window->trackBandHeight);
  app->window->trackAreaRect = {0, kTrackAreaTop, width, kTrackAreaTop + band};
  const std::int32_t up = kTrackAreaTop + kRowAreaMargin;
  const std::int32_t down = kTrackAreaTop + band - kRowAreaMargin - kRowHeight;
  app->window->upArrowRect = {arrow, up, arrow + kRowHeight, up + kRowHeight};
  app->window->downArrowRect = {arrow, down, arrow + kRowHeight, down + kRowHeight};
}

void BringFocusOntoScreen(APP_STATE_INFO* app) {
  const auto scroll = [app](std::int32_t distance) {
    app->window->scrollTop = static_cast<std::uint8_t>(app->window->scrollTop + distance);
  };
  if (app->window->visibleRows == 0) return;
  if (app->focusTrack < app->window->firstVisibleTrack) {
    scroll(app->focusTrack - app->window->firstVisibleTrack);
    app->window->firstVisibleTrack = app->focusTrack;
    if (app->window->rowAlign == kFlushBottom) FlipRowAlignment(app);
  } else if (app->focusTrack >= app->window->lastVisibleTrack) {
    const std::int32_t distance = app->focusTrack - app->window->lastVisibleTrack;
    scroll(distance);
    app->window->firstVisibleTrack += distance;
    app->window->lastVisibleTrack = app->focusTrack;
    if (app->window->rowAlign == kFlushTop) FlipRowAlignment(app);
  }
}

void FlipIfAligned(APP_STATE_INFO* app, RowAlign align) {
  if (app->window->rowRemainder != 0 && app->window->rowAlign == align) FlipRowAlignment(app);
}

void ScrollUp(APP_STATE_INFO* app) {
  if (app->window->scrollTop != 0) --app->window->scrollTop;
  FlipIfAligned(app, kFlushBottom);
}

void ScrollDown(APP_STATE_INFO* app) {
  if (app->window->scrollTop + app->window->visibleRows < TrackCount(*app))
    ++app->window->scrollTop;
  FlipIfAligned(app, kFlushTop);
}

// Scrolls until the row of the focus track shows, after the wheel or the arrows have moved the rows
// away from it. `down` is the direction of the key that was pressed.
void ReturnToFocus(APP_STATE_INFO* app, bool down) {
  if (app->window->viewScrolled != 1) return;
  app->window->viewScrolled = 0;
  if (app->window->visibleRows == 0) return;
  const std::int32_t first = app->window->scrollTop;
  const std::int32_t last = first + app->window->visibleRows - 1;
  const std::int32_t focus = app->focusTrack;
  std::int32_t distance = 0;
  if (focus < first) distance = focus - first;
  if (focus > last) distance = focus - last;
  app->window->scrollTop = static_cast<std::uint8_t>(first + distance);
  const bool inFirstRow = focus == app->window->scrollTop;
  const bool inLastRow = focus == app->window->scrollTop + app->window->visibleRows - 1;
  if (inFirstRow && (!down || distance < 0)) FlipIfAligned(app, kFlushBottom);
  if (inLastRow && down) FlipIfAligned(app, kFlushTop);
}

std::uint32_t SelectRow(APP_STATE_INFO* app, std::int32_t row) {
  app->focusTrack = app->window->scrollTop + row;
  app->trackSelected[static_cast<std::size_t>(app->focusTrack)] = 1;
  UpdateArrowStates(app);
  return Repainted(app, kRepaintBandAndRows, kRefreshTracks | kRefreshMenus);
}

std::uint32_t StayOnRow(APP_STATE_INFO* app) {
  UpdateArrowStates(app);
  return Repainted(app, kRepaintBandAndRows, kRefreshTracks | kRefreshMenus);
}

}  // namespace

void LayoutTrackArea(APP_STATE_INFO* app, std::int32_t width, std::int32_t height) {
  const auto bands = static_cast<std::int32_t>(2 * kBandHeight);
  app->window->viewRect = {0, 0, width, height};
  app->window->topBandHeight = kBandHeight;
  app->window->bottomBandHeight = kBandHeight;
  app->window->trackBandHeight = static_cast<std::uint32_t>(std::max(height - bands, 0));
  app->window->viewScrolled = 0;
  CountRows(app, height);
  PlaceRows(app, width);
  BringFocusOntoScreen(app);
}

void FlipRowAlignment(APP_STATE_INFO* app) {
  if (app->window->visibleRows == 0 || app->window->rowAlign == kWholeRows) return;
  const std::int32_t distance = kRowHeight - static_cast<std::int32_t>(app->window->rowRemainder);
  if (app->window->rowAlign == kFlushBottom) {
    MoveRows(app, distance);
    app->window->rowAlign = kFlushTop;
  } else {
    MoveRows(app, -distance);
    app->window->rowAlign = kFlushBottom;
  }
}

void UpdateArrowStates(APP_STATE_INFO* app) {
  if (app->window->visibleRows >= 1) {
    app->window->firstVisibleTrack = app->window->scrollTop;
    app->window->lastVisibleTrack = app->window->scrollTop + app->window->visibleRows - 1;
  }
  if (app->window->upArrowState == kArrowHidden) app->window->upArrowState = kArrowShown;
  if (app->window->downArrowState == kArrowHidden) app->window->downArrowState = kArrowShown;
  if (app->window->firstVisibleTrack == 0 && app->window->rowAlign != kFlushBottom) {
    app->window->upArrowState = kArrowHidden;
  }
  if (app->window->lastVisibleTrack == TrackCount(*app) - 1 && app->window->rowAlign != kFlushTop) {
    app->window->downArrowState = kArrowHidden;
  }
}

RECTANGLE RowArea(const APP_STATE_INFO& app) {
  RECTANGLE area = app.window->trackAreaRect;
  area.top += kRowAreaMargin;
  area.bottom -= kRowAreaMargin;
  return area;
}

PressTarget HitTest(const APP_STATE_INFO& app, std::int32_t x, std::int32_t y) {
  PressTarget target{kNoZone, 0};
  const std::int32_t rows = Contains(RowArea(app), x, y) ? app.window->visibleRows : 0;
  for (std::int32_t i = 0; i < rows && i < TrackCount(app); ++i) {
    const auto row = static_cast<std::size_t>(i);
    const bool onName = Contains(app.window->nameRect[row], x, y);
    if (onName || Contains(app.window->lampRect[row], x, y)) {
      target = {onName ? kNameZone : kLampZone, app.window->scrollTop + i};
    }
  }
  if (Contains(app.window->upArrowRect, x, y) && app.window->upArrowState != kArrowHidden) {
    target.zone = kUpArrowZone;
  }
  if (Contains(app.window->downArrowRect, x, y) && app.window->downArrowState != kArrowHidden) {
    target.zone = kDownArrowZone;
  }
  return target;
}

std::uint32_t PressName(APP_STATE_INFO* app, std::int32_t track, SelectMode mode) {
  if (track == app->window->scrollTop) FlipIfAligned(app, kFlushBottom);
  if (track == app->window->scrollTop + app->window->visibleRows - 1) FlipIfAligned(app, kFlushTop);
  auto& selected = app->trackSelected;
  const auto place = static_cast<std::size_t>(track);
  switch (mode) {
    case SelectMode::kExtend: {
      const auto [first, last] = std::minmax(track, app->focusTrack);
      std::fill(selected.begin() + first, selected.begin() + last + 1, std::uint8_t{1});
      app->focusTrack = track;
      break;
    }
    case SelectMode::kToggle:
      if (track != app->focusTrack) selected[place] = selected[place] == 0 ? 1 : 0;
      break;
    case SelectMode::kReplace:
      selected.fill(0);
      selected[place] = 1;
      app->focusTrack = track;
      break;
  }
  return Repainted(app, kRepaintBandAndRows, kRefreshTracks | kRefreshMenus);
}

std::uint32_t ToggleTrackSwitch(APP_STATE_INFO* app, std::int32_t track) {
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  const auto t = static_cast<std::size_t>(track);
  const std::uint8_t value = tracks.rewrapSwitch[t] == kSwitchOff ? kSwitchOn : kSwitchOff;
  tracks.rewrapSwitch[t] = value;
  if (app->noAutoTrackSwitch == 0 && tracks.wavGroup[t] != 0) {
    for (std::size_t i = 0; i < UsableTracks(*app->mxf->audio); ++i) {
      if (tracks.wav[i] != nullptr && tracks.wavGroup[i] == tracks.wavGroup[t]) {
        tracks.rewrapSwitch[i] = value;
      }
    }
  }
  return Repainted(app, kRepaintAll);
}

std::uint32_t ToggleAllTrackSwitches(APP_STATE_INFO* app) {
  auto& switches = app->tracks->rewrapSwitch;
  const std::uint8_t value = switches[0] == kSwitchOn ? kSwitchOff : kSwitchOn;
  std::fill(switches.begin(), switches.begin() + TrackCount(*app), value);
  return Repainted(app, kRepaintBandAndRows);
}

std::uint32_t ToggleSelectedTrackSwitches(APP_STATE_INFO* app) {
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  const std::size_t count = UsableTracks(*app->mxf->audio);
  if (count == 0) return Repainted(app, kRepaintBandAndRows);
  const auto focus = static_cast<std::size_t>(app->focusTrack);
  const std::uint8_t value = tracks.rewrapSwitch[focus] == kSwitchOff ? kSwitchOn : kSwitchOff;
  for (std::size_t t = 0; t < count && app->noAutoTrackSwitch == 0; ++t) {
    if (app->trackSelected[t] != 1 || tracks.wav[t] == nullptr || tracks.wavGroup[t] == 0) continue;
    for (std::size_t i = 0; i < count; ++i) {
      if (tracks.wavGroup[i] == tracks.wavGroup[t]) app->trackSelected[i] = 1;
    }
  }
  for (std::size_t t = 0; t < count; ++t) {
    if (app->trackSelected[t] == 1) tracks.rewrapSwitch[t] = value;
  }
  return Repainted(app, kRepaintBandAndRows);
}

void ToggleExportSwitch(APP_STATE_INFO* app, std::size_t track) {
  std::uint8_t& state = app->tracks->exportSwitch[track];
  state = state == kSwitchOff ? kSwitchOn : kSwitchOff;
}

void SetExportSwitches(APP_STATE_INFO* app, bool on) {
  auto& switches = app->tracks->exportSwitch;
  std::fill_n(switches.begin(), UsableTracks(*app->mxf->audio), on ? kSwitchOn : kSwitchOff);
}

std::uint32_t SelectAllTracks(APP_STATE_INFO* app) {
  std::fill_n(app->trackSelected.begin(), TrackCount(*app), std::uint8_t{1});
  return Repainted(app, kRepaintBandAndRows, kRefreshTracks | kRefreshMenus);
}

std::uint32_t PressArrow(APP_STATE_INFO* app, PressZone zone) {
  if (TrackCount(*app) == 0) return kRefreshNothing;
  ScrollArrowState& state =
      zone == kUpArrowZone ? app->window->upArrowState : app->window->downArrowState;
  state = kArrowPressed;
  UpdateArrowStates(app);
  app->window->viewScrolled = 1;
  zone == kUpArrowZone ? ScrollUp(app) : ScrollDown(app);
  return Repainted(app, app->window->repaintMask);
}

std::uint32_t ReleaseArrow(APP_STATE_INFO* app, PressZone zone) {
  if (zone != kUpArrowZone && zone != kDownArrowZone) return kRefreshNothing;
  ScrollArrowState& state =
      zone == kUpArrowZone ? app->window->upArrowState : app->window->downArrowState;
  if (state != kArrowHidden) state = kArrowShown;
  return Repainted(app, kRepaintRows);
}

std::uint32_t TurnWheel(APP_STATE_INFO* app, std::int32_t delta) {
  std::int32_t& rest = app->window->wheelRest;
  const bool turnsBack = (rest > 0 && delta < 0) || (rest < 0 && delta > 0);
  delta = std::clamp(delta, -kMostTurn, kMostTurn);
  const std::int32_t turned = turnsBack ? delta : rest + delta;
  const std::int32_t notches = turned / kWheelNotch;
  rest = turned % kWheelNotch;
  if (notches == 0 || TrackCount(*app) == 0) return kRefreshNothing;
  notches > 0 ? ScrollUp(app) : ScrollDown(app);
  app->window->viewScrolled = 1;
  return Repainted(app, kRepaintBandAndRows);
}

std::uint32_t MoveUp(APP_STATE_INFO* app, bool extend) {
  if (TrackCount(*app) == 0) return kRefreshNothing;
  ReturnToFocus(app, false);
  std::int32_t row = app->focusTrack - app->window->scrollTop - 1;
  if (row < 0 && app->window->scrollTop == 0) return StayOnRow(app);
  if (!extend) app->trackSelected.fill(0);
  if (row < 0) {
    --app->window->scrollTop;
    row = 0;
  } else if (row == 0) {
    FlipIfAligned(app, kFlushBottom);
  }
  return SelectRow(app, row);
}

std::uint32_t MoveDown(APP_STATE_INFO* app, bool extend) {
  const std::int32_t tracks = TrackCount(*app);
  if (tracks == 0) return kRefreshNothing;
  ReturnToFocus(app, true);
  std::int32_t row = app->focusTrack - app->window->scrollTop + 1;
  const bool atEnd = app->window->scrollTop + app->window->visibleRows >= tracks;
  if (row > app->window->visibleRows || (row == app->window->visibleRows && atEnd))
    return StayOnRow(app);
  if (!extend) app->trackSelected.fill(0);
  if (row == app->window->visibleRows) {
    ++app->window->scrollTop;
    row = app->window->visibleRows - 1;
  } else if (row == app->window->visibleRows - 1) {
    FlipIfAligned(app, kFlushTop);
  }
  return SelectRow(app, row);
}

std::uint32_t CountSelectedTracks(const APP_STATE_INFO& app) {
  if (app.mxfLoaded != 1) return 0;
  const auto& selected = app.trackSelected;
  return static_cast<std::uint32_t>(
      std::count(selected.begin(), selected.begin() + TrackCount(app), std::uint8_t{1}));
}

}  // namespace quorvan
