// A checksum of bytes that come in pieces.

#pragma once

#include <array>
#include <cstdint>
#include <span>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace quorvan {

// XXH3 with 128 bits. Finds changed bytes; no protection against intent. Throws nothing.
class Checksum {
 public:
  Checksum() { XXH3_128bits_reset(&state_); }

  void Add(std::span<const std::uint8_t> bytes) {
    XXH3_128bits_update(&state_, bytes.data(), bytes.size());
  }

  // The checksum of all bytes that were added, high byte first.
  std::array<std::uint8_t, 16> Digest() const {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&state_));
    return std::to_array(canonical.digest);
  }

 private:
  XXH3_state_t state_;
};

}  // namespace quorvan
