// The two languages in which the program speaks, and texts that exist in both.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quorvan::platform {

enum class Language : std::uint8_t { kJapanese, kEnglish };

// The window speaks this language everywhere. The console asks UserLanguage or its user.
inline constexpr Language kWindowLanguage = Language::kJapanese;

// The same text in both languages.
template <typename String>
struct InBoth {
  String ja;
  String en;

  constexpr const String& In(Language language) const {
    return language == Language::kJapanese ? ja : en;
  }
};

// A fixed text of a table. The compiler refuses a text that one language lacks, English with other
// characters than ASCII, and languages that do not have the same places for values (%s, %d) in the
// same order.
struct Text : InBoth<std::u16string_view> {
  constexpr Text() = default;
  consteval Text(std::u16string_view japanese, std::u16string_view english)
      : InBoth{japanese, english} {
    if (ja.empty() != en.empty() || !AreSamePlaces(ja, en)) throw "no such text in both languages";
    for (const char16_t c : en) {
      if (c > 0x7E) throw "English in other characters than ASCII";
    }
  }

 private:
  static consteval bool AreSamePlaces(std::u16string_view a, std::u16string_view b) {
    while (true) {
      const std::size_t atA = a.find(u'%');
      const std::size_t atB = b.find(u'%');
      if (atA == a.npos || atB == b.npos) return atA == atB;
      if (a.substr(atA, 2) != b.substr(atB, 2)) return false;
      a.remove_prefix(atA + 1);
      b.remove_prefix(atB + 1);
    }
  }
};

// The text that `compose` returns for each of the languages.
template <typename Compose>
auto ComposeInBoth(Compose compose) {
  return InBoth<decltype(compose(Language::kJapanese))>{compose(Language::kJapanese),
                                                        compose(Language::kEnglish)};
}

// The language that the user of this system reads messages in: Japanese where the system says so,
// English for every other language and where the system says nothing. Throws nothing.
Language UserLanguage();

}  // namespace quorvan::platform
