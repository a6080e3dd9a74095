// The PackageUID of the Material and the Source Package, in the records and as text.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "mxf/records.h"

namespace quorvan {

// Keeps the first 32 bytes of a PackageUID value, zeros where it is shorter, and its length in
// bytes.
inline void StorePackageUid(std::span<const std::uint8_t> value,
                            std::array<std::uint8_t, kUmidBytes>* umid, std::uint32_t* size) {
  umid->fill(0);
  std::copy_n(value.begin(), std::min(value.size(), umid->size()), umid->begin());
  *size = static_cast<std::uint32_t>(value.size());
}

inline constexpr std::size_t kUmidTextChars = 2 * kUmidBytes + 1;  // with the zero

// Writes the UMID as 64 upper-case hexadecimal characters and a zero to `text`, which has room for
// kUmidTextChars. Returns 0, or -1 for a null argument.
int UmidToHexText(const std::uint8_t* umid, char16_t* text);

}  // namespace quorvan
