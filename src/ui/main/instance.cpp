#include "ui/main/instance.h"

#include <QDir>
#include <QStandardPaths>

namespace quorvan::ui {
namespace {

constexpr char kInstanceName[] = "QVN-70";
// How long to wait for another instance that is just writing its lock file.
constexpr int kPatienceMilliseconds = 200;

}  // namespace

QString InstancePath() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  return QDir(folder.isEmpty() ? QDir::tempPath() : folder).filePath(kInstanceName);
}

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

}  // namespace quorvan::ui
