// Colours, typefaces and pictures of the window.

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

// Font number `index` of kFonts, with the typefaces that the system has.
QFont FontOf(std::size_t index);

enum class ButtonLook { kNormal, kPressed, kDisabled };

// Gives the whole program its language and typeface for menus and dialogs, and its picture.
void DressApplication();

// The picture of that name, as sharp as a screen of `ratio` device pixels to a pixel wants it.
QPixmap Picture(const QString& name, qreal ratio);

// Fills `rect` with the picture of a button of the main window.
void PaintButton(QPainter* painter, const QRect& rect, ControlId id, ButtonLook look);

// The lamp of a track, numbered from 1, by its TrackSwitch.
void PaintLamp(QPainter* painter, const QRect& rect, int number, std::uint8_t trackSwitch);

// A scroll arrow.
void PaintArrow(QPainter* painter, const QRect& rect, bool up, bool pressed);

}  // namespace quorvan::ui
