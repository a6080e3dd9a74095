#include "ui/main/theme.h"

#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QPixmapCache>
#include <QProxyStyle>
#include <QTranslator>

#include <algorithm>
#include <cmath>

#include "ui/main/typefaces.h"

// A static library's resources are loaded only on request, by a macro that works in the global
// namespace.
static void LoadPictures() {
  Q_INIT_RESOURCE(pictures);
}

namespace quorvan::ui {
namespace {

constexpr int kDialogPoints = 10;
constexpr int kToolTipDelay = 1000;  // milliseconds
constexpr int kLargestScale = 3;     // for which there are pictures

// Parts of picture names, indexed by TrackSwitch.
constexpr const char* kLampNames[] = {"off", "on", "none"};

// The names of the pictures of a button, indexed by ButtonLook; DUR has the same picture for all.
struct ButtonPictures {
  ControlId id;
  const char* names[3];
};
constexpr ButtonPictures kButtonPictures[] = {
    {kLoadButton, {"load-normal", "load-pressed", "load-disabled"}},
    {kViewButton, {"view-normal", "view-pressed", "view-disabled"}},
    {kRewrapButton, {"rewrap-normal", "rewrap-pressed", "rewrap-disabled"}},
    {kExportButton, {"export-normal", "export-pressed", "export-disabled"}},
    {kInButton, {"in-normal", "in-pressed", "in-disabled"}},
    {kOutButton, {"out-normal", "out-pressed", "out-disabled"}},
    {kDurButton, {"dur", "dur", "dur"}},
};

// The style of the system, except that a tool tip shows after the pointer has rested for a second.
class Style : public QProxyStyle {
 public:
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* result) const override {
    if (hint == SH_ToolTip_WakeUpDelay) return kToolTipDelay;
    return QProxyStyle::styleHint(hint, option, widget, result);
  }
};

void PaintPicture(QPainter* painter, const QRect& rect, const QString& name) {
  painter->setRenderHint(QPainter::SmoothPixmapTransform);
  painter->drawPixmap(rect, Picture(name, painter->device()->devicePixelRatioF()));
}

}  // namespace

void DressApplication() {
  QApplication::setStyle(new Style);
  QFont font = QApplication::font();
  font.setFamilies(JapaneseTypefaces());
  font.setPointSize(kDialogPoints);
  QApplication::setFont(font);
  static QTranslator toolkitTexts;  // of standard buttons and file dialogs, if installed
  if (toolkitTexts.load("qtbase_ja", QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QApplication::installTranslator(&toolkitTexts);
  }
  QApplication::setWindowIcon(QIcon(Picture("program", 1)));
}

QPixmap Picture(const QString& name, qreal ratio) {
  const int scale = std::clamp(static_cast<int>(std::ceil(ratio)), 1, kLargestScale);
  const QString file =
      ":/pictures/" + name + (scale == 1 ? QString() : QString("@%1x").arg(scale)) + ".png";
  QPixmap picture;
  if (QPixmapCache::find(file, &picture)) return picture;
  LoadPictures();
  picture.load(file);
  QPixmapCache::insert(file, picture);
  return picture;
}

QFont FontOf(std::size_t index) {
  const FontSpec& spec = kFonts[index];
  QFont font;
  const bool fixed = spec.family == FontFamily::kFixedPitch;
  font.setFamilies(fixed ? FixedPitchTypefaces() : JapaneseTypefaces());
  font.setStyleHint(fixed ? QFont::Monospace : QFont::SansSerif);
  // `height` is that of the character cell; the size of a typeface is smaller by its leading.
  font.setPixelSize(spec.height * 5 / 6);
  font.setWeight(static_cast<QFont::Weight>(spec.weight));
  if (spec.width != 0) font.setStretch(100 * spec.width / QFontMetrics(font).averageCharWidth());
  return font;
}

void PaintButton(QPainter* painter, const QRect& rect, ControlId id, ButtonLook look) {
  for (const ButtonPictures& button : kButtonPictures) {
    if (button.id == id) PaintPicture(painter, rect, button.names[static_cast<int>(look)]);
  }
}

void PaintLamp(QPainter* painter, const QRect& rect, int number, std::uint8_t trackSwitch) {
  PaintPicture(painter, rect, QString("lamp-%1-%2").arg(kLampNames[trackSwitch]).arg(number));
}

void PaintArrow(QPainter* painter, const QRect& rect, bool up, bool pressed) {
  PaintPicture(painter, rect,
               QString(up ? "arrow-up" : "arrow-down") + (pressed ? "-pressed" : ""));
}

}  // namespace quorvan::ui
