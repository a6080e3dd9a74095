#include "platform/memory.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace quorvan::platform {
namespace {

// The number behind `label` in the file `path`, or the first number of the file for an empty label.
std::optional<std::uint64_t> NumberIn(const char* path, const char* label) {
  std::FILE* file = std::fopen(path, "re");
  if (file == nullptr) return std::nullopt;
  std::optional<std::uint64_t> number;
  char line[256];
  const std::size_t labelLength = std::strlen(label);
  while (!number && std::fgets(line, sizeof line, file) != nullptr) {
    if (std::strncmp(line, label, labelLength) != 0) continue;
    std::uint64_t value = 0;
    if (std::sscanf(line + labelLength, "%" SCNu64, &value) == 1) number = value;
  }
  std::fclose(file);
  return number;
}

}  // namespace

std::optional<std::uint64_t> AvailableMemory() {
  constexpr std::uint64_t kilobyte = 1024;
  auto available = NumberIn("/proc/meminfo", "MemAvailable:");
  if (!available) return std::nullopt;
  *available *= kilobyte;
  // A container's own limit; "max" is no number.
  const auto limit = NumberIn("/sys/fs/cgroup/memory.max", "");
  const auto used = NumberIn("/sys/fs/cgroup/memory.current", "");
  if (limit && used) available = std::min(*available, *limit > *used ? *limit - *used : 0);
  return available;
}

}  // namespace quorvan::platform
