// What shows beside a pointer that rests.

#pragma once

#include <QPoint>
#include <QRect>
#include <QWidget>

#include <string_view>

#include "view/texts.h"

namespace quorvan::ui {

// Shows the tip at `place`, a point of the screen, until the pointer leaves `field` of `widget` or
// half a minute has passed. Its lines are as they stand, wrapped at the tip's width. A title stands
// above them behind the mark of information; empty for none.
void ShowToolTip(const QPoint& place, const ToolTip& tip, std::u16string_view title,
                 QWidget* widget, const QRect& field);

}  // namespace quorvan::ui
