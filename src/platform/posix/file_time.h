// How a FileTime relates to the system's seconds.

#pragma once

#include <cstdint>

namespace quorvan::platform {

// 1601-01-01 to 1970-01-01 in units of 100 ns.
inline constexpr std::int64_t kUnixEpochAsFileTime = 116444736000000000;
inline constexpr std::int64_t kTicksPerSecond = 10000000;

}  // namespace quorvan::platform
