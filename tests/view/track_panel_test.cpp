#include "view/track_panel.h"
#include "state/window_state_info.h"

#include <gtest/gtest.h>

namespace quorvan {
namespace {

// A loaded clip of so many tracks in a view of that size.
struct Panel {
  Panel(std::uint8_t tracks, std::int32_t height, std::int32_t width = 1280) {
    app.mxfLoaded = 1;
    state.mxf.audio.trackCount = tracks;
    for (std::uint32_t t = 0; t < UsableTracks(state.mxf.audio); ++t)
      state.tracks.rewrapSwitch[t] = kSwitchOff;
    LayoutTrackArea(&app, width, height);
    UpdateArrowStates(&app);
  }
  // The focus track and the selected ones, from 0.
  std::string Selection() const {
    std::string text = std::to_string(app.focusTrack) + ":";
    for (std::size_t t = 0; t < 24; ++t) {
      if (app.trackSelected[t] == 1) text += " " + std::to_string(t);
    }
    return text;
  }
  // The first visible track, and where its row stands.
  std::pair<int, std::int32_t> Top() const { return {window.scrollTop, window.nameRect[0].top}; }
  AppState state;
  APP_STATE_INFO& app = state.info;
  WINDOW_STATE_INFO& window = *app.window;
};

constexpr std::int32_t kFlush = 173;            // top of the first row
constexpr std::int32_t kCutTop = kFlush - 32;   // where 20 pixels of the first row show
constexpr std::int32_t kTenRowsAndAPart = 880;  // 20 pixels of the last row show

TEST(TrackPanel, PlacesRowsAndArrowsByTheSizeOfTheView) {
  const Panel panel(24, 901, 1283);
  const auto place = [](const RECTANGLE& r) {
    return std::array<std::int32_t, 4>{r.left, r.top, r.right, r.bottom};
  };
  for (const std::int32_t row : {0, 10}) {
    const auto i = static_cast<std::size_t>(row);
    const std::int32_t top = 173 + 52 * row;
    EXPECT_EQ(place(panel.window.channelMarkRect[i]), (std::array{51, top, 76, top + 52}));
    EXPECT_EQ(place(panel.window.lampRect[i]), (std::array{96, top, 148, top + 52}));
    EXPECT_EQ(place(panel.window.nameRect[i]), (std::array{160, top, 1122, top + 52}));
  }
  EXPECT_EQ(place(panel.window.trackAreaRect), (std::array{0, 163, 1283, 744}));
  EXPECT_EQ(place(panel.window.upArrowRect), (std::array{1174, 173, 1226, 225}));
  EXPECT_EQ(place(panel.window.downArrowRect), (std::array{1174, 682, 1226, 734}));

  struct Case {
    std::uint8_t tracks;
    std::int32_t height, rows, align;
    std::uint32_t remainder, band;
  };
  for (const Case& c : {Case{24, 901, 11, kFlushTop, 41, 581},
                        {10, 901, 10, kWholeRows, 0, 581},
                        {11, 901, 11, kFlushTop, 41, 581},
                        {1, 901, 1, kWholeRows, 0, 581},
                        {24, 860, 10, kWholeRows, 0, 540},
                        {24, 340, 0, kWholeRows, 0, 20},
                        {24, 300, 0, kWholeRows, 0, 0}}) {
    const Panel sized(c.tracks, c.height);
    SCOPED_TRACE(c.height * 100 + c.tracks);
    EXPECT_EQ(sized.window.visibleRows, c.rows);
    EXPECT_EQ(sized.window.rowAlign, c.align);
    EXPECT_EQ(sized.window.rowRemainder, c.remainder);
    EXPECT_EQ(sized.window.trackBandHeight, c.band);
  }
}

TEST(TrackPanel, ForgetsThePartThatNoLongerShows) {
  Panel panel(24, kTenRowsAndAPart);
  LayoutTrackArea(&panel.app, 1280, kTenRowsAndAPart - 20);
  EXPECT_EQ(panel.window.rowAlign, kWholeRows);
  EXPECT_EQ(panel.window.rowRemainder, 0u);
}

TEST(TrackPanel, ScrollsAPartialRowIntoViewFirst) {
  Panel panel(24, kTenRowsAndAPart);
  const auto arrows = [&] {
    return std::pair(panel.window.upArrowState, panel.window.downArrowState);
  };
  EXPECT_EQ(arrows(), std::pair(kArrowHidden, kArrowShown));
  const RECTANGLE down = panel.window.downArrowRect;
  EXPECT_EQ(HitTest(panel.app, down.left, down.top).zone, kDownArrowZone);
  const RECTANGLE up = panel.window.upArrowRect;
  EXPECT_EQ(HitTest(panel.app, up.left, up.top).zone, kNoZone) << "hidden";
  PressArrow(&panel.app, kDownArrowZone);
  EXPECT_EQ(arrows(), std::pair(kArrowHidden, kArrowPressed));
  EXPECT_EQ(panel.Top(), std::pair(1, kCutTop));
  ReleaseArrow(&panel.app, kDownArrowZone);
  UpdateArrowStates(&panel.app);
  EXPECT_EQ(arrows(), std::pair(kArrowShown, kArrowShown));
  EXPECT_EQ(HitTest(panel.app, up.left, up.top).zone, kUpArrowZone);
  // The focus row has left: a key brings it back before it moves on.
  MoveDown(&panel.app, false);
  EXPECT_EQ(panel.Top(), std::pair(0, kFlush));
  EXPECT_EQ(panel.Selection(), "1: 1");
  for (int i = 0; i < 30; ++i)
    TurnWheel(&panel.app, -2);
  UpdateArrowStates(&panel.app);
  EXPECT_EQ(panel.Top(), std::pair(13, kCutTop));
  EXPECT_EQ(arrows(), std::pair(kArrowShown, kArrowHidden));
  MoveUp(&panel.app, false);
  EXPECT_EQ(panel.Top(), std::pair(0, kFlush));
  EXPECT_EQ(panel.Selection(), "0: 0");
  EXPECT_EQ(TurnWheel(&panel.app, 0), kRefreshNothing);
  // The same from below.
  PressName(&panel.app, 10, SelectMode::kReplace);
  EXPECT_EQ(panel.Top(), std::pair(0, kCutTop)) << "the row that was cut shows whole";
  MoveDown(&panel.app, false);
  for (int i = 0; i < 5; ++i)
    TurnWheel(&panel.app, 1);
  EXPECT_EQ(panel.Top(), std::pair(0, kFlush));
  MoveDown(&panel.app, false);
  EXPECT_EQ(panel.Top(), std::pair(2, kCutTop));
  EXPECT_EQ(panel.Selection(), "12: 12");
  PressName(&panel.app, 2, SelectMode::kReplace);
  EXPECT_EQ(panel.Top(), std::pair(2, kFlush));
}

TEST(TrackPanel, WalksByKeysFromEndToEnd) {
  Panel panel(24, kTenRowsAndAPart);
  for (int i = 1; i < 24; ++i) {
    EXPECT_NE(MoveDown(&panel.app, false) & kRefreshMenus, 0u);
    ASSERT_EQ(panel.Selection(), std::to_string(i) + ": " + std::to_string(i));
    ASSERT_EQ(panel.Top(), std::pair(std::max(i - 10, 0), i < 10 ? kFlush : kCutTop));
  }
  MoveDown(&panel.app, false);
  MoveDown(&panel.app, true);
  EXPECT_EQ(panel.Selection(), "23: 23");
  MoveUp(&panel.app, true);
  MoveUp(&panel.app, true);
  MoveDown(&panel.app, true);
  EXPECT_EQ(panel.Selection(), "22: 21 22 23");
  for (int i = 21; i >= 0; --i) {
    MoveUp(&panel.app, false);
    ASSERT_EQ(panel.Top(), std::pair(std::min(i, 13), i <= 13 ? kFlush : kCutTop)) << i;
  }
  MoveUp(&panel.app, false);
  EXPECT_EQ(panel.Selection(), "0: 0");
}

TEST(TrackPanel, KeepsTheFocusRowOnScreenWhenTheWindowShrinks) {
  for (const auto& [focus, top] : {std::pair{0, 18}, {17, 18}, {18, 18}, {20, 18}, {23, 18}}) {
    Panel panel(24, 340 + 24 * 52);
    PressName(&panel.app, focus, SelectMode::kReplace);
    LayoutTrackArea(&panel.app, 1280, 340 + 5 * 52 + 10);
    EXPECT_EQ(panel.window.visibleRows, 6);
    EXPECT_EQ(panel.Top(), std::pair(std::min(focus, top), focus == 23 ? kFlush - 42 : kFlush))
        << focus;
    EXPECT_EQ(panel.window.firstVisibleTrack, panel.window.scrollTop);
    LayoutTrackArea(&panel.app, 1280, 340 + 30 * 52);
    EXPECT_EQ(panel.Top(), std::pair(0, kFlush));
    EXPECT_EQ(panel.window.visibleRows, 24);
    EXPECT_EQ(panel.window.rowRemainder, 0u);
  }
}

TEST(TrackPanel, SelectsByModifier) {
  Panel panel(8, 880);
  const auto press = [&](std::int32_t track, SelectMode mode) {
    PressName(&panel.app, track, mode);
    return panel.Selection();
  };
  EXPECT_EQ(press(2, SelectMode::kReplace), "2: 2");
  EXPECT_EQ(press(5, SelectMode::kExtend), "5: 2 3 4 5");
  EXPECT_EQ(press(5, SelectMode::kToggle), "5: 2 3 4 5");
  EXPECT_EQ(press(3, SelectMode::kToggle), "5: 2 4 5");
  EXPECT_EQ(press(4, SelectMode::kExtend), "4: 2 4 5");
  EXPECT_EQ(CountSelectedTracks(panel.app), 3u);
  SelectAllTracks(&panel.app);
  EXPECT_EQ(CountSelectedTracks(panel.app), 8u);
  const RECTANGLE lamp = panel.window.lampRect[3];
  const RECTANGLE name = panel.window.nameRect[7];
  const PressTarget onLamp = HitTest(panel.app, lamp.left, lamp.top);
  const PressTarget onName = HitTest(panel.app, name.right - 1, name.bottom - 1);
  EXPECT_EQ(std::pair(onLamp.zone, onLamp.track), std::pair(kLampZone, 3));
  EXPECT_EQ(std::pair(onName.zone, onName.track), std::pair(kNameZone, 7));
  EXPECT_EQ(HitTest(panel.app, name.right, name.top).zone, kNoZone);
  EXPECT_EQ(HitTest(panel.app, name.left, name.bottom).zone, kNoZone);
}

TEST(TrackPanel, SwitchesTheChannelsOfAFileTogether) {
  Panel panel(8, 880);
  WAV_FILE_INFO stereo{};
  stereo.channels = 2;
  AUDIOTRACK_IO_INFO& tracks = panel.state.tracks;
  for (const std::size_t t : {0u, 1u}) {
    tracks.wav[t] = &stereo;
    tracks.wavGroup[t] = 102;
  }
  const auto switches = [&](std::uint32_t refresh) {
    EXPECT_NE(refresh & kRepaint, 0u);
    std::string text;
    for (std::size_t t = 0; t < 9; ++t)
      text += tracks.rewrapSwitch[t] == kNoSuchTrack ? '-'
              : tracks.rewrapSwitch[t] == kSwitchOn  ? '1'
                                                     : '0';
    return text;
  };
  EXPECT_EQ(switches(ToggleTrackSwitch(&panel.app, 1)), "11000000-");
  panel.app.noAutoTrackSwitch = 1;
  EXPECT_EQ(switches(ToggleTrackSwitch(&panel.app, 0)), "01000000-");
  EXPECT_EQ(switches(ToggleAllTrackSwitches(&panel.app)), "11111111-");
  EXPECT_EQ(switches(ToggleAllTrackSwitches(&panel.app)), "00000000-");
  PressName(&panel.app, 1, SelectMode::kReplace);
  PressName(&panel.app, 6, SelectMode::kToggle);
  EXPECT_EQ(switches(ToggleSelectedTrackSwitches(&panel.app)), "01000010-");
  EXPECT_EQ(panel.Selection(), "1: 1 6");
  panel.app.noAutoTrackSwitch = 0;
  EXPECT_EQ(switches(ToggleSelectedTrackSwitches(&panel.app)), "00000000-");
  EXPECT_EQ(switches(ToggleSelectedTrackSwitches(&panel.app)), "11000010-");
  EXPECT_EQ(panel.Selection(), "1: 0 1 6");
}

}  // namespace
}  // namespace quorvan
