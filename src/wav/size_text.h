// The size of a file as text.

#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvan {

// Writes `size` (bytes) as "12.34 MB" into `buffer`, an array of `bufferChars` char16_t. The text
// is cut to `bufferChars` - 1 characters and terminated with a zero. The units bytes, KB, MB and GB
// step by 1024; the quotient is calculated in single precision. Returns 0, or 1 when `buffer` is
// null. Throws std::bad_alloc when memory is out.
int FormatFileSize(std::uint64_t size, char16_t* buffer, std::size_t bufferChars);

}  // namespace quorvan
