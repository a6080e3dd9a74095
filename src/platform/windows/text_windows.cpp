#include "platform/text.h"

#include <windows.h>

#include <cstdio>

#include "platform/windows/code_page.h"
#include "platform/windows/wide_text.h"

namespace quorvan::platform {
namespace {

constexpr char16_t kFirstBeyondAscii = 0x80;
constexpr int kMostBytes = 8;  // of a character in any code page

// The labels of the logs are Japanese: a code page without these letters cannot hold a log.
constexpr std::u16string_view kJapanese = u"\u30ED\u30B0";

// The number of units of the character at the start of `text`, which is not empty.
std::size_t UnitsOfFirst(std::u16string_view text) {
  return text.size() > 1 && IS_SURROGATE_PAIR(text[0], text[1]) ? 2 : 1;
}

// Writes the bytes of the character `units` to `bytes`. Returns how many there are, 0 when
// `codePage` lacks the character.
int Convert(std::u16string_view units, unsigned codePage, char (&bytes)[kMostBytes]) {
  const std::wstring wide = ToWide(units);
  BOOL replaced = FALSE;
  const int count =
      WideCharToMultiByte(codePage, WC_NO_BEST_FIT_CHARS, wide.data(),
                          static_cast<int>(wide.size()), bytes, kMostBytes, nullptr, &replaced);
  return replaced ? 0 : count;
}

void AppendNumber(std::u16string_view units, std::string* text) {
  const unsigned point =
      units.size() == 1 ? units[0] : 0x10000 + ((units[0] - 0xD800U) << 10) + (units[1] - 0xDC00U);
  char number[16];
  std::snprintf(number, sizeof number, "<U+%04X>", point);
  text->append(number);
}

bool HoldsJapanese(unsigned codePage) {
  std::string unused;
  return AppendInCodePage(kJapanese, codePage, &unused);
}

}  // namespace

bool AppendInCodePage(std::u16string_view utf16, unsigned codePage, std::string* text) {
  bool whole = true;
  while (!utf16.empty()) {
    const std::u16string_view units = utf16.substr(0, UnitsOfFirst(utf16));
    utf16.remove_prefix(units.size());
    char bytes[kMostBytes];
    if (units[0] < kFirstBeyondAscii) {
      text->push_back(static_cast<char>(units[0]));
    } else if (const int count = Convert(units, codePage, bytes)) {
      text->append(bytes, static_cast<std::size_t>(count));
    } else {
      AppendNumber(units, text);
      whole = false;
    }
  }
  return whole;
}

// Windows can have UTF-8 as its code page, too: then UTF-8 needs no conversion, and the call that
// converts takes no report of what is lacking.
void AppendInSystemEncoding(std::string_view utf8, std::string* text) {
  const unsigned codePage = GetACP();
  if (codePage == CP_UTF8 || !HoldsJapanese(codePage)) {
    text->append(utf8);
  } else {
    AppendInCodePage(ToUtf16(utf8), codePage, text);
  }
}

}  // namespace quorvan::platform
