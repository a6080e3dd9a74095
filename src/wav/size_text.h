// The size of a file as text.

#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvan {

// Writes `size` (bytes) as "12.34 MB" into `buffer`, zero terminated and cut to `bufferChars`
// characters. The units bytes, KB, MB and GB step by 1024; the quotient is formed in single
// precision. Returns 0, or 1 when `buffer` is null.
int FormatFileSize(std::uint64_t size, char16_t* buffer, std::size_t bufferChars);

}  // namespace quorvan
