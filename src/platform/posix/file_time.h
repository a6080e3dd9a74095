// The relation of a FileTime, units of 100 ns since 1601, to the system's seconds since 1970.

#pragma once

#include <cstdint>

namespace quorvan::platform {

// The FileTime of 1970-01-01 00:00 UTC.
inline constexpr std::int64_t kUnixEpochAsFileTime = 116444736000000000;

// Units of 100 ns in a second.
inline constexpr std::int64_t kTicksPerSecond = 10000000;

}  // namespace quorvan::platform
