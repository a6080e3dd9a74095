// The drawn controls of the main window.

#pragma once

#include <QAbstractButton>
#include <QLineEdit>
#include <QWidget>

#include "view/main_layout.h"

namespace quorvan::ui {

// One line of text in the colours of its description. The file name and the displays of a range
// take what is pressed on them; every other label leaves it to what lies behind.
class DrawnLabel : public QWidget {
  Q_OBJECT

 public:
  DrawnLabel(const LabelSpec& spec, QWidget* parent);

  void SetText(const QString& text);

  // Fills the field behind its text, whose rectangle starts at `textStart`.
  void SetFill(const QColor& fill, const QPoint& textStart = {});
  const QString& Text() const { return text_; }

 signals:
  void DoubleClicked();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  LabelSpec spec_;
  bool takesPresses_;
  QString text_;
  QColor fill_;
  QPoint textStart_;
};

// A button that is a picture. A quick second press is one more press.
class PictureButton : public QAbstractButton {
  Q_OBJECT

 public:
  PictureButton(ControlId id, QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ControlId id_;
};

// The field in which a timecode is typed, over the display of its point.
class TimecodeEdit : public QLineEdit {
  Q_OBJECT

 public:
  explicit TimecodeEdit(QWidget* parent);

 signals:
  void Confirmed();
  void Cancelled();
  void FocusLost();

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
};

}  // namespace quorvan::ui
