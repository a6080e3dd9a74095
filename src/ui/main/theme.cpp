#include "ui/main/theme.h"

#include <QPolygonF>

#include <array>

#include "state/audiotrack_io_info.h"

namespace quorvan::ui {
namespace {

// First choice first; the last one is what the project's own set-up installs.
const QStringList kFixedPitchFaces = {"Consolas", "Inconsolata", "DejaVu Sans Mono", "monospace"};
const QStringList kJapaneseFaces = {"Meiryo", "メイリオ", "IPAPGothic", "IPAGothic", "sans-serif"};

struct ButtonPicture {
  ControlId id;
  const char* caption;
  int captionHeight;  // pixels
  COLOR captionColor;
  std::array<COLOR, 3> fill;  // by ButtonLook
};

constexpr COLOR kLargeCaption = {255, 250, 118};
constexpr COLOR kDisabledGrey = {122, 122, 122};
constexpr std::array<COLOR, 3> kLargeFill = {{{0, 101, 225}, {0, 52, 163}, kDisabledGrey}};
constexpr std::array<COLOR, 3> kSmallFill = {{{255, 107, 0}, {199, 95, 16}, kDisabledGrey}};
constexpr std::array<COLOR, 3> kGreyFill = {{kDisabledGrey, kDisabledGrey, kDisabledGrey}};

constexpr ButtonPicture kButtonPictures[] = {
    {kLoadButton, "MXF\nロード", 24, kLargeCaption, kLargeFill},
    {kViewButton, "トラック\nWAVリスト", 22, kLargeCaption, kLargeFill},
    {kRewrapButton, "ラッピング\n実行", 22, kLargeCaption, kLargeFill},
    {kExportButton, "BWF\n書出し", 24, kLargeCaption, kLargeFill},
    {kInButton, "IN", 26, kWhite, kSmallFill},
    {kOutButton, "OUT", 26, kWhite, kSmallFill},
    {kDurButton, "DUR", 26, kWhite, kGreyFill},
};

// By TrackSwitch.
constexpr std::array<COLOR, 3> kLampFill = {{{125, 24, 24}, {255, 51, 51}, kDisabledGrey}};
constexpr COLOR kArrowColor = {94, 94, 255};
constexpr int kLampCaptionHeight = 30;

QFont CaptionFont(int height) {
  QFont font;
  font.setFamilies(kJapaneseFaces);
  font.setPixelSize(height);
  font.setBold(true);
  return font;
}

}  // namespace

QFont FontOf(std::size_t index) {
  const FontSpec& spec = kFonts[index];
  QFont font;
  const bool fixed = spec.family == FontFamily::kFixedPitch;
  font.setFamilies(fixed ? kFixedPitchFaces : kJapaneseFaces);
  font.setStyleHint(fixed ? QFont::Monospace : QFont::SansSerif);
  // The specified height is that of the cell; a face's own size is smaller by its leading.
  font.setPixelSize(spec.height * 5 / 6);
  font.setWeight(static_cast<QFont::Weight>(spec.weight));
  return font;
}

void PaintButton(QPainter* painter, const QRect& rect, ControlId id, ButtonLook look) {
  for (const ButtonPicture& picture : kButtonPictures) {
    if (picture.id != id) continue;
    painter->fillRect(rect, ToQColor(picture.fill[static_cast<std::size_t>(look)]));
    painter->setFont(CaptionFont(picture.captionHeight));
    painter->setPen(ToQColor(picture.captionColor));
    painter->drawText(rect, Qt::AlignCenter, QString::fromUtf8(picture.caption));
  }
}

void PaintLamp(QPainter* painter, const QRect& rect, int number, std::uint8_t trackSwitch) {
  painter->fillRect(rect, ToQColor(kLampFill[trackSwitch]));
  painter->setFont(CaptionFont(kLampCaptionHeight));
  painter->setPen(Qt::white);
  painter->drawText(rect, Qt::AlignCenter, QString::number(number));
}

void PaintArrow(QPainter* painter, const QRect& rect, bool up, bool pressed) {
  constexpr double margin = 8;
  constexpr double travel = 4;  // of the pressed arrow, towards where it points
  const QRectF box = QRectF(rect).adjusted(margin, margin, -margin, -margin);
  const double shift = pressed ? travel : 0;
  QPolygonF arrow;
  if (up) {
    arrow << QPointF(box.center().x(), box.top() - shift)
          << QPointF(box.right(), box.bottom() - shift)
          << QPointF(box.left(), box.bottom() - shift);
  } else {
    arrow << QPointF(box.center().x(), box.bottom() + shift)
          << QPointF(box.right(), box.top() + shift) << QPointF(box.left(), box.top() + shift);
  }
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setPen(Qt::NoPen);
  painter->setBrush(ToQColor(kArrowColor));
  painter->drawPolygon(arrow);
  painter->restore();
}

}  // namespace quorvan::ui
