#include "view/main_layout.h"

#include <gtest/gtest.h>

#include "view/library_view.h"

namespace quorvan {
namespace {

// Left, top, width and height.
using Place = std::array<std::int32_t, 4>;

Place PlaceOf(const RECTANGLE& r) {
  return {r.left, r.top, r.right - r.left, r.bottom - r.top};
}

// How the controls of a column look; font and red are those of its labels.
struct Look {
  std::int32_t height;
  std::size_t font;
  std::uint8_t red;
};
constexpr Look kHeading = {10, 0, 255}, kCaption = {18, 1, 195}, kFigure = {27, 4, 80},
               kPoint = {40, 3, 255}, kButton = {36, 0, 0}, kLargeButton = {80, 0, 0};

// Controls below each other with one left edge, from the middle of the view.
struct Column {
  std::vector<std::uint32_t> ids;
  std::int32_t left;
  std::vector<std::int32_t> tops;  // from the bottom of the view below 0
  std::vector<std::int32_t> widths;
  Look look;
  std::u16string_view captions{};  // of its labels, in order
};

const std::vector<std::int32_t> kCaptionTops = {53, 79, 107, 134};
const std::vector<std::int32_t> kFigureTops = {48, 75, 102, 129};
const std::vector<std::int32_t> kWide(4, 170);
const Column kColumns[] = {
    {{5040}, -600, {35}, {170}, kHeading, u"Video"},
    {{5039}, -240, {35}, {170}, kHeading, u"Audio"},
    {{5038}, 20, {35}, {170}, kHeading, u"Time code"},
    {{5052, 5051, 5050, 5053}, -600, kCaptionTops, kWide, kCaption, u"CodecBit RateFPSSize"},
    {{5047, 5046, 5048, 5049}, -240, kCaptionTops, kWide, kCaption, u"TracksFormatBit RateFs Rate"},
    {{5042, 5043, 5044, 5045}, 20, kCaptionTops, kWide, kCaption, u"RateHeadTailDur"},
    {{5035, 5034, 5033, 5036}, -520, kFigureTops, {226, 236, 164, 180}, kFigure},
    {{5030, 5029, 5031, 5032}, -161, kFigureTops, {140, 140, 140, 140}, kFigure},
    {{5025, 5026, 5027, 5028}, 95, kFigureTops, {130, 175, 175, 175}, kFigure},
    {{5057, 5058, 5059}, 395, {40, 79, 117}, {220, 220, 220}, kPoint},
    {{5054, 5055, 5056}, 285, {42, 80, 118}, {104, 104, 104}, kButton},
    {{5008}, -352, {-117}, {128}, kLargeButton},
    {{5009}, -160, {-117}, {128}, kLargeButton},
    {{5010}, 32, {-117}, {128}, kLargeButton},
    {{5011}, 224, {-117}, {128}, kLargeButton}};

TEST(MainLayout, PutsEachControlWhereItBelongs) {
  std::size_t labels = 1;  // with that of the file name
  for (const Column& column : kColumns) {
    std::u16string captions;
    for (std::size_t i = 0; i < column.ids.size(); ++i) {
      const auto id = static_cast<ControlId>(column.ids[i]);
      SCOPED_TRACE(id);
      for (const auto& [w, h] : {std::pair{1280, 600}, {1921, 1040}}) {
        const std::int32_t top = column.tops[i] + (column.tops[i] < 0 ? h : 0);
        EXPECT_EQ(PlaceOf(ControlRect(id, w, h)),
                  (Place{w / 2 + column.left, top, column.widths[i], column.look.height}));
      }
      for (const LabelSpec& label : Labels()) {
        if (label.id != id) continue;
        ++labels;
        captions += label.caption;
        EXPECT_EQ(label.font, column.look.font);
        EXPECT_EQ(label.color.red, column.look.red);
        EXPECT_EQ(label.horizontal, HorizontalAlign::kLeft);
        EXPECT_EQ(label.vertical == VerticalAlign::kTop, column.look.font == kCaption.font);
      }
    }
    EXPECT_EQ(captions, column.captions);
  }
  EXPECT_EQ(Labels().size(), labels);
  const LabelSpec& fileName = Labels()[0];
  EXPECT_EQ(fileName.id, kFileNameText);
  EXPECT_EQ(fileName.font, 2u);
  EXPECT_EQ(fileName.color.red * 1000 + fileName.color.blue, 255);
  EXPECT_EQ(fileName.horizontal, HorizontalAlign::kCenter);
  EXPECT_EQ(PlaceOf(ControlRect(kFileNameText, 1280, 600)), (Place{0, 8, 1240, 22}));
  EXPECT_EQ(PlaceOf(ControlRect(kWavListView, 1280, 600)), (Place{20, 180, 1240, 240}));
  EXPECT_EQ(PlaceOf(ListReference(1281, 600)), (Place{20, 183, 1220, 257}));
  EXPECT_EQ(StatusFieldEnds(1281), (std::array{640, 960}));
}

TEST(Library, GivesEachColumnItsTitleAndWidth) {
  const std::pair<std::u16string_view, std::int32_t> columns[] = {
      {u"ファイル名", 229}, {u"Ch", 34},    {u"ビット", 40},  {u"サンプル", 50},  {u"開始TC", 110},
      {u"終了TC", 110},     {u"長さ", 110}, {u"作成日", 120}, {u"更新日時", 120}, {u"サイズ", 92}};
  for (std::size_t i = 0; i < kWavColumns; ++i) {
    EXPECT_EQ(kWavColumnSpecs[i].title, columns[i].first);
    EXPECT_EQ(ColumnWidth(i, 1060, 600), columns[i].second) << i;
  }
}

TEST(Library, TellsAssignedRowsApart) {
  const int greens[] = {248, 255, 48, 78}, reds[] = {0, 255, 255, 255}, texts[] = {0, 0, 255, 255};
  for (std::size_t row = 0; row < 4; ++row) {
    const RowColors colors = ColorsOfRow(row, row >= 2);
    EXPECT_EQ(colors.background.green, greens[row]);
    EXPECT_EQ(colors.background.red, reds[row]);
    EXPECT_EQ(colors.text.red, texts[row]);
  }
}

}  // namespace
}  // namespace quorvan
