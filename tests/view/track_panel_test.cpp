#include "view/track_panel.h"
#include "state/window_state_info.h"

#include <gtest/gtest.h>

namespace quorvan {
namespace {

// A loaded clip of so many tracks in a view of so many whole rows and a part.
struct Panel {
  Panel(std::uint8_t tracks, std::int32_t rows, std::int32_t part, std::int32_t width = 1280) {
    app.mxfLoaded = 1;
    state.mxf.audio.trackCount = tracks;
    for (std::uint32_t t = 0; t < UsableTracks(state.mxf.audio); ++t)
      state.tracks.rewrapSwitch[t] = kSwitchOff;
    LayoutTrackArea(&app, width, 340 + rows * kRowHeight + part);
    UpdateArrowStates(&app);
  }
  std::vector<int> Selected() const {
    std::vector<int> tracks;
    for (int t = 0; t < 24; ++t) {
      if (app.trackSelected[static_cast<std::size_t>(t)] == 1) tracks.push_back(t);
    }
    return tracks;
  }
  AppState state;
  APP_STATE_INFO& app = state.info;
};

using Tracks = std::vector<int>;

TEST(TrackPanel, PlacesEveryRowByTheWidth) {
  for (const std::uint8_t tracks : {std::uint8_t{1}, std::uint8_t{10}, std::uint8_t{24}}) {
    for (const auto& [w, h] : {std::pair{1280, 600}, {1283, 901}, {1920, 1040}}) {
      AppState state;
      state.info.mxfLoaded = 1;
      state.mxf.audio.trackCount = tracks;
      LayoutTrackArea(&state.info, w, h);
      const APP_STATE_INFO& app = state.info;
      const double m = w / 2;
      const double s = m / 100;
      const std::int32_t room = h - 340;
      const std::int32_t fit = room / 52 + (room % 52 != 0 ? 1 : 0);
      EXPECT_EQ(app.window->visibleRows, tracks <= room / 52 ? tracks : std::min<int>(fit, tracks));
      for (std::int32_t i = 0; i < app.window->visibleRows; ++i) {
        const auto row = static_cast<std::size_t>(i);
        const std::int32_t y = 173 + 52 * i;
        EXPECT_EQ(app.window->nameRect[row].left, static_cast<std::int32_t>(m - 75 * s));
        EXPECT_EQ(app.window->nameRect[row].right, static_cast<std::int32_t>(w - (m - 75 * s)));
        EXPECT_EQ(app.window->lampRect[row].left, static_cast<std::int32_t>(m - 85 * s));
        EXPECT_EQ(app.window->lampRect[row].right - app.window->lampRect[row].left, 52);
        EXPECT_EQ(app.window->channelMarkRect[row].left,
                  static_cast<std::int32_t>(m - 85 * s - 45));
        EXPECT_EQ(app.window->channelMarkRect[row].right - app.window->channelMarkRect[row].left,
                  25);
        for (const RECTANGLE& r : {app.window->nameRect[row], app.window->lampRect[row],
                                   app.window->channelMarkRect[row]}) {
          EXPECT_EQ(r.top, y);
          EXPECT_EQ(r.bottom, y + 52);
        }
      }
      EXPECT_EQ(app.window->trackAreaRect.top, 163);
      EXPECT_EQ(app.window->trackAreaRect.bottom, 163 + h - 320);
      EXPECT_EQ(app.window->upArrowRect.left, static_cast<std::int32_t>(w - (m - 75 * s) + 52));
      EXPECT_EQ(app.window->upArrowRect.top, 173);
      EXPECT_EQ(app.window->downArrowRect.top, 101 + h - 320);
      EXPECT_EQ(app.window->downArrowRect.bottom, 153 + h - 320);
    }
  }
}

TEST(TrackPanel, ScrollsAPartialRowIntoViewFirst) {
  Panel panel(24, 10, 20);
  EXPECT_EQ(panel.app.window->visibleRows, 11);
  EXPECT_EQ(panel.app.window->rowAlign, kFlushTop);
  EXPECT_EQ(panel.app.window->upArrowState, kArrowHidden);
  EXPECT_EQ(panel.app.window->downArrowState, kArrowShown);
  PressArrow(&panel.app, kDownArrowZone);
  EXPECT_EQ(panel.app.window->downArrowState, kArrowPressed);
  EXPECT_EQ(panel.app.window->scrollTop, 1);
  EXPECT_EQ(panel.app.window->rowAlign, kFlushBottom);
  EXPECT_EQ(panel.app.window->nameRect[0].top, 173 - 32);
  ReleaseArrow(&panel.app, kDownArrowZone);
  EXPECT_EQ(panel.app.window->downArrowState, kArrowShown);
  for (int i = 0; i < 30; ++i)
    TurnWheel(&panel.app, -2);
  UpdateArrowStates(&panel.app);
  EXPECT_EQ(panel.app.window->scrollTop, 13);
  EXPECT_EQ(panel.app.window->lastVisibleTrack, 23);
  EXPECT_EQ(panel.app.window->downArrowState, kArrowHidden);
  EXPECT_EQ(panel.app.window->upArrowState, kArrowShown);
  // The focus row is far above: the key brings it back first.
  MoveDown(&panel.app, false);
  EXPECT_EQ(panel.app.window->scrollTop, 0);
  EXPECT_EQ(panel.app.focusTrack, 1);
  EXPECT_EQ(panel.Selected(), Tracks{1});
  EXPECT_EQ(TurnWheel(&panel.app, 0), kRefreshNothing);
}

TEST(TrackPanel, WalksByKeysFromEndToEnd) {
  Panel panel(24, 10, 20);
  for (int i = 1; i < 24; ++i) {
    EXPECT_NE(MoveDown(&panel.app, false) & kRefreshMenus, 0u);
    ASSERT_EQ(panel.app.focusTrack, i);
    ASSERT_EQ(panel.Selected(), Tracks{i});
    ASSERT_GE(i, panel.app.window->firstVisibleTrack);
    ASSERT_LE(i, panel.app.window->lastVisibleTrack);
  }
  EXPECT_EQ(panel.app.window->rowAlign, kFlushBottom);
  MoveDown(&panel.app, false);
  MoveDown(&panel.app, true);
  EXPECT_EQ(panel.Selected(), Tracks{23});
  MoveUp(&panel.app, true);
  MoveUp(&panel.app, true);
  MoveDown(&panel.app, true);
  EXPECT_EQ(panel.Selected(), (Tracks{21, 22, 23}));
  for (int i = 0; i < 30; ++i)
    MoveUp(&panel.app, false);
  EXPECT_EQ(panel.app.focusTrack, 0);
  EXPECT_EQ(panel.app.window->scrollTop, 0);
  EXPECT_EQ(panel.app.window->rowAlign, kFlushTop);
  EXPECT_EQ(panel.app.window->nameRect[0].top, 173);
}

TEST(TrackPanel, KeepsTheFocusRowOnScreenWhenTheWindowShrinks) {
  Panel panel(24, 24, 0);
  EXPECT_EQ(panel.app.window->rowAlign, kWholeRows);
  for (int i = 0; i < 20; ++i)
    MoveDown(&panel.app, false);
  LayoutTrackArea(&panel.app, 1280, 340 + 5 * 52 + 10);
  EXPECT_EQ(panel.app.window->visibleRows, 6);
  EXPECT_GE(panel.app.focusTrack, panel.app.window->firstVisibleTrack);
  EXPECT_LE(panel.app.focusTrack, panel.app.window->lastVisibleTrack);
  LayoutTrackArea(&panel.app, 1280, 340 + 30 * 52);
  EXPECT_EQ(panel.app.window->visibleRows, 24);
  EXPECT_EQ(panel.app.window->scrollTop, 0);
  EXPECT_EQ(panel.app.window->rowRemainder, 0u);
}

TEST(TrackPanel, SelectsByModifier) {
  Panel panel(8, 10, 0);
  PressName(&panel.app, 2, SelectMode::kReplace);
  EXPECT_EQ(panel.Selected(), Tracks{2});
  PressName(&panel.app, 5, SelectMode::kExtend);
  EXPECT_EQ(panel.Selected(), (Tracks{2, 3, 4, 5}));
  EXPECT_EQ(panel.app.focusTrack, 5);
  PressName(&panel.app, 5, SelectMode::kToggle);
  PressName(&panel.app, 3, SelectMode::kToggle);
  EXPECT_EQ(panel.Selected(), (Tracks{2, 4, 5}));
  EXPECT_EQ(panel.app.focusTrack, 5);
  PressName(&panel.app, 4, SelectMode::kExtend);
  EXPECT_EQ(panel.app.focusTrack, 4);
  EXPECT_EQ(CountSelectedTracks(panel.app), 3u);
  SelectAllTracks(&panel.app);
  EXPECT_EQ(CountSelectedTracks(panel.app), 8u);
  const PressTarget hit =
      HitTest(panel.app, panel.app.window->lampRect[3].left, panel.app.window->lampRect[3].top);
  EXPECT_EQ(hit.zone, kLampZone);
  EXPECT_EQ(hit.track, 3);
  EXPECT_EQ(HitTest(panel.app, 5, 5).zone, kNoZone);
}

TEST(TrackPanel, SwitchesTheChannelsOfAFileTogether) {
  Panel panel(8, 10, 0);
  WAV_FILE_INFO stereo{};
  stereo.channels = 2;
  AUDIOTRACK_IO_INFO& tracks = panel.state.tracks;
  for (const std::size_t t : {2u, 3u}) {
    tracks.wav[t] = &stereo;
    tracks.wavGroup[t] = 102;
  }
  const auto switches = [&] {
    std::string text;
    for (std::size_t t = 0; t < 8; ++t)
      text += static_cast<char>('0' + tracks.rewrapSwitch[t]);
    return text;
  };
  ToggleTrackSwitch(&panel.app, 3);
  EXPECT_EQ(switches(), "00110000");
  panel.app.noAutoTrackSwitch = 1;
  ToggleTrackSwitch(&panel.app, 3);
  EXPECT_EQ(switches(), "00100000");
  ToggleAllTrackSwitches(&panel.app);
  EXPECT_EQ(switches(), "11111111");
  ToggleAllTrackSwitches(&panel.app);
  EXPECT_EQ(switches(), "00000000");
  panel.app.noAutoTrackSwitch = 0;
  PressName(&panel.app, 2, SelectMode::kReplace);
  PressName(&panel.app, 6, SelectMode::kToggle);
  ToggleSelectedTrackSwitches(&panel.app);
  EXPECT_EQ(switches(), "00110010");
  EXPECT_EQ(panel.Selected(), (Tracks{2, 3, 6}));
  EXPECT_EQ(tracks.rewrapSwitch[8], kNoSuchTrack);
}

}  // namespace
}  // namespace quorvan
