#include "driver.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>
#include <QWheelEvent>

#include "ui/main/qt_text.h"
#include "ui/main/theme.h"

namespace quorvan::test {
namespace {
constexpr int kWatchMilliseconds = 2;

// True for the dialogs of running jobs.
bool EndsByItself(const QObject* object) {
  return object->inherits("quorvan::ui::AnalysisDialog") ||
         object->inherits("quorvan::ui::JobDialog") || object->objectName() == "conform";
}

std::string TextIn(const QWidget* dialog) {
  const auto* box = qobject_cast<const QMessageBox*>(dialog);
  if (box != nullptr) return box->text().toStdString();
  const auto* question = dialog->findChild<QLabel*>("instruction");
  return question == nullptr ? "" : question->text().toStdString();
}

// Clicks as a hand does: the window handles the press before the release comes, and the release
// comes where the press was in the window, wherever the widget is by then.
void PressAndRelease(QWidget* widget, const QPoint& at, Qt::KeyboardModifiers modifiers) {
  const QPointer<QWidget> pressed = widget;
  QApplication::processEvents();  // what has just come up takes its final place
  const QPoint place = widget->mapTo(widget->window(), at);
  QTest::mousePress(widget, Qt::LeftButton, modifiers, at);
  QApplication::processEvents();
  if (pressed != nullptr) {
    QTest::mouseRelease(widget, Qt::LeftButton, modifiers,
                        widget->mapFrom(widget->window(), place));
  }
}

// Lets the next answer of the queue do its work, but not from within an event: it may bring up the
// next box.
void Let(std::deque<Answer>* queue, QWidget* dialog) {
  const Answer answer = queue->front();
  queue->pop_front();
  QMetaObject::invokeMethod(
      dialog, [answer, dialog] { answer(dialog); }, Qt::QueuedConnection);
}

}  // namespace

Driver::Driver() : window_(std::make_unique<ui::MainWindow>()) {
  window_->resize(1280, 720);
  window_->show();
  window_->activateWindow();
  QObject::connect(&watch_, &QTimer::timeout, [this] { Look(); });
  watch_.start(kWatchMilliseconds);
  qApp->installEventFilter(this);
  Settle();
}

Driver::~Driver() {
  EXPECT_TRUE(answers_.empty());
}

bool Driver::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::WindowActivate && EndsByItself(object) && !running_.empty()) {
    Let(&running_, static_cast<QWidget*>(object));
  }
  return QObject::eventFilter(object, event);
}

ui::MainView* Driver::View() {
  return qobject_cast<ui::MainView*>(window_->centralWidget());
}

ui::LibraryList* Driver::List() {
  return View()->findChild<ui::LibraryList*>();
}

QWidget* Driver::Focus() {
  if (QApplication::focusWidget() != nullptr) return QApplication::focusWidget();
  QWidget* top = QApplication::activeModalWidget();
  if (top == nullptr) top = window_.get();
  return top->focusWidget() != nullptr ? top->focusWidget() : top;
}

