#include "platform/memory.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace quorvan::platform {
namespace {

// The number in the first line of the file `path` that begins with `label` and a number; with an
// empty label, in the first line that begins with a number. Nothing when there is no such line.
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

// The files in which the system tells the memory limit of a container (control group).
struct ContainerFiles {
  const char* limit;        // bytes that the container may use, or a word for no limit
  const char* used;         // bytes that the container uses
  const char* statistics;   // lines of a label and a number of bytes
  const char* cachedLabel;  // of cached file bytes, which the system drops when it needs memory
};
constexpr ContainerFiles kContainers[] = {
    {"/sys/fs/cgroup/memory.max", "/sys/fs/cgroup/memory.current", "/sys/fs/cgroup/memory.stat",
     "inactive_file "},
    {"/sys/fs/cgroup/memory/memory.limit_in_bytes", "/sys/fs/cgroup/memory/memory.usage_in_bytes",
     "/sys/fs/cgroup/memory/memory.stat", "total_inactive_file "},
};

}  // namespace

std::optional<std::uint64_t> AvailableMemory() {
  constexpr std::uint64_t kilobyte = 1024;
  auto available = NumberIn("/proc/meminfo", "MemAvailable:");
  if (!available) return std::nullopt;
  *available *= kilobyte;
  for (const ContainerFiles& container : kContainers) {
    const auto limit = NumberIn(container.limit, "");  // nothing for "max", which means no limit
    const auto used = NumberIn(container.used, "");
    if (!limit || !used) continue;
    const std::uint64_t cached = NumberIn(container.statistics, container.cachedLabel).value_or(0);
    const std::uint64_t bound = *used - std::min(*used, cached);
    available = std::min(*available, *limit > bound ? *limit - bound : 0);
  }
  return available;
}

}  // namespace quorvan::platform
