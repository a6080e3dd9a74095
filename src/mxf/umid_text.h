// A UMID as people read it.

#pragma once

#include <cstddef>
#include <cstdint>

#include "mxf/records.h"

namespace quorvan {

inline constexpr std::size_t kUmidTextChars = 2 * kUmidBytes + 1;  // with the zero

// Writes the UMID as 64 upper-case hexadecimal characters and a zero to `text`, which has room for
// kUmidTextChars. Returns 0, or -1 for a null argument.
int UmidToHexText(const std::uint8_t* umid, char16_t* text);

}  // namespace quorvan
