#include "platform/process.h"

#include <windows.h>

#include <string>

namespace quorvan::platform {

void PrepareProcess() {
  SetErrorMode(GetErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
}

bool TakeInstance(std::string_view name) {
  const std::wstring wide(name.begin(), name.end());
  const HANDLE taken = OpenMutexW(MUTEX_ALL_ACCESS, FALSE, wide.c_str());
  if (taken != nullptr) CloseHandle(taken);
  // The mutex of an instance with more rights than this one exists, but cannot be opened.
  if (taken != nullptr || GetLastError() == ERROR_ACCESS_DENIED) return false;
  // The system closes the mutex at the end of the process. Another process may have created the
  // mutex meanwhile.
  return CreateMutexW(nullptr, TRUE, wide.c_str()) == nullptr ||
         GetLastError() != ERROR_ALREADY_EXISTS;
}

}  // namespace quorvan::platform
