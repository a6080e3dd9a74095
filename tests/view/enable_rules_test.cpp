#include "view/enable_rules.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>

namespace quorvan {
namespace {

using Rule = std::function<bool(const EnableFacts&)>;

const Rule L = [](const EnableFacts& f) { return f.loaded; };
const Rule NotL = [](const EnableFacts& f) { return !f.loaded; };
const Rule Grey = [](const EnableFacts&) { return false; };
const Rule Always = [](const EnableFacts&) { return true; };
Rule And(const Rule& a, bool EnableFacts::*fact) {
  return [=](const EnableFacts& f) { return a(f) && f.*fact; };
}
const Rule LR = And(L, &EnableFacts::rangeSet);
const Rule LT = And(L, &EnableFacts::hasTracks);
const Rule LN = And(L, &EnableFacts::hasEntries);
const Rule LNS = And(LN, &EnableFacts::oneWavSelected);
const Rule LP = And(L, &EnableFacts::twoTracksSelected);

struct Row {
  Rule inTrackView;
  Rule inLibraryView;
};

std::map<Command, Row> Table(MenuKind menu) {
  std::map<Command, Row> table;
  const auto set = [&](std::initializer_list<Command> commands, const Rule& track,
                       const Rule& library) {
    for (const Command command : commands)
      table[command] = {track, library};
  };
  const auto sorts = {kSortByName,       kSortByChannels, kSortByBits,
                      kSortBySampleRate, kSortByStart,    kSortByDuration,
                      kSortByCreated,    kSortByUpdated,  kSortBySize};
  switch (menu) {
    case MenuKind::kMain:
      set({kLoadMxf}, NotL, NotL);
      set({kUnloadMxf, kSwitchView, kOpenLocation, kAddWav, kExportBwf, kMetaInformation,
           kResetColumnWidths},
          L, L);
      set({kRewriteAudio}, LR, LR);
      set({kSetIn, kSetOut}, LT, LT);
      set({kAssignWav}, Grey, LNS);
      set({kMeasureLoudness}, LP, Grey);
      set({kSelectAll, kDelete}, L, LN);
      set({kToggleSelectedTracks, kToggleAllTracks}, L, Grey);
      set(sorts, Grey, LN);
      set({kQuit, kSettings, kAbout}, Always, Always);
      break;
    case MenuKind::kTrackPopup:
      set({kSwitchView, kAddWav, kUnloadMxf, kSelectAll, kDelete, kToggleSelectedTracks,
           kToggleAllTracks, kMetaInformation},
          L, L);
      set({kLoadMxf}, NotL, NotL);
      set({kMeasureLoudness}, LP, LP);
      break;
    case MenuKind::kLibraryPopup:
      set({kSwitchView}, L, L);
      set({kMeasureLoudness}, Grey, Grey);
      set({kResetColumnWidths, kMetaInformation}, L, L);
      set({kSelectAll, kDelete}, LN, LN);
      set(sorts, Grey, LN);
      set({kAssignWav}, LNS, LNS);
      set({kAddWav, kLoadMxf, kUnloadMxf}, Always, Always);
      break;
  }
  return table;
}

void CollectCommands(std::span<const MenuItem> menu, std::vector<Command>* commands) {
  for (const MenuItem& item : menu) {
    if (item.command != kNoCommand) commands->push_back(item.command);
    CollectCommands(item.submenu, commands);
  }
}

EnableFacts FactsFromBits(unsigned bits) {
  return {(bits & 1) != 0,  (bits & 2) != 0,  (bits & 4) != 0, (bits & 8) != 0,
          (bits & 16) != 0, (bits & 32) != 0, (bits & 64) != 0};
}

// Every item of every menu in every state.
TEST(EnableRules, HoldRowByRow) {
  const std::pair<MenuKind, std::span<const MenuItem>> menus[] = {
      {MenuKind::kMain, MainMenu()},
      {MenuKind::kTrackPopup, TrackPopup()},
      {MenuKind::kLibraryPopup, LibraryPopup()}};
  for (const auto& [kind, items] : menus) {
    const auto table = Table(kind);
    std::vector<Command> commands;
    CollectCommands(items, &commands);
    EXPECT_EQ(commands.size(), table.size());
    for (const Command command : commands) {
      ASSERT_TRUE(table.contains(command)) << command;
      const Row& row = table.at(command);
      for (unsigned bits = 0; bits < 128; ++bits) {
        const EnableFacts facts = FactsFromBits(bits);
        const Rule& rule = facts.libraryView ? row.inLibraryView : row.inTrackView;
        ASSERT_EQ(IsEnabled(kind, command, facts), rule(facts)) << command << " in state " << bits;
      }
    }
  }
  for (unsigned bits = 0; bits < 128; ++bits) {
    const EnableFacts facts = FactsFromBits(bits);
    EXPECT_EQ(IsEnabled(MainButton::kLoad, facts), NotL(facts));
    EXPECT_EQ(IsEnabled(MainButton::kRewrap, facts), LR(facts));
    for (const MainButton button : {MainButton::kView, MainButton::kExport, MainButton::kIn,
                                    MainButton::kOut, MainButton::kDuration})
      EXPECT_EQ(IsEnabled(button, facts), L(facts));
  }
}

TEST(EnableRules, LookAtTheState) {
  AppState state;
  APP_STATE_INFO& app = state.info;
  EXPECT_FALSE(FactsOf(app).loaded);
  app.mxfLoaded = 1;
  app.rewrapPointSet = {1, 0};
  app.selectedTracks = 3;
  app.selectedWavCount = 2;
  EnableFacts facts = FactsOf(app);
  EXPECT_FALSE(facts.rangeSet || facts.twoTracksSelected || facts.oneWavSelected ||
               facts.hasTracks || facts.hasEntries);
  app.rewrapPointSet = {1, 1};
  app.selectedTracks = 2;
  app.selectedWavCount = 1;
  state.mxf.audio.trackCount = 1;
  state.wavHead.entryCount = 1;
  facts = FactsOf(app);
  EXPECT_TRUE(facts.rangeSet && facts.twoTracksSelected && facts.oneWavSelected &&
              facts.hasTracks && facts.hasEntries);
}

TEST(Commands, HaveOneKeyEach) {
  std::vector<Command> shown;
  CollectCommands(MainMenu(), &shown);
  std::map<std::string_view, int> keys;
  for (const Accelerator& accelerator : Accelerators()) {
    EXPECT_EQ(++keys[accelerator.keys], 1) << accelerator.keys;
    EXPECT_EQ(std::count(shown.begin(), shown.end(), accelerator.command), 1)
        << accelerator.command;
  }
  EXPECT_EQ(keys.size(), 19u);
}

}  // namespace
}  // namespace quorvan
