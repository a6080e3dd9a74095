#include "ui/dialogs/dialog_place.h"

namespace quorvan::ui {
namespace {

constexpr int kJobShift = 5;

// The window that all dialogs belong to, whichever of them lies between.
const QWidget* MainWindowOf(const QDialog* dialog) {
  const QWidget* window = dialog;
  while (window->parentWidget() != nullptr)
    window = window->parentWidget()->window();
  return window;
}

}  // namespace

void CentreOnWindow(QDialog* dialog) {
  const QWidget* window = MainWindowOf(dialog);
  if (window == dialog) return;
  dialog->adjustSize();
  // A dialog that has not been shown has no frame yet; that of the window is much the same.
  const QRect frame = window->frameGeometry();
  const QSize outside = dialog->size() + (frame.size() - window->size());
  dialog->move(frame.left() + (frame.width() - outside.width()) / 2,
               frame.top() + (frame.height() - outside.height()) / 2);
}

void PlaceJobDialog(QDialog* dialog) {
  const QWidget* window = MainWindowOf(dialog);
  if (window == dialog) return;
  QFont font = dialog->font();
  font.setPointSize(font.pointSize() + 1);
  dialog->setFont(font);
  dialog->adjustSize();
  dialog->move(window->mapToGlobal(QPoint(window->width() / 2 - dialog->width() / 2 + kJobShift,
                                          window->height() / 2 - dialog->height() / 2)));
}

}  // namespace quorvan::ui
