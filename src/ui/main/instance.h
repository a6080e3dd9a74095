// Allows one running instance of the program for each user.

#pragma once

#include <QLockFile>
#include <QString>

namespace quorvan::ui {

// The path of the file that the running instance locks.
QString InstancePath();

// True when this is the only instance, or when an error of the lock file leaves the question open.
// A lock file that names no process is stale and is removed; an instance that met a full disk
// leaves such a lock file behind. Keeps `instance` locked.
bool TakeInstance(QLockFile* instance);

}  // namespace quorvan::ui
