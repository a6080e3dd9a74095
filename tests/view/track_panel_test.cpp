#include "view/track_panel.h"
#include "state/window_state_info.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>

#include "support/golden.h"

namespace quorvan {
namespace {

using platform::ToUtf8;
using test::GoldenRows;

// A loaded clip of so many tracks in a view of that size, a stereo file on the first two tracks.
struct Panel {
  Panel(std::uint8_t tracks, std::int32_t height, std::int32_t width = 1280) {
    app.mxfLoaded = 1;
    state.mxf.audio.trackCount = tracks;
    for (std::uint32_t t = 0; t < UsableTracks(state.mxf.audio); ++t)
      state.tracks.rewrapSwitch[t] = kSwitchOff;
    for (const std::size_t t : {0u, 1u}) {
      state.tracks.wav[t] = &stereo;
      state.tracks.wavGroup[t] = 102;
    }
    LayoutTrackArea(&app, width, height);
    UpdateArrowStates(&app);
  }
  // Does what the operator does `times` times, and tells what is refreshed (m menus, r repaint),
  // the first visible track with the place of its row, the arrows (h hidden, s shown, p pressed),
  // the switches of the first tracks, and the focus track with the selected ones.
  std::string Do(const std::string& name, std::int32_t number, int times) {
    std::uint32_t refresh = 0;
    for (int i = 0; i < times; ++i)
      refresh = operations.at(name)(number);
    UpdateArrowStates(&app);
    std::ostringstream text;
    text << (refresh & kRefreshMenus ? "m" : "") << (refresh & kRepaint ? "r " : " ");
    text << +window.scrollTop << '/' << window.nameRect[0].top << ' ';
    for (const ScrollArrowState arrow : {window.upArrowState, window.downArrowState})
      text << (arrow == kArrowHidden ? 'h' : arrow == kArrowPressed ? 'p' : 's');
    text << ' ';
    for (std::size_t t = 0; t < 9; ++t) {
      const std::uint8_t value = state.tracks.rewrapSwitch[t];
      text << (value == kNoSuchTrack ? '-' : value == kSwitchOn ? '1' : '0');
    }
    text << ' ' << app.focusTrack << ':';
    for (std::size_t t = 0; t < 24; ++t) {
      if (app.trackSelected[t] == 1) text << ' ' << t;
    }
    return text.str();
  }
  AppState state;
  WAV_FILE_INFO stereo{};
  APP_STATE_INFO& app = state.info;
  WINDOW_STATE_INFO& window = *app.window;
  const std::map<std::string, std::function<std::uint32_t(std::int32_t)>> operations = {
      {"down", [this](auto) { return MoveDown(&app, false); }},
      {"down+", [this](auto) { return MoveDown(&app, true); }},
      {"up", [this](auto) { return MoveUp(&app, false); }},
      {"up+", [this](auto) { return MoveUp(&app, true); }},
      {"wheel", [this](auto n) { return TurnWheel(&app, 120 * n); }},
      {"arrow", [this](auto n) { return PressArrow(&app, static_cast<PressZone>(n)); }},
      {"release", [this](auto n) { return ReleaseArrow(&app, static_cast<PressZone>(n)); }},
      {"name", [this](auto n) { return PressName(&app, n, SelectMode::kReplace); }},
      {"name+", [this](auto n) { return PressName(&app, n, SelectMode::kExtend); }},
      {"name^", [this](auto n) { return PressName(&app, n, SelectMode::kToggle); }},
      {"all", [this](auto) { return SelectAllTracks(&app); }},
      {"lamp", [this](auto n) { return ToggleTrackSwitch(&app, n); }},
      {"lamps", [this](auto) { return ToggleAllTrackSwitches(&app); }},
      {"chosen", [this](auto) { return ToggleSelectedTrackSwitches(&app); }},
      {"alone", [this](auto n) {
         app.noAutoTrackSwitch = static_cast<std::uint8_t>(n);
         return kRefreshNothing;
       }}};
};

constexpr std::int32_t kFlush = 173;            // top of the first row
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

