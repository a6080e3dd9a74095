// Keeps the place and size of the main window from one run to the next. Nothing else outlives a
// run.

#pragma once

#include <QWidget>

namespace quorvan::ui {

// Stores the place and size of the window; of a minimized, maximized or full-screen window, those
// to which it returns.
void SavePlacement(const QWidget& window);

// Gives the window the stored place and size, moved onto a present screen where necessary and no
// smaller than the smallest size. Does nothing when nothing is stored or the stored values cannot
// be those of a window.
void RestorePlacement(QWidget* window);

// The smallest size of the main window, without its frame, on a screen with `room` pixels that no
// task bar takes, for a frame that takes `frame` pixels: kMinimumWidth x kMinimumHeight, or less
// where the screen has less room.
QSize SmallestSize(const QSize& room, const QSize& frame);

// The place of a window that was stored as `kept`, on one of `screens`; all rectangles are in
// pixels of the desktop. The place is `kept`, no larger than all screens together, when the top of
// the window and at least 100 pixels of its width lie on a screen. Otherwise the window is moved
// onto the nearest screen and made no larger than the screen. The result is never smaller than the
// smallest size of the main window on that screen; without any screen it is `kept`.
QRect OntoScreen(const QRect& kept, const QList<QRect>& screens);

}  // namespace quorvan::ui
