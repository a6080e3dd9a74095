// How much memory the process can still take.

#pragma once

#include <cstdint>
#include <optional>

namespace quorvan::platform {

// Bytes that the process could still take without pushing other data out of memory, within the
// limit of its container. Nothing when the system does not tell. An allocation may succeed although
// the memory is not there; the system then ends the process at the first use of the memory. Code
// that allocates a large table therefore asks here first.
std::optional<std::uint64_t> AvailableMemory();

// True when an allocation of `bytes` bytes leaves at least a quarter of AvailableMemory, when the
// system does not tell, and always for up to 64 MiB.
bool FitsMemory(std::uint64_t bytes);

}  // namespace quorvan::platform
