// How much memory there is.

#pragma once

#include <cstdint>
#include <optional>

namespace quorvan::platform {

// Bytes that the process could still take without driving others out of memory; nothing when the
// system does not tell. Systems that promise more memory than they have end a process that uses
// what it was promised, so a large table asks here first.
std::optional<std::uint64_t> AvailableMemory();

// True when `bytes` leave a quarter of the available memory to the rest of the work, or the system
// does not tell. Small amounts are not asked about.
bool FitsMemory(std::uint64_t bytes);

}  // namespace quorvan::platform
