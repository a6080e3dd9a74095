// The program with the window: starts it, and allows a single instance.

#include <QApplication>

#include <cstdio>
#include <new>
#include <utility>

#include "platform/process.h"
#include "ui/main/main_window.h"
#include "ui/main/message_box.h"
#include "ui/main/placement.h"
#include "ui/main/theme.h"

namespace {

constexpr char kInstanceName[] = "QVN-70";
constexpr int kAlreadyRunning = 1;
constexpr int kNoMemory = 1;

// Shows a message when memory for an operation of the operator is out. The program goes on, since a
// job may be running.
class Application : public QApplication {
 public:
  using QApplication::QApplication;

  bool notify(QObject* receiver, QEvent* event) override {
    try {
      return QApplication::notify(receiver, event);
    } catch (const std::bad_alloc&) {
      TellOfMemory();
      return true;
    }
  }

 private:
  void TellOfMemory() {
    if (std::exchange(telling_, true)) return;
    try {
      quorvan::ui::Tell(nullptr, quorvan::ui::BoxKind::kError,
                        u"メモリが不足しているため、操作を完了できませんでした。");
    } catch (const std::bad_alloc&) {  // without memory for the message, nothing is shown
    }
    telling_ = false;
  }

  bool telling_ = false;
};

int Run(int argc, char** argv) {
  Application application(argc, argv);
  QApplication::setApplicationName("MXF_Quorvan");
  quorvan::ui::DressApplication();

  if (!quorvan::platform::TakeInstance(kInstanceName)) {
    quorvan::ui::Tell(nullptr, quorvan::ui::BoxKind::kPlain,
                      u"MXF Quorvan はすでに起動しています。");
    return kAlreadyRunning;
  }

  quorvan::ui::MainWindow window;
  quorvan::ui::RestorePlacement(&window);
  window.show();
  return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
  quorvan::platform::PrepareProcess();
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc&) {  // before the window exists or after its end
    std::fputs("MXF Quorvan: out of memory\n", stderr);
    return kNoMemory;
  }
}
