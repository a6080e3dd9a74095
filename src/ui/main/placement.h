// The only thing that outlives a run: where the window stood.

#pragma once

#include <QWidget>

namespace quorvan::ui {

// Keeps the place and size of the window when it is neither minimized nor maximized.
void SavePlacement(const QWidget& window);

// Brings the window back to where it was, onto a screen that is there. Nothing happens on the first
// run.
void RestorePlacement(QWidget* window);

// `wanted` as it is when enough of it lies on one of `screens`; else moved, and cut down to the
// size, onto the one that is nearest.
QRect OntoScreen(const QRect& wanted, const QList<QRect>& screens);

}  // namespace quorvan::ui
