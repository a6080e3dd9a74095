// Reads little-endian numbers from bytes.

#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvan {

// The unsigned number whose sizeof(Word) bytes stand at `p`, the least significant byte first.
template <typename Word>
constexpr Word LoadLittleEndian(const std::uint8_t* p) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < sizeof(Word); ++i)
    value |= static_cast<std::uint64_t>(p[i]) << (8 * i);
  return static_cast<Word>(value);
}

}  // namespace quorvan