void Driver::Settle() {
  for (int i = 0; i < 5; ++i) {
    if (QApplication::activeWindow() == nullptr) window_->activateWindow();
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  // A window manager takes a while to give the keys to the window behind a closed dialog.
  static_cast<void>(QTest::qWaitFor([] { return QApplication::activeWindow() != nullptr; }));
}

void Driver::Look() {
  QWidget* top = QApplication::activeModalWidget();
  if (top == nullptr || !top->isActiveWindow() || EndsByItself(top)) return;
  if (top->objectName() == "answered") return;
  top->setObjectName("answered");
  if (!answers_.empty()) return Let(&answers_, top);
  ADD_FAILURE() << "nobody answers: " << top->windowTitle().toStdString() << TextIn(top);
  top->close();
}

QWidget* Driver::Find(const QString& name, QWidget* root) {
  if (root == nullptr) root = QApplication::activeModalWidget();
  if (root == nullptr) root = window_.get();
  auto* widget = root->findChild<QWidget*>(name);
  if (widget == nullptr) qFatal("no widget %s", qPrintable(name));
  return widget;
}

QString Driver::TextOf(ControlId id) {
  return View()->Label(id)->Text();
}

void Driver::Drop(const std::vector<std::u16string>& paths) {
  QList<QUrl> urls;
  for (const std::u16string& path : paths)
    urls.push_back(QUrl::fromLocalFile(ui::ToQString(path)));
  Drop(urls, window_.get());
}

// A file manager proposes to move the files, and deletes them when it is told that they were.
void Driver::Drop(const QList<QUrl>& urls, QWidget* target) {
  constexpr Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction;
  constexpr Qt::KeyboardModifier toMove = Qt::ShiftModifier;
  QMimeData data;
  data.setUrls(urls);
  QDragEnterEvent enter(QPoint(10, 10), offered, &data, Qt::LeftButton, toMove);
  QDragMoveEvent move(QPoint(11, 11), offered, &data, Qt::LeftButton, toMove);
  QDropEvent drop(QPointF(11, 11), offered, &data, Qt::LeftButton, toMove);
  for (QDropEvent* event :
       {static_cast<QDropEvent*>(&enter), static_cast<QDropEvent*>(&move), &drop}) {
    QApplication::sendEvent(target, event);
    EXPECT_TRUE(event->isAccepted());
    EXPECT_EQ(event->dropAction(), Qt::CopyAction);
  }
  Settle();
}

void Driver::Click(QWidget* widget, Qt::KeyboardModifiers modifiers) {
  ClickAt(widget, widget->rect().center(), modifiers);
}

void Driver::ClickAt(QWidget* widget, const QPoint& at, Qt::KeyboardModifiers modifiers) {
  PressAndRelease(widget, at, modifiers);
  Settle();
}

void Driver::ClickView(const RECTANGLE& rect, Qt::KeyboardModifiers modifiers) {
  ClickAt(View(), ui::ToQRect(rect).center(), modifiers);
}

void Driver::ClickRow(int row, Qt::KeyboardModifiers modifiers) {
  const QRect place = List()->visualRect(List()->model()->index(row, 0));
  ClickAt(List()->viewport(), place.center(), modifiers);
}

void Driver::DoubleClickView(const RECTANGLE& rect) {
  const QPoint at = ui::ToQRect(rect).center();
  PressAndRelease(View(), at, Qt::NoModifier);
  QTest::mouseDClick(View(), Qt::LeftButton, Qt::NoModifier, at);
  Settle();
}

void Driver::Key(int key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(Focus(), static_cast<Qt::Key>(key), modifiers);
  Settle();
}

void Driver::Type(const QString& text) {
  QTest::keyClicks(Focus(), text);
  Settle();
}

void Driver::EnterRange(const QString& in, const QString& out) {
  Key(Qt::Key_I);
  for (const QString& point : {in, out}) {
    Type(point);
    Key(Qt::Key_Return);
  }
}

QMenu* Driver::OpenPopup(QWidget* widget, const QPoint& at) {
  if (qobject_cast<ui::MainView*>(widget) != nullptr) {
    QTest::mouseClick(widget, Qt::RightButton, Qt::NoModifier, at);
  } else {
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, widget->mapToGlobal(at));
    QApplication::sendEvent(widget, &event);
  }
  Settle();
  auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  if (menu == nullptr) qFatal("no context menu");
  return menu;
}

void Driver::Choose(QMenu* menu, const QString& text) {
  for (QAction* action : menu->actions()) {
    if (!action->text().contains(text)) continue;
    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
    return Settle();
  }
  qFatal("no item %s", qPrintable(text));
}

void Driver::RestOn(const QPoint& at) {
  QHelpEvent event(QEvent::ToolTip, at, View()->mapToGlobal(at));
  QApplication::sendEvent(View(), &event);
  Settle();
}

void Driver::Wheel(int delta) {
  const QPoint at = View()->rect().center();
  QWheelEvent event(at, View()->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton,
                    Qt::NoModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(View(), &event);
  Settle();
}

void Driver::Photograph(const QString& name) {
  const QString folder = qEnvironmentVariable("QUORVAN_SCREENSHOTS");
  if (folder.isEmpty()) return;
  QWidget* top = QApplication::activePopupWidget();
  if (top == nullptr) top = QApplication::activeModalWidget();
  if (top == nullptr) top = window_.get();
  top->grab().save(folder + "/" + name + ".png");
}

Answer Press(const QStringList& buttons, const QString& says) {
  return [buttons, says](QWidget* dialog) {
    EXPECT_NE(TextIn(dialog).find(says.toStdString()), std::string::npos) << TextIn(dialog);
    for (const QString& wanted : buttons) {
      QAbstractButton* found = nullptr;
      for (auto* button : dialog->findChildren<QAbstractButton*>()) {
        if (button->objectName() == wanted || button->text().remove('&') == wanted) found = button;
      }
      if (found == nullptr) qFatal("no button %s", qPrintable(wanted));
      PressAndRelease(found, found->rect().center(), Qt::NoModifier);
    }
  };
}

Answer Choosing(const QString& names) {
  return [names](QWidget* dialog) {
    dialog->findChild<QLineEdit*>("fileNameEdit")->setText(names);
    static_cast<QDialog*>(dialog)->accept();
  };
}

}  // namespace quorvan::test

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QTemporaryDir settings;
  for (const char* folder : {"XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
    qputenv(folder, settings.path().toUtf8());
  QApplication application(argc, argv);
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  quorvan::ui::DressApplication();
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
