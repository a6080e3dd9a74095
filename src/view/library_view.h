// The columns, colours and sort order of the table that shows the WAV library.

#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

#include "state/app_state_info.h"
#include "view/commands.h"
#include "view/main_layout.h"

namespace quorvan {

// One column of the table.
struct WavColumnSpec {
  std::u16string_view title;
  double share;         // width of the column as a part of the width of ListReference
  Command sortCommand;  // kNoCommand for a column by which nothing is sorted
};
// The columns, indexed by WavColumn.
extern const std::array<WavColumnSpec, kWavColumns> kWavColumnSpecs;

// The width in pixels of column `column` (a WavColumn) in a view of `width` x `height` pixels, the
// client area without the status bar. All columns together are at most `room` pixels wide; where
// `room` is too narrow for their shares, every column gives way in proportion.
std::int32_t ColumnWidth(std::size_t column, std::int32_t width, std::int32_t height,
                         std::int32_t room);

struct RowColors {
  COLOR background;
  COLOR text;
};
// The colours of row `row`, counted from 0 in display order. They alternate from row to row and are
// red tones while the file of the row is assigned to a track.
RowColors ColorsOfRow(std::size_t row, bool assigned);

// Tells whether the first file name comes before the second in the order that the operator expects.
using NameOrder = std::function<bool(std::u16string_view, std::u16string_view)>;

// Sorts `wavIndex` of `app` by the column whose sort command is `command`, ascending or descending;
// file names are compared by `order`. Rows with equal values keep their order; the order of the
// library's list does not change. Does nothing when no column has that command or the library has
// no index.
void SortLibrary(APP_STATE_INFO* app, Command command, bool ascending, const NameOrder& order);

// Stores the selection of the table in `app`: `selected` of each entry, selectedWavCount and
// currentWavItem. `selected` holds one flag for each row in display order, not 0 for a selected
// row; `focusRow` is the row with the focus, from 0, or -1 for none, which leaves currentWavItem as
// it is. Without an index only selectedWavCount changes, to 0.
void TakeListSelection(APP_STATE_INFO* app, std::span<const std::uint8_t> selected,
                       std::int32_t focusRow);

}  // namespace quorvan
