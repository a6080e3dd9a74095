#include "view/enable_rules.h"

#include <span>

#include "state/clip_state.h"

namespace quorvan {
namespace {

// The conditions under which a command or button is enabled, as bits of a set: all must be met.
enum Need : std::uint32_t {
  kAlways = 0,
  kLoaded = 1,
  kNotLoaded = 2,
  kRange = 4,
  kTracks = 8,
  kEntries = 16,
  kOneWav = 32,
  kTwoTracks = 64,
  kNever = 128,
};

// The conditions of a command while the track view shows and while the library view shows.
struct Rule {
  Command command;
  std::uint32_t inTrackView;  // set of Need
  std::uint32_t inLibraryView;
};

constexpr Rule InEveryView(Command command, std::uint32_t needs) {
  return {command, needs, needs};
}

constexpr Rule SortRule(Command command) {
  return {command, kNever, kLoaded | kEntries};
}

constexpr Rule kMainRules[] = {
    InEveryView(kLoadMxf, kNotLoaded),
    InEveryView(kUnloadMxf, kLoaded),
    InEveryView(kSwitchView, kLoaded),
    InEveryView(kOpenLocation, kLoaded),
    InEveryView(kAddWav, kLoaded),
    InEveryView(kExportBwf, kLoaded),
    InEveryView(kMetaInformation, kLoaded),
    InEveryView(kResetColumnWidths, kLoaded),
    InEveryView(kRewriteAudio, kLoaded | kRange),
    InEveryView(kSetIn, kLoaded | kTracks),
    InEveryView(kSetOut, kLoaded | kTracks),
    {kAssignWav, kNever, kLoaded | kEntries | kOneWav},
    {kMeasureLoudness, kLoaded | kTwoTracks, kNever},
    {kSelectAll, kLoaded, kLoaded | kEntries},
    {kDelete, kLoaded, kLoaded | kEntries},
    {kToggleSelectedTracks, kLoaded, kNever},
    {kToggleAllTracks, kLoaded, kNever},
    SortRule(kSortByName),
    SortRule(kSortByChannels),
    SortRule(kSortByBits),
    SortRule(kSortBySampleRate),
    SortRule(kSortByStart),
    SortRule(kSortByDuration),
    SortRule(kSortByCreated),
    SortRule(kSortByUpdated),
    SortRule(kSortBySize),
};

constexpr Rule kTrackPopupRules[] = {
    InEveryView(kSwitchView, kLoaded),
    InEveryView(kAddWav, kLoaded),
    InEveryView(kUnloadMxf, kLoaded),
    InEveryView(kLoadMxf, kNotLoaded),
    InEveryView(kSelectAll, kLoaded),
    InEveryView(kDelete, kLoaded),
    InEveryView(kToggleSelectedTracks, kLoaded),
    InEveryView(kToggleAllTracks, kLoaded),
    InEveryView(kMetaInformation, kLoaded),
    InEveryView(kMeasureLoudness, kLoaded | kTwoTracks),
};

constexpr Rule kLibraryPopupRules[] = {
    InEveryView(kSwitchView, kLoaded),
    InEveryView(kMeasureLoudness, kNever),
    InEveryView(kResetColumnWidths, kLoaded),
    InEveryView(kMetaInformation, kLoaded),
    InEveryView(kSelectAll, kLoaded | kEntries),
    InEveryView(kDelete, kLoaded | kEntries),
    SortRule(kSortByName),
    SortRule(kSortByChannels),
    SortRule(kSortByBits),
    SortRule(kSortBySampleRate),
    SortRule(kSortByStart),
    SortRule(kSortByDuration),
    SortRule(kSortByCreated),
    SortRule(kSortByUpdated),
    SortRule(kSortBySize),
    InEveryView(kAssignWav, kLoaded | kEntries | kOneWav),
};

// Sets of Need, indexed by MainButton.
constexpr std::uint32_t kButtonNeeds[] = {kNotLoaded, kLoaded, kLoaded | kRange, kLoaded,
                                          kLoaded,    kLoaded, kLoaded};

std::span<const Rule> RulesOf(MenuKind menu) {
  switch (menu) {
    case MenuKind::kMain:
      return kMainRules;
    case MenuKind::kTrackPopup:
      return kTrackPopupRules;
    case MenuKind::kLibraryPopup:
      return kLibraryPopupRules;
  }
  return {};
}

bool Meets(const EnableFacts& facts, std::uint32_t needs) {
  std::uint32_t met = facts.loaded ? kLoaded : kNotLoaded;
  if (facts.rangeSet) met |= kRange;
  if (facts.hasTracks) met |= kTracks;
  if (facts.hasEntries) met |= kEntries;
  if (facts.oneWavSelected) met |= kOneWav;
  if (facts.twoTracksSelected) met |= kTwoTracks;
  return (needs & ~met) == 0;
}

}  // namespace

EnableFacts FactsOf(const APP_STATE_INFO& app) {
  const bool loaded = app.mxfLoaded == 1;  // without a clip, a worker may be writing the records
  return {loaded,
          IsRangeSet(app.rewrapPointSet),
          loaded && app.mxf->audio->trackCount != 0,
          app.libraryView == 1,
          app.wavList->entryCount != 0,
          app.selectedWavCount == 1,
          app.selectedTracks == 2};
}

bool IsEnabled(MenuKind menu, Command command, const EnableFacts& facts) {
  for (const Rule& rule : RulesOf(menu)) {
    if (rule.command != command) continue;
    return Meets(facts, facts.libraryView ? rule.inLibraryView : rule.inTrackView);
  }
  return true;
}

bool OpensEntry(TimecodeTarget display, const APP_STATE_INFO& app) {
  const bool hasIn = display == kInTarget || app.rewrapPointSet[0] == 1;
  return hasIn && IsEnabled(MenuKind::kMain, kSetIn, FactsOf(app));
}

bool IsEnabled(MainButton button, const EnableFacts& facts) {
  return Meets(facts, kButtonNeeds[static_cast<std::size_t>(button)]);
}

}  // namespace quorvan
