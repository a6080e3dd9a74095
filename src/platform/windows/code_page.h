// Text in a code page of Windows.

#pragma once

#include <string>
#include <string_view>

namespace quorvan::platform {

// Appends `utf16` to `*text` in the code page `codePage` (GetACP), as WideCharToMultiByte converts
// it without taking a similar character for one that the code page lacks. Such a character, and a
// lone surrogate, becomes its number, as <U+1F3AC>. False when there was such a character. Throws
// std::bad_alloc.
bool AppendInCodePage(std::u16string_view utf16, unsigned codePage, std::string* text);

}  // namespace quorvan::platform
