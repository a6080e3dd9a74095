#include "platform/text.h"

#include <utf8/checked.h>
#include <utf8/unchecked.h>

#include <algorithm>

namespace quorvan::platform {
namespace {

// A byte that belongs to no valid UTF-8 sequence (0x80 to 0xFF) becomes kEscapeBase plus the byte.
constexpr char16_t kEscapeBase = 0xDC00;
constexpr char16_t kFirstEscape = 0xDC80;
constexpr char16_t kLastEscape = 0xDCFF;
constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

std::u16string ToUtf16(std::string_view utf8) {
  std::u16string result;
  result.reserve(utf8.size());
  const char* next = utf8.data();
  const char* end = next + utf8.size();
  while (next != end) {
    const char* invalid = utf8::find_invalid(next, end);
    utf8::unchecked::utf8to16(next, invalid, std::back_inserter(result));
    next = invalid;
    if (next != end) {
      result.push_back(static_cast<char16_t>(kEscapeBase + static_cast<unsigned char>(*next)));
      ++next;
    }
  }
  return result;
}

std::string ToUtf8(std::u16string_view utf16) {
  std::string result;
  result.reserve(utf16.size());
  for (std::size_t i = 0; i < utf16.size(); ++i) {
    const char16_t unit = utf16[i];
    if (IsHighSurrogate(unit) && i + 1 < utf16.size() && IsLowSurrogate(utf16[i + 1])) {
      const char32_t point =
          0x10000 + ((char32_t{unit} - 0xD800) << 10) + (char32_t{utf16[i + 1]} - 0xDC00);
      utf8::unchecked::append(point, std::back_inserter(result));
      ++i;
    } else if (unit >= kFirstEscape && unit <= kLastEscape) {
      result.push_back(static_cast<char>(unit - kEscapeBase));
    } else {
      const bool lone = IsHighSurrogate(unit) || IsLowSurrogate(unit);
      utf8::unchecked::append(lone ? kReplacement : char32_t{unit}, std::back_inserter(result));
    }
  }
  return result;
}

void CopyText(char16_t* destination, std::size_t capacity, std::u16string_view text) {
  if (capacity == 0) return;
  std::size_t length = std::min(text.size(), capacity - 1);
  if (length < text.size() && length > 0 && IsHighSurrogate(text[length - 1])) --length;
  std::copy_n(text.data(), length, destination);
  destination[length] = 0;
}

}  // namespace quorvan::platform
