#include "ui/dialogs/dialog_place.h"

#include <QMainWindow>
#include <QTimer>

#include "platform/path.h"
#include "ui/main/qt_text.h"

namespace quorvan::ui {
namespace {

constexpr int kJobShift = 5;
constexpr int kNameMargin = 100;
constexpr int kAskMilliseconds = 10;

// The main window, which is the last in the chain of parents of `dialog`.
const QWidget* MainWindowOf(const QDialog* dialog) {
  const QWidget* window = dialog;
  while (window->parentWidget() != nullptr)
    window = window->parentWidget()->window();
  return window;
}

// The part of `window` below its menu bar.
QRect ClientArea(const QWidget* window) {
  const auto* main = qobject_cast<const QMainWindow*>(window);
  const QWidget* menu = main != nullptr ? main->menuWidget() : nullptr;
  return window->rect().adjusted(0, menu != nullptr ? menu->height() : 0, 0, 0);
}

}  // namespace

void CentreOnWindow(QDialog* dialog) {
  const QWidget* window = MainWindowOf(dialog);
  if (window == dialog) return;
  dialog->adjustSize();
  // A dialog has no frame before it is shown; the frame of the main window is about as wide.
  const QRect frame = window->frameGeometry();
  const QSize outside = dialog->size() + (frame.size() - window->size());
  dialog->move(frame.left() + (frame.width() - outside.width()) / 2,
               frame.top() + (frame.height() - outside.height()) / 2);
}

void CloseBehindBox(QDialog* dialog, int result) {
  if (!dialog->isVisible()) return dialog->done(result);
  auto* look = new QTimer(dialog);
  QObject::connect(look, &QTimer::timeout, dialog, [=, appearance = Appearance()]() mutable {
    if (!appearance.IsOver(dialog)) return;
    look->stop();
    dialog->done(result);
  });
  look->start(kAskMilliseconds);
}

QPushButton* MakeDialogButton(const char* objectName, const QString& text, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(objectName);
  return button;
}

QLabel* MakeFileNameLabel(const char* objectName, std::u16string_view path, QDialog* dialog) {
  auto* label = new QLabel(dialog);
  label->setObjectName(objectName);
  label->setAlignment(Qt::AlignCenter);
  label->setTextFormat(Qt::PlainText);
  const QString name = ToQString(platform::LastComponent(path));
  label->setText(
      label->fontMetrics().elidedText(name, Qt::ElideMiddle, kJobDialogWidth - kNameMargin));
  label->setToolTip(TipOf(name));
  return label;
}

void PlaceJobDialog(QDialog* dialog) {
  const QWidget* window = MainWindowOf(dialog);
  if (window == dialog) return;
  QFont font = dialog->font();
  font.setPointSize(font.pointSize() + 1);
  dialog->setFont(font);
  dialog->adjustSize();
  const QRect client = ClientArea(window);
  dialog->move(window->mapToGlobal(client.topLeft() +
                                   QPoint(client.width() / 2 - dialog->width() / 2 + kJobShift,
                                          client.height() / 2 - dialog->height() / 2)));
}

}  // namespace quorvan::ui
