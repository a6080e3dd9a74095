#include "ui/dialogs/dialog_place.h"

namespace quorvan::ui {

void CentreOnParent(QDialog* dialog, int shift) {
  const QWidget* parent = dialog->parentWidget();
  if (parent == nullptr) return;
  dialog->adjustSize();
  const QPoint corner((parent->width() - dialog->width()) / 2 + shift,
                      (parent->height() - dialog->height()) / 2);
  dialog->move(parent->mapToGlobal(corner));
}

}  // namespace quorvan::ui
