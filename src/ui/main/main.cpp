// The program with the window.

#include <QApplication>
#include <QDir>
#include <QLockFile>
#include <QStandardPaths>

#include <cstdio>
#include <new>
#include <utility>

#include "ui/main/main_window.h"
#include "ui/main/message_box.h"
#include "ui/main/placement.h"
#include "ui/main/theme.h"

namespace {

constexpr char kInstanceName[] = "QVN-70";
constexpr int kAlreadyRunning = 1;
constexpr int kNoMemory = 1;
constexpr int kPatienceMilliseconds = 200;  // for a holder that is just writing its name

QString LockPath() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  return QDir(folder.isEmpty() ? QDir::tempPath() : folder).filePath(kInstanceName);
}

// True when this is the only instance, or nobody can tell. A file that names no holder, as a full
// disk leaves it, is nobody's lock.
bool TakeInstance(QLockFile* instance) {
  instance->setStaleLockTime(0);
  if (instance->tryLock(kPatienceMilliseconds)) return true;
  if (instance->error() != QLockFile::LockFailedError) return true;
  qint64 holder = 0;
  QString host;
  QString name;
  const bool named = instance->getLockInfo(&holder, &host, &name);
  return !named && instance->removeStaleLockFile() && instance->tryLock();
}

// What the operator does next ends in a message when memory for it is out, not in the end of the
// program: a job may be running.
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
    } catch (const std::bad_alloc&) {  // then the operation has just not happened
    }
    telling_ = false;
  }

  bool telling_ = false;
};

int Run(int argc, char** argv) {
  Application application(argc, argv);
  QApplication::setOrganizationName("MXF_Quorvan");
  QApplication::setApplicationName("MXF_Quorvan");
  quorvan::ui::DressApplication();

  QLockFile instance(LockPath());
  if (!TakeInstance(&instance)) {
    quorvan::ui::Tell(nullptr, quorvan::ui::BoxKind::kPlain,
                      u"MXF Quorvan はすでに起動しています。");
    return kAlreadyRunning;
  }

  quorvan::ui::MainWindow window;
  quorvan::ui::RestorePlacement(&window);
  window.show();
  const int result = QApplication::exec();
  quorvan::ui::SavePlacement(window);
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc&) {  // before the window stands, or behind it
    std::fputs("MXF Quorvan: out of memory\n", stderr);
    return kNoMemory;
  }
}
