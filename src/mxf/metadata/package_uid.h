// The PackageUID of the Material and the Source Package, in the records and as text.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "mxf/records.h"

namespace quorvan {

// Copies the first 32 bytes of the PackageUID item `value` to `*umid` and the length of `value` in
// bytes to `*size`. When `value` is shorter, the rest of `*umid` is zeros.
inline void StorePackageUid(std::span<const std::uint8_t> value,
                            std::array<std::uint8_t, kUmidBytes>* umid, std::uint32_t* size) {
  umid->fill(0);
  std::copy_n(value.begin(), std::min(value.size(), umid->size()), umid->begin());
  *size = static_cast<std::uint32_t>(value.size());
}

inline constexpr std::size_t kUmidTextChars = 2 * kUmidBytes + 1;  // with the zero at the end

// Writes the 32 bytes of `umid` to `text` as 64 upper-case hexadecimal digits and a zero. `text`
// must have room for kUmidTextChars characters. Returns 0; or -1, with nothing written, when an
// argument is null.
int UmidToHexText(const std::uint8_t* umid, char16_t* text);

}  // namespace quorvan
