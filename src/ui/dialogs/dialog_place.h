// Where a dialog stands over its parent.

#pragma once

#include <QDialog>

namespace quorvan::ui {

// Centres the dialog on its parent, `shift` pixels further to the right, when it opens.
void CentreOnParent(QDialog* dialog, int shift = 0);

}  // namespace quorvan::ui
