// The relation of a FileTime to the system's own record of the same units.

#pragma once

#include <windows.h>

#include "platform/file.h"

namespace quorvan::platform {

inline FileTime FromSystem(const FILETIME& time) {
  return FileTime{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

inline FILETIME ToSystem(FileTime time) {
  return {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
}

}  // namespace quorvan::platform
