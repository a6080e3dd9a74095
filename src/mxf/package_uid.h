// The PackageUID item, alike in the Material and the Source Package.

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "mxf/records.h"

namespace quorvan {

inline constexpr std::uint16_t kTagPackageUid = 0x4401;

// Keeps the first 32 bytes of a PackageUID value, zeros where it is shorter, and its length in
// bytes.
inline void StorePackageUid(std::span<const std::uint8_t> value,
                            std::array<std::uint8_t, kUmidBytes>* umid, std::uint32_t* size) {
  umid->fill(0);
  std::copy_n(value.begin(), std::min(value.size(), umid->size()), umid->begin());
  *size = static_cast<std::uint32_t>(value.size());
}

}  // namespace quorvan
