// Colours, typefaces and pictures of the window, and the painting of pictures.

#pragma once

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPixmap>
#include <QRect>

#include "view/main_layout.h"

namespace quorvan::ui {

inline QColor ToQColor(const COLOR& color) {
  return QColor(color.red, color.green, color.blue, color.alpha);
}

inline QRect ToQRect(const RECTANGLE& r) {
  return QRect(r.left, r.top, r.right - r.left, r.bottom - r.top);
}

// The font `index` of kFonts, in the first of its typefaces that the system has.
QFont FontOf(std::size_t index);

enum class ButtonLook { kNormal, kPressed, kDisabled };

// Gives the program its language and typeface for menus and dialogs, its delay of tool tips and its
// icon.
void DressApplication();

// The picture `name` at the scale, from 1 to 3, that suits a screen with `ratio` device pixels to a
// pixel. Empty when there is no picture of that name.
QPixmap Picture(const QString& name, qreal ratio);

// Fills `rect` with the picture of the button `id` of the main window. Paints nothing for any other
// control.
void PaintButton(QPainter* painter, const QRect& rect, ControlId id, ButtonLook look);

// Fills `rect` with the lamp of the track `number` (from 1) whose switch is `trackSwitch`, a
// TrackSwitch.
void PaintLamp(QPainter* painter, const QRect& rect, int number, std::uint8_t trackSwitch);

// Fills `rect` with a scroll arrow that points up or down.
void PaintArrow(QPainter* painter, const QRect& rect, bool up, bool pressed);

}  // namespace quorvan::ui
