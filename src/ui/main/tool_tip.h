// Shows tool tips beside a pointer that rests.

#pragma once

#include <QPoint>
#include <QRect>
#include <QWidget>

#include <string_view>

#include "view/texts.h"

namespace quorvan::ui {

// Shows `tip` at `place`, in pixels of the screen, until the pointer leaves `field` of `widget` or
// 30 seconds have passed. The lines of the text are kept, and longer lines are wrapped at the width
// of the tip. A `title` that is not empty stands above the text, behind the information mark.
void ShowToolTip(const QPoint& place, const ToolTip& tip, std::u16string_view title,
                 QWidget* widget, const QRect& field);

}  // namespace quorvan::ui
