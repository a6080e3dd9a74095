// What all dialogs share: their places over the main window, their parts, and when they may close.

#pragma once

#include <QDeadlineTimer>
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

// Tells when a dialog that closes by itself may close. The window manager gives the keys to a new
// dialog some time after the program has shown the dialog. If the window manager meanwhile gives
// the keys to the main window, Qt passes them on: the main window does not become active, and Qt
// asks for the dialog to be activated. A dialog that is already gone by then cannot be activated.
// The main window would have the keys without being active, and no shortcut would work.
class Appearance {
 public:
  // To be asked every few milliseconds while `dialog` shows. True when `dialog` has been the active
  // window for a while, and in any case two seconds after this object was made: while the operator
  // works in another program, the dialog does not become active.
  bool IsOver(const QWidget* dialog) {
    if (!dialog->isActiveWindow()) active_.setRemainingTime(kActiveMilliseconds);
    return active_.hasExpired() || end_.hasExpired();
  }

 private:
  // Qt shows a window that has lost the keys as active for up to 100 milliseconds.
  static constexpr int kActiveMilliseconds = 150;
  static constexpr int kMostMilliseconds = 2000;
  QDeadlineTimer active_{kActiveMilliseconds};
  QDeadlineTimer end_{kMostMilliseconds};
};

// Closes `dialog` with `result` behind a message box that the operator has closed over the dialog:
// at once when the dialog is hidden, else when the dialog has the keys back (Appearance).
void CloseBehindBox(QDialog* dialog, int result);

// Smallest width, in pixels, of the dialogs that show a running job.
inline constexpr int kJobDialogWidth = 520;

// Makes a button of a dialog. Enter presses the button that has the focus, else the dialog's
// default button.
QPushButton* MakeDialogButton(const char* objectName, const QString& text, QWidget* parent);

// Makes a centred label of `dialog` that shows the name of the file at `path`, shortened in the
// middle where it is too long for the dialog of a running job. The whole name is the tool tip.
QLabel* MakeFileNameLabel(const char* objectName, std::u16string_view path, QDialog* dialog);

}  // namespace quorvan::ui
