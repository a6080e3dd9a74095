// Where a dialog stands over its parent.

#pragma once

#include <QDialog>
#include <QLabel>

#include <string_view>

namespace quorvan::ui {

// Centres the dialog, which is about to open, on the main window with its frame.
void CentreOnWindow(QDialog* dialog);

// The same for the dialog of a running job: on the client area, five pixels further to the right,
// in letters a point larger.
void PlaceJobDialog(QDialog* dialog);

// The width of the dialogs that show a running job.
inline constexpr int kJobDialogWidth = 520;

// A centred line with the name of the file at `path`, cut in the middle where it is longer than
// such a dialog is wide.
QLabel* MakeFileNameLabel(const char* objectName, std::u16string_view path, QDialog* dialog);

}  // namespace quorvan::ui
