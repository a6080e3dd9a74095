#include "ui/main/message_box.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMessageBox>

#include "ui/main/qt_text.h"

namespace quorvan::ui {
namespace {

QMessageBox::Icon IconOf(BoxKind kind) {
  switch (kind) {
    case BoxKind::kError:
      return QMessageBox::Critical;
    case BoxKind::kWarning:
      return QMessageBox::Warning;
    case BoxKind::kPlain:
      return QMessageBox::NoIcon;
    case BoxKind::kNotice:
      break;
  }
  return QMessageBox::Information;
}

// The object name of the button: the number that Windows gives its answer (IDOK, IDYES, IDNO).
QString NameOf(QMessageBox::StandardButton button) {
  if (button == QMessageBox::Yes) return "6";
  return button == QMessageBox::No ? "7" : "1";
}

// A message box. Escape and the close box do not close a question: neither is an answer.
class Box : public QMessageBox {
 public:
  using QMessageBox::QMessageBox;

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() != Qt::Key_Escape || !IsQuestion()) QMessageBox::keyPressEvent(event);
  }
  void closeEvent(QCloseEvent* event) override {
    if (IsQuestion()) return event->ignore();
    QMessageBox::closeEvent(event);
  }

 private:
  bool IsQuestion() const { return buttons().size() > 1; }
};

int Show(QWidget* parent, BoxKind kind, std::u16string_view text, std::u16string_view title,
         QMessageBox::StandardButtons buttons) {
  Box box(IconOf(kind), ToQString(title), ToQString(text).replace("\r\n", "\n"), buttons, parent);
  box.setTextFormat(Qt::PlainText);
  box.setTextInteractionFlags(Qt::TextSelectableByMouse);
  box.setWindowFlag(Qt::WindowStaysOnTopHint);
  for (QAbstractButton* button : box.buttons())
    button->setObjectName(NameOf(box.standardButton(button)));
  return box.exec();
}

}  // namespace

void Tell(QWidget* parent, BoxKind kind, std::u16string_view text, std::u16string_view title) {
  Show(parent, kind, text, title, QMessageBox::Ok);
}

bool Ask(QWidget* parent, BoxKind kind, std::u16string_view text, std::u16string_view title) {
  return Show(parent, kind, text, title, QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

}  // namespace quorvan::ui
