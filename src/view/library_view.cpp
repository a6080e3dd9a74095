#include "view/library_view.h"
#include "wav/wav_library.h"

#include <algorithm>

namespace quorvan {
const std::array<WavColumnSpec, kWavColumns> kWavColumnSpecs = {{
    {u"ファイル名", 0.2291, kSortByName},
    {u"Ch", 0.034, kSortByChannels},
    {u"ビット", 0.04, kSortByBits},
    {u"サンプル", 0.05, kSortBySampleRate},
    {u"開始TC", 0.11, kSortByStart},
    {u"終了TC", 0.11, kNoCommand},
    {u"長さ", 0.11, kSortByDuration},
    {u"作成日", 0.12, kSortByCreated},
    {u"更新日時", 0.12, kSortByUpdated},
    {u"サイズ", 0.0921, kSortBySize},
}};

std::int32_t ColumnWidth(std::size_t column, std::int32_t width, std::int32_t height,
                         std::int32_t room) {
  double shares = 0;
  for (const WavColumnSpec& spec : kWavColumnSpecs)
    shares += spec.share;
  const RECTANGLE reference = ListReference(width, height);
  const double whole = std::min<double>(reference.right - reference.left, room / shares);
  return static_cast<std::int32_t>(kWavColumnSpecs[column].share * std::max(whole, 0.0));
}

RowColors ColorsOfRow(std::size_t row, bool assigned) {
  constexpr COLOR black = {0, 0, 0};
  const bool even = row % 2 == 0;
  if (assigned) return {even ? COLOR{255, 48, 0} : COLOR{255, 78, 0}, kWhite};
  return {even ? COLOR{0, 248, 255} : kWhite, black};
}

void SortLibrary(APP_STATE_INFO* app, Command command, bool ascending, const NameOrder& order) {
  const auto spec = std::find_if(
      kWavColumnSpecs.begin(), kWavColumnSpecs.end(),
      [command](const auto& s) { return s.sortCommand == command && command != kNoCommand; });
  if (spec == kWavColumnSpecs.end() || app->wavIndex == nullptr) return;
  const auto column = static_cast<WavColumn>(spec - kWavColumnSpecs.begin());
  const auto before = [&](const WAV_FILE_INFO* a, const WAV_FILE_INFO* b) {
    if (column == kNameColumn) return order(a->fileName, b->fileName);
    return a->sortKey[SortKeyOf(column)] < b->sortKey[SortKeyOf(column)];
  };
  WAV_FILE_INFO** const first = app->wavIndex.get();
  std::stable_sort(first, first + app->wavList->entryCount,
                   [&](const WAV_FILE_INFO* a, const WAV_FILE_INFO* b) {
                     return ascending ? before(a, b) : before(b, a);
                   });
}

void TakeListSelection(APP_STATE_INFO* app, std::span<const std::uint8_t> selected,
                       std::int32_t focusRow) {
  app->selectedWavCount = 0;
  if (app->wavIndex == nullptr) return;
  const auto rows = std::min(selected.size(), static_cast<std::size_t>(app->wavList->entryCount));
  for (std::size_t row = 0; row < rows; ++row) {
    app->wavIndex[row]->selected = selected[row] != 0 ? 1 : 0;
    app->selectedWavCount += app->wavIndex[row]->selected;
  }
  if (focusRow >= 0 && static_cast<std::size_t>(focusRow) < rows) {
    app->currentWavItem = static_cast<std::uint32_t>(focusRow);
  }
}

}  // namespace quorvan
