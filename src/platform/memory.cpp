#include "platform/memory.h"

namespace quorvan::platform {

bool FitsMemory(std::uint64_t bytes) {
  constexpr std::uint64_t alwaysThere = std::uint64_t{64} << 20;
  if (bytes <= alwaysThere) return true;
  const auto available = AvailableMemory();
  return !available || bytes <= *available / 4 * 3;
}

}  // namespace quorvan::platform
