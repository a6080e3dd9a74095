#include "platform/memory.h"

#include <windows.h>

#include <algorithm>

namespace quorvan::platform {

std::optional<std::uint64_t> AvailableMemory() {
  MEMORYSTATUSEX status{};
  status.dwLength = sizeof status;
  if (!GlobalMemoryStatusEx(&status)) return std::nullopt;
  // The second number counts what the system still promises to this process.
  return std::min(status.ullAvailPhys, status.ullAvailPageFile);
}

}  // namespace quorvan::platform
