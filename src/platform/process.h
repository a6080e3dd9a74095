// What a process settles with the system for itself.

#pragma once

#include <string_view>

namespace quorvan::platform {

// Prepares the process; a program calls this first of all. From now on a call that meets a missing
// medium fails, where Windows would otherwise ask the user for the medium and wait. Does nothing on
// POSIX.
void PrepareProcess();

// Makes this process the only instance of the name `name`, in ASCII, until the process ends. On
// POSIX the instance is a lock on the file of this name in the user's runtime folder, or in /tmp;
// on Windows the instance is the mutex of this name. True also when an error of the system leaves
// the question open; false when another process is the instance, or this process already. Throws
// std::bad_alloc.
bool TakeInstance(std::string_view name);

}  // namespace quorvan::platform
