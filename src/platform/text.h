// Converts between UTF-16, the text of the records, UTF-8, the text of files and of the system, and
// the encoding of plain text files.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorvan::platform {

// Converts UTF-8 to UTF-16. Each byte that is not part of valid UTF-8 becomes one of the lone
// surrogates U+DC80 to U+DCFF, which ToUtf8 turns back into the byte: a POSIX file name of any
// encoding comes back unchanged from both conversions.
std::u16string ToUtf16(std::string_view utf8);

// Converts UTF-16 to UTF-8. A lone surrogate U+DC80 to U+DCFF becomes the byte from which ToUtf16
// made it; any other lone surrogate becomes U+FFFD.
std::string ToUtf8(std::u16string_view utf16);

// Copies `text` into the array `destination` of `capacity` char16_t and terminates it with a zero.
// A text of `capacity` or more char16_t is cut, but never between the two halves of a surrogate
// pair. Writes nothing when `capacity` is 0.
void CopyText(char16_t* destination, std::size_t capacity, std::u16string_view text);

// Appends `utf8` to `*text` in the encoding in which the system's programs expect a plain text
// file: UTF-8 on POSIX systems; on Windows the system's ANSI code page, and UTF-8 where this has no
// Japanese. Each character that the code page lacks becomes its number between characters that a
// file name cannot hold, as <U+1F3AC>. Throws std::bad_alloc.
void AppendInSystemEncoding(std::string_view utf8, std::string* text);

}  // namespace quorvan::platform
