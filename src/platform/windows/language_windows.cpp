#include "platform/language.h"

#include <windows.h>

namespace quorvan::platform {

Language UserLanguage() {
  return PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_JAPANESE ? Language::kJapanese
                                                                    : Language::kEnglish;
}

}  // namespace quorvan::platform
