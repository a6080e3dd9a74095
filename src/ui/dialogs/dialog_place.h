// Where a dialog stands over its parent.

#pragma once

#include <QDialog>

namespace quorvan::ui {

// Centres the dialog, which is about to open, on the main window with its frame.
void CentreOnWindow(QDialog* dialog);

// The same for the dialog of a running job: on the client area, five pixels further to the right,
// in letters a point larger.
void PlaceJobDialog(QDialog* dialog);

}  // namespace quorvan::ui
