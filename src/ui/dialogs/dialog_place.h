// What all dialogs share: their places over the main window, and their parts.

#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>

#include <string_view>

namespace quorvan::ui {

// Centres a dialog, which is about to open, on the main window with its frame. Does nothing for a
// dialog without a parent.
void CentreOnWindow(QDialog* dialog);

// Makes the letters of the dialog of a running job a point larger, and places the dialog five
// pixels right of the centre of the main window's client area. Does nothing for a dialog without a
// parent.
void PlaceJobDialog(QDialog* dialog);

// Smallest width, in pixels, of the dialogs that show a running job.
inline constexpr int kJobDialogWidth = 520;

// Makes a button of a dialog. Enter presses the button that has the focus, else the dialog's
// default button.
QPushButton* MakeDialogButton(const char* objectName, const QString& text, QWidget* parent);

// Makes a centred label of `dialog` that shows the name of the file at `path`, shortened in the
// middle where it is too long for the dialog of a running job. The whole name is the tool tip.
QLabel* MakeFileNameLabel(const char* objectName, std::u16string_view path, QDialog* dialog);

}  // namespace quorvan::ui
