// The program with the window.

#include <QApplication>
#include <QDir>
#include <QLockFile>
#include <QStandardPaths>

#include "ui/main/main_window.h"
#include "ui/main/message_box.h"
#include "ui/main/placement.h"
#include "ui/main/theme.h"

namespace {

constexpr char kInstanceName[] = "QVN-70";
constexpr int kAlreadyRunning = 1;

QString LockPath() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  return QDir(folder.isEmpty() ? QDir::tempPath() : folder).filePath(kInstanceName);
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setOrganizationName("MXF_Quorvan");
  QApplication::setApplicationName("MXF_Quorvan");
  quorvan::ui::DressApplication();

  QLockFile instance(LockPath());
  instance.setStaleLockTime(0);
  if (!instance.tryLock() && instance.error() == QLockFile::LockFailedError) {
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
