#include "view/main_layout.h"

#include <gtest/gtest.h>

#include "view/library_view.h"

namespace quorvan {
namespace {

void ExpectRect(const RECTANGLE& r, std::int32_t x, std::int32_t y, std::int32_t w,
                std::int32_t h) {
  EXPECT_EQ(r.left, x);
  EXPECT_EQ(r.top, y);
  EXPECT_EQ(r.right - r.left, w);
  EXPECT_EQ(r.bottom - r.top, h);
}

TEST(MainLayout, FollowsTheSizeOfTheView) {
  for (const auto& [w, h] : {std::pair{1280, 600}, {1281, 777}, {1920, 1040}}) {
    const std::int32_t c = w / 2;
    SCOPED_TRACE(w);
    const auto rect = [w = w, h = h](std::uint32_t id) {
      return ControlRect(static_cast<ControlId>(id), w, h);
    };
    ExpectRect(rect(5024), 0, 8, w - 40, 22);
    const std::pair<std::array<std::uint32_t, 4>, std::int32_t> captions[] = {
        {{5052, 5051, 5050, 5053}, c - 600},
        {{5047, 5046, 5048, 5049}, c - 240},
        {{5042, 5043, 5044, 5045}, c + 20}};
    const std::int32_t captionTops[] = {53, 79, 107, 134};
    for (const auto& [ids, x] : captions) {
      for (std::size_t i = 0; i < 4; ++i)
        ExpectRect(rect(ids[i]), x, captionTops[i], 170, 18);
    }
    const std::int32_t tops[] = {48, 75, 102, 129};
    const std::uint32_t video[] = {5035, 5034, 5033, 5036}, audio[] = {5030, 5029, 5031, 5032};
    const std::uint32_t time[] = {5025, 5026, 5027, 5028};
    const std::int32_t videoWidths[] = {226, 236, 164, 180}, timeWidths[] = {130, 175, 175, 175};
    for (std::size_t i = 0; i < 4; ++i) {
      ExpectRect(rect(video[i]), c - 520, tops[i], videoWidths[i], 27);
      ExpectRect(rect(audio[i]), c - 161, tops[i], 140, 27);
      ExpectRect(rect(time[i]), c + 95, tops[i], timeWidths[i], 27);
    }
    const std::int32_t buttonTops[] = {42, 80, 118}, displayTops[] = {40, 79, 117};
    for (std::uint32_t i = 0; i < 3; ++i) {
      ExpectRect(rect(5054 + i), c + 285, buttonTops[i], 104, 36);
      ExpectRect(rect(5057 + i), c + 395, displayTops[i], 220, 40);
    }
    ExpectRect(rect(5040), c - 600, 35, 170, 10);
    ExpectRect(rect(5039), c - 240, 35, 170, 10);
    ExpectRect(rect(5038), c + 20, 35, 170, 10);
    const std::int32_t large[] = {c - 352, c - 160, c + 32, c + 224};
    for (std::uint32_t i = 0; i < 4; ++i)
      ExpectRect(rect(5008 + i), large[i], h - 117, 128, 80);
    ExpectRect(rect(5012), 20, 180, w - 40, h - 360);
    const RECTANGLE reference = ListReference(w, h);
    ExpectRect(reference, 20, 183, w / 2 * 2 - 60, h - 160 - 183);
    EXPECT_EQ(ColumnWidth(0, w, h), static_cast<std::int32_t>(0.2291 * (w / 2 * 2 - 60)));
  }
  EXPECT_EQ(ControlRect(kInTimecodeText, 1280, 600).right, 1280 - 25);
}

TEST(MainLayout, NamesEachLabelOnce) {
  std::vector<std::uint32_t> ids;
  for (const LabelSpec& label : Labels()) {
    ids.push_back(label.id);
    EXPECT_GT(ControlRect(label.id, 1280, 600).bottom, 0) << label.id;
    EXPECT_LT(label.font, kFonts.size());
  }
  std::sort(ids.begin(), ids.end());
  EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end()), ids.end());
  EXPECT_EQ(ids.size(), 31u);
}

TEST(LibraryRows, TellAssignedOnesApart) {
  const auto red = [](std::size_t row, bool assigned) {
    return ColorsOfRow(row, assigned).background.red;
  };
  EXPECT_EQ(red(0, false), 0);
  EXPECT_EQ(red(1, false), 255);
  EXPECT_EQ(ColorsOfRow(2, true).background.green, 48);
  EXPECT_EQ(ColorsOfRow(3, true).background.green, 78);
  EXPECT_EQ(ColorsOfRow(3, true).text.red, 255);
  EXPECT_EQ(ColorsOfRow(3, false).text.red, 0);
}

TEST(Library, SortsByEachColumnBothWays) {
  AppState state;
  APP_STATE_INFO& app = state.info;
  WAV_FILE_INFO entries[4] = {};
  const char16_t* names[] = {u"b", u"A", u"d", u"C"};
  app.wavIndex = std::make_unique<WAV_FILE_INFO*[]>(4);
  for (std::size_t i = 0; i < 4; ++i) {
    app.wavIndex[i] = &entries[i];
    entries[i].fileName[0] = names[i][0];
    for (std::size_t k = 0; k + 1 < kWavColumns; ++k)
      entries[i].sortKey[k] = (i * (k + 1) * 7 + 3) % 5;
  }
  state.wavHead.entryCount = 4;
  const auto isSorted = [&](auto before) {
    return std::is_sorted(app.wavIndex.get(), app.wavIndex.get() + 4, before);
  };
  const NameOrder order = [](std::u16string_view a, std::u16string_view b) {
    return (a[0] | 0x20) < (b[0] | 0x20);
  };
  for (const bool ascending : {true, false}) {
    for (std::size_t column = 0; column < kWavColumns; ++column) {
      SortLibrary(&app, kWavColumnSpecs[column].sortCommand, ascending, order);
      if (kWavColumnSpecs[column].sortCommand == kNoCommand) continue;
      EXPECT_TRUE(isSorted([&](const WAV_FILE_INFO* a, const WAV_FILE_INFO* b) {
        if (!ascending) std::swap(a, b);
        return column == 0 ? order(a->fileName, b->fileName)
                           : a->sortKey[column - 1] < b->sortKey[column - 1];
      })) << column;
    }
  }
  SortLibrary(&app, kSortByName, true, order);
  const std::uint8_t selected[] = {0, 1, 1, 0};
  TakeListSelection(&app, selected, 2);
  EXPECT_EQ(app.selectedWavCount, 2u);
  EXPECT_EQ(app.currentWavItem, 2u);
  EXPECT_EQ(entries[0].selected + 2 * entries[3].selected + 4 * entries[1].selected, 3u);
  state.wavHead.entryCount = 0;
}

}  // namespace
}  // namespace quorvan
