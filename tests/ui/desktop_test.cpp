// The window on a real desktop: under a window manager, with keys and drags from outside. Runs in
// tools/on_desktop.sh.

#include <gtest/gtest.h>

#include <QApplication>
#include <QProcess>
#include <QTest>

#include "driver.h"
#include "support/wav_builder.h"
#include "ui/main/qt_text.h"

namespace quorvan::test {
namespace {

// Waits until `done`; ends the test program without.
void Await(const std::function<bool()>& done, const QString& what) {
  if (!QTest::qWaitFor(done, 20000)) qFatal("%s", qPrintable(what));
}

// Presses keys or moves the pointer as a person does.
void Hand(const QStringList& arguments) {
  if (QProcess::execute("xdotool", arguments) != 0) qFatal("no xdotool");
}

// Lets the window manager rest for a while, `milliseconds` (10 to 99) from now.
void RestWindowManager(int milliseconds) {
  const QString rest =
      "sleep 0.0%1; kill -STOP $QUORVAN_WINDOW_MANAGER; sleep 0.06; kill -CONT "
      "$QUORVAN_WINDOW_MANAGER";
  QProcess::startDetached("bash", {"-c", rest.arg(milliseconds)});
}

class Desktop : public ::testing::Test {
 protected:
  Desktop() {
    driver_.Window().move(20, 20);
    AwaitKeys();
  }

  // Waits until the display gives the keys to the window and the window knows so.
  void AwaitKeys() {
    const auto hasKeys = [&] {
      QProcess focus;
      focus.start("xdotool", {"getwindowfocus", "-f"});
      focus.waitForFinished();
      return focus.readAll().trimmed().toULongLong() == driver_.Window().winId() &&
             driver_.Window().isActiveWindow();
    };
    Await(hasKeys, "the window has no keys");
  }

  // Presses keys and waits for what they do.
  void Press(const QString& keys, const std::function<bool()>& done) {
    Hand({"key", keys});
    Await(done, keys);
  }

  // Waits for a loaded clip, opens the library and the timecode entry, and unloads the clip.
  void UseTheKeys() {
    Await([&] { return app_.mxfLoaded == 1; }, "no clip is loaded");
    AwaitKeys();
    Press("ctrl+t", [&] { return app_.libraryView == 1; });
    Press("Escape", [&] { return app_.libraryView == 0; });
    Press("i", [&] { return driver_.Focus()->inherits("QLineEdit"); });
    Press("Escape", [&] { return driver_.Focus() == driver_.View(); });
    Press("ctrl+u", [&] { return app_.mxfLoaded == 0; });
  }

  // Drags files from another program to the middle of a widget. True when the widget takes them, as
  // a copy.
  bool Drag(const std::vector<std::u16string>& paths, const QWidget* target) {
    QStringList files;
    for (const std::u16string& path : paths)
      files.push_back(ui::ToQString(path));
    source_ = std::make_unique<QProcess>();
    QString said;
    const auto says = [&](const char* what) {
      said += source_->readAllStandardOutput();
      return said.contains(what);
    };
    source_->start(QApplication::applicationDirPath() + "/drag_source", files);
    Await([&] { return says("active"); }, "no source");
    Hand({"mousemove", "1800", "300", "mousedown", "1"});
    // A refusal comes as no answer; the pointer moves often enough for an answer.
    for (int step = 0; step < 40 && !says("offer 1"); ++step) {
      const QPoint at = target->mapToGlobal(target->rect().center()) + QPoint(step % 2, 0);
      Hand({"mousemove", QString::number(at.x()), QString::number(at.y())});
      QTest::qWait(20);
    }
    Hand({"mouseup", "1"});
    Await([&] { return says("end"); }, "the drag does not end");
    return said.contains("end 1");
  }

  std::unique_ptr<QProcess> source_;
  TempFolder folder_;
  std::u16string clip_ = folder_.Write("clip.mxf", BuildClip({}).bytes);
  Driver driver_;
  APP_STATE_INFO& app_ = driver_.App();
};

// The window manager rests for a while in each load, at another moment each time.
TEST_F(Desktop, HasTheKeysAfterEachQuickLoad) {
  for (int load = 0; load < 100; ++load) {
    driver_.Expect([&](QWidget*) {
      Hand({"type", "--delay", "1", ui::ToQString(clip_)});
      Hand({"key", "Return"});
      RestWindowManager(load / 2 + 10);
    });
    Hand({"key", "ctrl+o"});
    UseTheKeys();
  }
}

// The message of a refused rewrite closes, and its dialog with it, while the window manager rests.
TEST_F(Desktop, HasTheKeysAfterARefusedRewrite) {
  EXPECT_TRUE(Drag({clip_}, driver_.View()));
  Await([&] { return app_.mxfLoaded == 1; }, "no clip is loaded");
  AwaitKeys();
  app_.tracks->rewrapSwitch[0] = kSwitchOn;
  driver_.EnterRange("10000002", "10000007");
  std::filesystem::resize_file(folder_.Path() / "clip.mxf", 9);
  for (int round = 0; round < 20; ++round) {
    int answered = 0;
    driver_.Expect([&](QWidget* question) {
      test::Press({"102"})(question);
      ++answered;
    });
    driver_.Expect([&](QWidget*) {
      RestWindowManager(10 + round);
      Hand({"key", "Return"});
      ++answered;
    });
    Press("ctrl+r", [&] { return answered == 2 && !QApplication::activeModalWidget(); });
    AwaitKeys();
  }
}

TEST_F(Desktop, TakesFilesFromAnotherProgram) {
  std::vector<std::u16string> wavs;
  for (const char* name : {"a.wav", "b.wav", "c.wav", "d.wav"})
    wavs.push_back(folder_.Write(name, BuildWav({}).bytes));
  // Drags files to a widget and waits until the library holds as many.
  const auto add = [&](const std::vector<std::u16string>& paths, const QWidget* target, int files) {
    EXPECT_TRUE(Drag(paths, target));
    Await([&] { return app_.wavList->entryCount == files; }, "a file is missing");
    AwaitKeys();
  };
  // Nothing while a dialog is open.
  bool refused = false;
  driver_.Expect([&](QWidget* dialog) {
    refused = !Drag({clip_}, driver_.View());
    dialog->close();
  });
  Press("ctrl+e", [&] { return refused && QApplication::activeModalWidget() == nullptr; });
  EXPECT_EQ(app_.mxfLoaded, 0);

  EXPECT_TRUE(Drag({clip_}, driver_.View()));
  UseTheKeys();
  EXPECT_TRUE(Drag({clip_}, driver_.View()));
  Await([&] { return app_.mxfLoaded == 1; }, "no clip");
  add({wavs[0], wavs[1]}, driver_.View(), 2);
  add({wavs[2]}, driver_.List()->viewport(), 3);
  Press("Escape", [&] { return app_.libraryView == 0; });
  Press("i", [&] { return driver_.Focus()->inherits("QLineEdit"); });
  add({wavs[3]}, driver_.Focus(), 4);
  Press("Escape", [&] { return app_.libraryView == 0; });
  UseTheKeys();
}

}  // namespace
}  // namespace quorvan::test
