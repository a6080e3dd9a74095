// UTF-16 of the records and UTF-16 of the system: the same units in two types.

#pragma once

#include <string>
#include <string_view>

namespace quorvan::platform {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline std::wstring ToWide(std::u16string_view text) {
  return std::wstring(text.begin(), text.end());
}

inline std::u16string FromWide(std::wstring_view text) {
  return std::u16string(text.begin(), text.end());
}

// `path` as the calls of the system take it. They refuse a path of 260 characters and more, unless
// it is absolute and stands behind the prefix \\?\, or \\?\UNC\ for a path in the network.
std::wstring SystemPath(std::u16string_view path);

}  // namespace quorvan::platform
