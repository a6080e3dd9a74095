#include "view/enable_rules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace quorvan {
namespace {

// What holds, a letter each: L loaded, U unloaded, R range set, T tracks, E entries in the library,
// S one of them selected, P two tracks selected.
std::string LettersOf(const EnableFacts& f) {
  return std::string(f.loaded ? "L" : "U") + (f.rangeSet ? "R" : "") + (f.hasTracks ? "T" : "") +
         (f.hasEntries ? "E" : "") + (f.oneWavSelected ? "S" : "") +
         (f.twoTracksSelected ? "P" : "");
}

// True if all of the letters hold, which `-` never does.
bool Holds(std::string_view needs, const EnableFacts& facts) {
  const std::string letters = LettersOf(facts);
  return needs.find_first_not_of(letters) == std::string_view::npos;
}

struct Row {
  std::vector<Command> commands;
  const char* inTrackView;
  const char* inLibraryView;
};

const std::vector<Command> kSorts = {kSortByName,       kSortByChannels, kSortByBits,
                                     kSortBySampleRate, kSortByStart,    kSortByDuration,
                                     kSortByCreated,    kSortByUpdated,  kSortBySize};

const std::pair<MenuKind, std::vector<Row>> kRules[] = {
    {MenuKind::kMain,
     {{{kLoadMxf}, "U", "U"},
      {{kUnloadMxf, kSwitchView, kOpenLocation, kAddWav, kExportBwf, kMetaInformation,
        kResetColumnWidths},
       "L",
       "L"},
      {{kRewriteAudio}, "LR", "LR"},
      {{kSetIn, kSetOut}, "LT", "LT"},
      {{kAssignWav}, "-", "LES"},
      {{kMeasureLoudness}, "LP", "-"},
      {{kSelectAll, kDelete}, "L", "LE"},
      {{kToggleSelectedTracks, kToggleAllTracks}, "L", "-"},
      {kSorts, "-", "LE"},
      {{kQuit, kSettings, kAbout}, "", ""}}},
    {MenuKind::kTrackPopup,
     {{{kSwitchView, kAddWav, kUnloadMxf, kSelectAll, kDelete, kToggleSelectedTracks,
        kToggleAllTracks, kMetaInformation},
       "L",
       "L"},
      {{kLoadMxf}, "U", "U"},
      {{kMeasureLoudness}, "LP", "LP"}}},
    {MenuKind::kLibraryPopup,
     {{{kSwitchView, kResetColumnWidths, kMetaInformation}, "L", "L"},
      {{kMeasureLoudness}, "-", "-"},
      {{kSelectAll, kDelete}, "LE", "LE"},
      {kSorts, "-", "LE"},
      {{kAssignWav}, "LES", "LES"},
      {{kAddWav, kLoadMxf, kUnloadMxf}, "", ""}}}};

// The items of a menu and of those in it.
std::vector<MenuItem> ItemsOf(std::span<const MenuItem> menu) {
  std::vector<MenuItem> items;
  for (const MenuItem& item : menu) {
    if (item.command != kNoCommand) items.push_back(item);
    for (const MenuItem& inner : ItemsOf(item.submenu))
      items.push_back(inner);
  }
  return items;
}

std::vector<EnableFacts> EveryState() {
  std::vector<EnableFacts> states;
  for (unsigned bits = 0; bits < 128; ++bits) {
    const auto bit = [bits](unsigned n) { return (bits >> n & 1) != 0; };
    states.push_back({bit(0), bit(1), bit(2), bit(3), bit(4), bit(5), bit(6)});
  }
  return states;
}

// Every item of every menu in every state.
TEST(EnableRules, HoldRowByRow) {
  const std::span<const MenuItem> menus[] = {MainMenu(), TrackPopup(), LibraryPopup()};
  for (std::size_t m = 0; m < std::size(menus); ++m) {
    const auto& [kind, rows] = kRules[m];
    const std::vector<MenuItem> items = ItemsOf(menus[m]);
    std::size_t known = 0;
    for (const Row& row : rows) {
      for (const Command command : row.commands) {
        known += static_cast<std::size_t>(
            std::count_if(items.begin(), items.end(),
                          [&](const MenuItem& item) { return item.command == command; }));
        for (const EnableFacts& facts : EveryState()) {
          const char* needs = facts.libraryView ? row.inLibraryView : row.inTrackView;
          ASSERT_EQ(IsEnabled(kind, command, facts), Holds(needs, facts)) << command;
        }
      }
    }
    EXPECT_EQ(known, items.size());
  }
  for (const EnableFacts& facts : EveryState()) {
    EXPECT_EQ(IsEnabled(MainButton::kLoad, facts), Holds("U", facts));
    EXPECT_EQ(IsEnabled(MainButton::kRewrap, facts), Holds("LR", facts));
    for (const MainButton button : {MainButton::kView, MainButton::kExport, MainButton::kIn,
                                    MainButton::kOut, MainButton::kDuration})
      EXPECT_EQ(IsEnabled(button, facts), Holds("L", facts));
  }
}

TEST(EnableRules, LookAtTheState) {
  AppState state;
  APP_STATE_INFO& app = state.info;
  EXPECT_EQ(LettersOf(FactsOf(app)), "U");
  app.mxfLoaded = 1;
  app.rewrapPointSet = {1, 0};
  app.selectedTracks = 3;
  app.selectedWavCount = 2;
  EXPECT_EQ(LettersOf(FactsOf(app)), "L");
  app.rewrapPointSet = {1, 1};
  app.selectedTracks = 2;
  app.selectedWavCount = 1;
  state.mxf.audio.trackCount = 1;
  state.wavHead.entryCount = 1;
  EXPECT_EQ(LettersOf(FactsOf(app)), "LRTESP");
  EXPECT_FALSE(FactsOf(app).libraryView);
  app.libraryView = 1;
  EXPECT_TRUE(FactsOf(app).libraryView);
}

TEST(Commands, HaveTheKeysThatTheirItemsShow) {
  const auto plain = [](auto text) {
    std::string keys;
    for (const auto c : text) {
      if (c != ' ') keys += static_cast<char>(std::tolower(static_cast<int>(c)));
    }
    return keys;
  };
  std::map<std::string, Command> shown;
  for (const MenuItem& item : ItemsOf(MainMenu())) {
    if (!item.keys.empty()) shown[plain(item.keys)] = item.command;
  }
  EXPECT_EQ(Accelerators().size(), shown.size());
  for (const Accelerator& accelerator : Accelerators())
    EXPECT_EQ(shown[plain(accelerator.keys)], accelerator.command) << accelerator.keys;
}

}  // namespace
}  // namespace quorvan
