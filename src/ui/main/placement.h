// The only thing that outlives a run: where the window stood.

#pragma once

#include <QWidget>

namespace quorvan::ui {

// Keeps the place and size of the window when it is neither minimized nor maximized.
void SavePlacement(const QWidget& window);

// Brings the window back to where it was, onto a screen that is there. Nothing happens on the first
// run, or when what is kept is no place that a window can have.
void RestorePlacement(QWidget* window);

// `kept` as it is when enough of it lies on one of `screens`, but no larger than all of them
// together; else moved, and cut down to the size, onto the one that is nearest. Never smaller than
// the window can be.
QRect OntoScreen(const QRect& kept, const QList<QRect>& screens);

}  // namespace quorvan::ui
