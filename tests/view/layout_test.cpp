#include "view/main_layout.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

#include "platform/text.h"
#include "support/golden.h"
#include "view/library_view.h"

namespace quorvan {
namespace {

// As left, top, width and height.
std::ostream& operator<<(std::ostream& out, const RECTANGLE& r) {
  return out << r.left << ',' << r.top << ',' << r.right - r.left << ',' << r.bottom - r.top;
}

std::ostream& operator<<(std::ostream& out, const COLOR& c) {
  return out << +c.red << ',' << +c.green << ',' << +c.blue;
}

// Each control in a small and a large view and in a view that is too small for its full size, with
// the font, colour, alignment and caption of a label; the columns of the library, its rows by turns
// and assigned, and what else has a place.
TEST(Layout, PutsEverythingWhereItBelongs) {
  std::ostringstream page;
  for (std::uint32_t id = 5000; id < 5100; ++id) {
    const auto control = static_cast<ControlId>(id);
    const RECTANGLE large = ControlRect(control, 1921, 1040);
    if (large.right == 0) continue;
    page << id << ' ' << ControlRect(control, 1280, 600) << ' ' << large;
    page << ' ' << ControlRect(control, 960, 460);
    for (const LabelSpec& label : Labels()) {
      if (label.id != control) continue;
      page << ' ' << label.font << ' ' << label.color << ' ';
      page << (label.horizontal == HorizontalAlign::kLeft ? 'L' : 'C');
      page << (label.vertical == VerticalAlign::kTop ? 'T' : 'C');
      page << ' ' << std::quoted(platform::ToUtf8(label.caption));
    }
    page << '\n';
  }
  for (std::size_t i = 0; i < kWavColumns; ++i) {
    const WavColumnSpec& column = kWavColumnSpecs[i];
    page << platform::ToUtf8(column.title) << ' ' << column.sortCommand << ' ';
    page << ColumnWidth(i, 1060, 600, 1060) << ' ' << ColumnWidth(i, 1060, 600, 500) << '\n';
  }
  for (std::size_t row = 0; row < 4; ++row) {
    const RowColors colors = ColorsOfRow(row, row >= 2);
    page << colors.background << ' ' << colors.text << '\n';
  }
  const auto [second, third] = StatusFieldEnds(1281);
  page << ListReference(1281, 600) << ' ' << second << ' ' << third << '\n';
  EXPECT_EQ(page.str(), test::GoldenText("view/golden/layout.txt"));
}

}  // namespace
}  // namespace quorvan
