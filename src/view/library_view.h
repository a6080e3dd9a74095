// The table of the WAV library: its columns, its colours and its order.

#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

#include "state/app_state_info.h"
#include "view/commands.h"
#include "view/main_layout.h"

namespace quorvan {

struct WavColumnSpec {
  std::u16string_view title;
  double share;         // of the reference width
  Command sortCommand;  // kNoCommand for a column that does not sort
};
extern const std::array<WavColumnSpec, kWavColumns> kWavColumnSpecs;

// Width of a column, in pixels, in a view of that size.
std::int32_t ColumnWidth(std::size_t column, std::int32_t width, std::int32_t height);

struct RowColors {
  COLOR background;
  COLOR text;
};
RowColors ColorsOfRow(std::size_t row, bool assigned);

// True when the first name comes before the second one where people look for it.
using NameOrder = std::function<bool(std::u16string_view, std::u16string_view)>;

// Sorts the index of `app` by the column of `command`, ascending or not, names by `order`. The
// library's own order stays.
void SortLibrary(APP_STATE_INFO* app, Command command, bool ascending, const NameOrder& order);

// The pass over the list's rows: which are selected, as flags by row, and which one has the focus,
// -1 for none. Fills `selected` of the entries, selectedWavCount and currentWavItem.
void TakeListSelection(APP_STATE_INFO* app, std::span<const std::uint8_t> selected,
                       std::int32_t focusRow);

}  // namespace quorvan
