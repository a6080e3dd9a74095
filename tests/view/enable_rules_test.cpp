#include "view/enable_rules.h"

#include <gtest/gtest.h>

#include <map>

#include "support/golden.h"

namespace quorvan {
namespace {

// What holds, a letter each: L loaded, U unloaded, R range set, T tracks, E entries in the library,
// S one of them selected, P two tracks selected.
std::u16string LettersOf(const EnableFacts& f) {
  return std::u16string(f.loaded ? u"L" : u"U") + (f.rangeSet ? u"R" : u"") +
         (f.hasTracks ? u"T" : u"") + (f.hasEntries ? u"E" : u"") +
         (f.oneWavSelected ? u"S" : u"") + (f.twoTracksSelected ? u"P" : u"");
}

// True if all of the letters hold, which `-` never does.
bool Holds(std::u16string_view needs, const EnableFacts& facts) {
  return needs.find_first_not_of(LettersOf(facts)) == std::u16string_view::npos;
}

// The lines of a menu and of those in it.
std::vector<MenuItem> LinesOf(std::span<const MenuItem> menu) {
  std::vector<MenuItem> lines;
  for (const MenuItem& item : menu) {
    lines.push_back(item);
    for (const MenuItem& inner : LinesOf(item.submenu))
      lines.push_back(inner);
  }
  return lines;
}

std::vector<EnableFacts> EveryState() {
  std::vector<EnableFacts> states;
  for (unsigned bits = 0; bits < 128; ++bits) {
    const auto bit = [bits](unsigned n) { return (bits >> n & 1) != 0; };
    states.push_back({bit(0), bit(1), bit(2), bit(3), bit(4), bit(5), bit(6)});
  }
  return states;
}

// Number, text and keys of each line, what it needs in the track view and in the library, and the
// accelerator that the keys name.
TEST(Menus, HoldLineByLineInEveryState) {
  std::map<Command, std::u16string> accelerators;
  for (const Accelerator& accelerator : Accelerators())
    accelerators[accelerator.command].assign(accelerator.keys.begin(), accelerator.keys.end());
  const auto rows = test::GoldenRows("view/golden/menus.txt");
  std::size_t count = 0;
  for (const auto& [kind, menu] : {std::pair{MenuKind::kMain, MainMenu()},
                                   {MenuKind::kTrackPopup, TrackPopup()},
                                   {MenuKind::kLibraryPopup, LibraryPopup()}}) {
    for (const MenuItem& line : LinesOf(menu)) {
      const auto& row = rows.at(count++);
      EXPECT_EQ(platform::ToUtf16(std::to_string(line.command)), row.at(0));
      EXPECT_EQ(line.text, row.at(1));
      EXPECT_EQ(line.keys, row.at(2));
      for (const EnableFacts& facts : EveryState()) {
        const bool enabled = IsEnabled(kind, line.command, facts);
        ASSERT_EQ(enabled, Holds(row.at(facts.libraryView ? 4 : 3), facts)) << line.command;
      }
      if (kind == MenuKind::kMain) {
        EXPECT_EQ(accelerators[line.command], row.at(5));
      }
    }
  }
  EXPECT_EQ(count, rows.size());
  for (const EnableFacts& facts : EveryState()) {
    EXPECT_EQ(IsEnabled(MainButton::kLoad, facts), Holds(u"U", facts));
    EXPECT_EQ(IsEnabled(MainButton::kRewrap, facts), Holds(u"LR", facts));
    for (const MainButton button : {MainButton::kView, MainButton::kExport, MainButton::kIn,
                                    MainButton::kOut, MainButton::kDuration})
      EXPECT_EQ(IsEnabled(button, facts), Holds(u"L", facts));
  }
}

TEST(EnableRules, LookAtTheState) {
  AppState state;
  APP_STATE_INFO& app = state.info;
  EXPECT_EQ(LettersOf(FactsOf(app)), u"U");
  app.mxfLoaded = 1;
  app.rewrapPointSet = {1, 0};
  app.selectedTracks = 3;
  app.selectedWavCount = 2;
  EXPECT_EQ(LettersOf(FactsOf(app)), u"L");
  app.rewrapPointSet = {1, 1};
  app.selectedTracks = 2;
  app.selectedWavCount = 1;
  state.mxf.audio.trackCount = 1;
  state.wavHead.entryCount = 1;
  EXPECT_EQ(LettersOf(FactsOf(app)), u"LRTESP");
  EXPECT_FALSE(FactsOf(app).libraryView);
  app.libraryView = 1;
  EXPECT_TRUE(FactsOf(app).libraryView);
}

}  // namespace
}  // namespace quorvan
