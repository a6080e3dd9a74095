// Drives the real window with pointer and key events, and answers what it asks.

#pragma once

#include <QDialog>
#include <QMenu>
#include <QString>
#include <QUrl>

#include <deque>
#include <functional>
#include <memory>

#include "support/loaded_clip.h"
#include "ui/main/main_window.h"

namespace quorvan::test {

// What the operator does when a box or a dialog is up: it is closed by what the answer presses.
using Answer = std::function<void(QWidget* dialog)>;

class Driver : public QObject {
 public:
  Driver();
  ~Driver() override;  // a queued answer that nobody has asked for fails the test

  ui::MainWindow& Window() { return *window_; }
  APP_STATE_INFO& App() { return window_->State(); }
  ui::MainView* View();
  ui::LibraryList* List();

  // Lets the program come to rest.
  void Settle();

  // The widget of that name in the topmost window or, with `root`, below it; ends the test without.
  QWidget* Find(const QString& name, QWidget* root = nullptr);
  QString TextOf(ControlId id);

  // What gets the keys.
  QWidget* Focus();

  // Drops files on the window, or on a widget in it.
  void Drop(const std::vector<std::u16string>& paths);
  void Drop(const QList<QUrl>& urls, QWidget* target);
  void Click(QWidget* widget, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  void ClickAt(QWidget* widget, const QPoint& at, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  void ClickView(const RECTANGLE& rect, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  void DoubleClickView(const RECTANGLE& rect);
  void ClickRow(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  void Key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  void Type(const QString& text);
  // Enters both points of the range in the main window, eight digits each.
  void EnterRange(const QString& in, const QString& out);

  // Takes back the answers that nobody has asked for.
  void TakeBackAnswers() { answers_.clear(); }

  // Queues what to do with the next boxes and dialogs that come up, one each.
  void Expect(const Answer& answer) { answers_.push_back(answer); }

  // Queues what to do with the next dialog of a running job, as soon as it has the keys.
  void WhenRunning(const Answer& answer) { running_.push_back(answer); }

  // Opens the context menu at a point of a widget and returns it.
  QMenu* OpenPopup(QWidget* widget, const QPoint& at);

  // Clicks the item of a menu whose text holds `text`.
  void Choose(QMenu* menu, const QString& text);

  // Lets the pointer rest on a point of the view until a tool tip would show.
  void RestOn(const QPoint& at);

  // Turns the wheel by `delta`, 120 a notch, away from the operator above 0.
  void Wheel(int delta);

  // Saves what the topmost window shows, when a folder for that is named in the environment.
  void Photograph(const QString& name);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void Look();

  std::unique_ptr<ui::MainWindow> window_;
  QTimer watch_;
  std::deque<Answer> answers_;
  std::deque<Answer> running_;
};

// Presses one button after the other, each given by its name or its text. What comes up has to be a
// message box that holds the text `says`, when there is one.
Answer Press(const QStringList& buttons, const QString& says = {});

// Types names into a file dialog and accepts it.
Answer Choosing(const QString& names);

}  // namespace quorvan::test
