// Makes universally unique identifiers (RFC 4122).

#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace quorvan::platform {

// The 16 bytes of a new UUID in the order of its text form, in which every field is big-endian.
// Nothing when the system cannot make a UUID.
std::optional<std::array<std::uint8_t, 16>> NewUuid();

}  // namespace quorvan::platform
