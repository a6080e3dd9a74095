// The labels, buttons and timecode fields that the program draws.

#pragma once

#include <QAbstractButton>
#include <QLineEdit>
#include <QWidget>

#include "view/commands.h"
#include "view/main_layout.h"

namespace quorvan::ui {

// One line of text in the font, colour and alignment of its description. The labels of the file
// name and of IN, OUT and duration in the main window accept presses; every other label passes a
// press on to its parent.
class DrawnLabel : public QWidget {
  Q_OBJECT

 public:
  DrawnLabel(const LabelSpec& spec, QWidget* parent);

  // Shows `text`, shortened with an ellipsis where it does not fit.
  void SetText(const QString& text);

  // Paints the field in the colour `fill` behind the text. The text then starts at `textStart`, in
  // pixels of the field.
  void SetFill(const QColor& fill, const QPoint& textStart = {});
  const QString& Text() const { return text_; }

 signals:
  // The label was double-clicked, whether or not it accepts presses.
  void DoubleClicked();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  QFont LabelFont() const;

  LabelSpec spec_;
  int fullHeight_;     // in a view in which the controls have their full size; 0 outside the view
  bool takesPresses_;  // accepts presses
  QString text_;
  QColor fill_;
  QPoint textStart_;
};

// A button that is shown as a picture; `id` chooses the picture and becomes the object name. The
// second press of a double click counts as a further press.
class PictureButton : public QAbstractButton {
  Q_OBJECT

 public:
  PictureButton(ControlId id, QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ControlId id_;
};

// True for Shift+F10, which opens a popup menu like the menu key. The toolkit itself turns only the
// menu key into a request for the menu.
bool AsksForPopup(const QKeyEvent& key);

// The keys that run `command`, as QKeySequence takes them; empty when it has none.
QString KeysOf(Command command);

// The field in which the operator types the timecode of an IN or OUT point; it lies over the label
// that shows the point.
class TimecodeEdit : public QLineEdit {
  Q_OBJECT

 public:
  // `digits` is the largest number of digits that the field holds.
  TimecodeEdit(int digits, QWidget* parent);

 signals:
  // Return or Enter was pressed.
  void Confirmed();
  // Escape was pressed.
  void Cancelled();
  // The field lost the focus, except to a menu.
  void FocusLost();

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  bool HasRoomFor(const QString& typed) const;

  int digits_;
};

}  // namespace quorvan::ui
