// New universally unique identifiers.

#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace quorvan::platform {

// The 16 bytes of a new UUID in text order (RFC 4122: each field big-endian), or nothing when the
// system cannot make one.
std::optional<std::array<std::uint8_t, 16>> NewUuid();

}  // namespace quorvan::platform
