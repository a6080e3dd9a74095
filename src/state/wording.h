// Composes texts with values in them, in one or both languages.

#pragma once

#include <fmt/format.h>

#include <string>
#include <type_traits>

#include "platform/language.h"

namespace quorvan {

// A text in both languages with a {} for each of its values, in the order of the values or with
// their numbers, as in {1}. The compiler checks both forms against the values.
template <typename... Values>
struct WordingForm {
  fmt::format_string<const Values&...> ja;
  fmt::format_string<const Values&...> en;
};

// `form` in `language`, with its values filled in. Texts and values are UTF-8. Throws
// std::bad_alloc.
template <typename... Values>
std::string Worded(platform::Language language,
                   const std::type_identity_t<WordingForm<Values...>>& form,
                   const Values&... values) {
  return fmt::format(language == platform::Language::kJapanese ? form.ja : form.en, values...);
}

// `form` in both languages, with its values filled in. Throws std::bad_alloc.
template <typename... Values>
platform::InBoth<std::string> WordedInBoth(const std::type_identity_t<WordingForm<Values...>>& form,
                                           const Values&... values) {
  return {fmt::format(form.ja, values...), fmt::format(form.en, values...)};
}

}  // namespace quorvan
