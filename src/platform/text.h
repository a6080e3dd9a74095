// UTF-16, the text of the records, to and from UTF-8, the text of the outside world.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorvan::platform {

// Bytes that are no UTF-8 become lone surrogates U+DC80 to U+DCFF, one a byte, which ToUtf8 turns
// back: a file name of any encoding survives the round trip.
std::u16string ToUtf16(std::string_view utf8);

// Any other lone surrogate becomes U+FFFD.
std::string ToUtf8(std::u16string_view utf16);

// Copies `text` into an array of `capacity` characters, zero terminated, cut where it does not fit
// but never between the two halves of a surrogate pair. Nothing happens for a capacity of 0.
void CopyText(char16_t* destination, std::size_t capacity, std::u16string_view text);

}  // namespace quorvan::platform
