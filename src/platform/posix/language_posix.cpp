#include <cstdlib>

#include "platform/language.h"

namespace quorvan::platform {

// The first variable that is set and not empty names the locale of messages, as language, country
// and encoding in the form of ja_JP.UTF-8 (POSIX, Environment Variables).
Language UserLanguage() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0') continue;
    const std::string_view locale = value;
    const std::string_view language = locale.substr(0, locale.find_first_of("_.@"));
    return language == "ja" ? Language::kJapanese : Language::kEnglish;
  }
  return Language::kEnglish;
}

}  // namespace quorvan::platform
