#include "ui/main/tool_tip.h"

#include <QFontMetrics>
#include <QToolTip>

#include <algorithm>

#include "ui/main/qt_text.h"
#include "ui/main/theme.h"

namespace quorvan::ui {
namespace {

constexpr int kTipMilliseconds = 30000;
constexpr int kSlack = 4;  // pixels by which the layout of a text exceeds its measured width
constexpr int kLargestHeight = 10000;
constexpr int kBreakAnywhere = Qt::TextWrapAnywhere | Qt::TextExpandTabs;

}  // namespace

void ShowToolTip(const QPoint& place, const ToolTip& tip, std::u16string_view title,
                 QWidget* widget, const QRect& field) {
  const QString text = ToQString(tip.text);
  const QFontMetrics metrics(QToolTip::font());
  const QRect most(0, 0, tip.width, kLargestHeight);
  const int width = std::min(tip.width, metrics.boundingRect(most, kBreakAnywhere, text).width());
  QString head;
  if (!title.empty()) {
    Picture("information", 1);  // loads the resources of the pictures
    head = QString("<p><img src=':/pictures/information.png'> <b>%1</b></p>")
               .arg(ToQString(title).toHtmlEscaped());
  }
  // Of all rich text, only a table keeps a width that is set.
  const QString tipText = QString(
                              "%1<table width='%2' cellspacing='0' cellpadding='0'><tr><td "
                              "style='white-space: pre-wrap'>%3</td></tr></table>")
                              .arg(head)
                              .arg(width + kSlack)
                              .arg(text.toHtmlEscaped());
  QToolTip::showText(place, tipText, widget, field, kTipMilliseconds);
}

}  // namespace quorvan::ui