  // Rows, where a part of one shows, its pixels and the height of the band.
  const std::tuple<std::uint8_t, std::int32_t, const char*> sizes[] = {
      {24, 901, "11 2 41 581"}, {10, 901, "10 0 0 581"}, {11, 901, "11 2 41 581"},
      {1, 901, "1 0 0 581"},    {24, 860, "10 0 0 540"}, {24, 340, "0 0 0 20"},
      {24, 300, "0 0 0 0"}};
  for (const auto& [tracks, height, wanted] : sizes) {
    Panel sized(tracks, 901);
    LayoutTrackArea(&sized.app, 1280, height);
    const WINDOW_STATE_INFO& w = sized.window;
    std::ostringstream text;
    text << w.visibleRows << ' ' << +w.rowAlign << ' ' << w.rowRemainder << ' '
         << w.trackBandHeight;
    EXPECT_EQ(text.str(), wanted) << height;
  }
}

// Step by step, in a panel of many tracks and one of few.
TEST(TrackPanel, ScrollsSelectsAndSwitches) {
  Panel many(24, kTenRowsAndAPart);
  Panel few(8, kTenRowsAndAPart);
  for (const auto& row : GoldenRows("view/golden/panel.txt")) {
    Panel& panel = row.at(0) == u"24" ? many : few;
    const std::string name = ToUtf8(row.at(1));
    const int times = std::stoi(ToUtf8(row.at(3)));
    const std::string told = panel.Do(name, std::stoi(ToUtf8(row.at(2))), times);
    EXPECT_EQ(told, ToUtf8(row.at(4))) << name;
  }
  EXPECT_EQ(CountSelectedTracks(few.app), 3u);
}

TEST(TrackPanel, KeepsTheFocusRowOnScreenWhenTheWindowShrinks) {
  for (const std::int32_t focus : {0, 17, 18, 20, 23}) {
    Panel panel(24, 340 + 24 * 52);
    PressName(&panel.app, focus, SelectMode::kReplace);
    LayoutTrackArea(&panel.app, 1280, 340 + 5 * 52 + 10);
    EXPECT_EQ(panel.window.visibleRows, 6);
    EXPECT_EQ(panel.window.scrollTop, std::min(focus, 18));
    EXPECT_EQ(panel.window.nameRect[0].top, focus == 23 ? kFlush - 42 : kFlush);
    EXPECT_EQ(panel.window.firstVisibleTrack, panel.window.scrollTop);
    LayoutTrackArea(&panel.app, 1280, 340 + 30 * 52);
    EXPECT_EQ(panel.window.scrollTop, 0);
    EXPECT_EQ(panel.window.nameRect[0].top, kFlush);
    EXPECT_EQ(panel.window.visibleRows, 24);
    EXPECT_EQ(panel.window.rowRemainder, 0u);
  }
}

TEST(TrackPanel, KnowsWhatIsPressed) {
  Panel panel(24, kTenRowsAndAPart);
  const RECTANGLE lamp = panel.window.lampRect[3], name = panel.window.nameRect[7];
  const RECTANGLE up = panel.window.upArrowRect, down = panel.window.downArrowRect;
  const auto hit = [&](std::int32_t x, std::int32_t y) {
    const PressTarget target = HitTest(panel.app, x, y);
    return std::pair<int, std::int32_t>(target.zone, target.track);
  };
  EXPECT_EQ(hit(lamp.left, lamp.top), std::pair(+kLampZone, 3));
  EXPECT_EQ(hit(name.right - 1, name.bottom - 1), std::pair(+kNameZone, 7));
  EXPECT_EQ(hit(name.right, name.top).first, kNoZone);
  EXPECT_EQ(hit(name.left, name.top + 520).first, kNoZone) << "below the last row";
  const RECTANGLE cut = panel.window.lampRect[10], shown = RowArea(panel.app);
  EXPECT_EQ(hit(cut.left, shown.bottom - 1), std::pair(+kLampZone, 10));
  EXPECT_EQ(hit(cut.left, shown.bottom).first, kNoZone) << "below the painted part of a row";
  EXPECT_EQ(hit(down.left, down.top).first, kDownArrowZone);
  EXPECT_EQ(hit(up.left, up.top).first, kNoZone) << "hidden";
  panel.Do("wheel", -1, 1);
  EXPECT_EQ(hit(up.left, up.top).first, kUpArrowZone);
  EXPECT_EQ(hit(lamp.left, shown.top), std::pair(+kLampZone, 1));
  EXPECT_EQ(hit(lamp.left, shown.top - 1).first, kNoZone);
}

}  // namespace
}  // namespace quorvan
