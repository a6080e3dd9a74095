#include "cli/json_writer.h"

#include <iterator>

#include "platform/text.h"

namespace quorvan::cli {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Returns `text` with U+FFFD for every byte that is no UTF-8. ToUtf16 turns such a byte into a low
// surrogate without a high surrogate in front.
std::string ValidUtf8(std::string_view text) {
  std::u16string units = platform::ToUtf16(text);
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (IsLowSurrogate(units[i]) && (i == 0 || !IsHighSurrogate(units[i - 1])))
      units[i] = kReplacement;
  }
  return platform::ToUtf8(units);
}

}  // namespace

void JsonWriter::Field(std::string_view name, std::string_view text) {
  Begin(name);
  Quote(text);
  isEmpty_ = false;
}

void JsonWriter::Raw(std::string_view name, std::string_view value) {
  Begin(name);
  text_ += value;
  isEmpty_ = false;
}

void JsonWriter::Begin(std::string_view name) {
  if (!isEmpty_) text_ += ',';
  if (depth_ > 0) NewLine();
  if (name.empty()) return;
  text_ += '"';
  text_ += name;
  text_ += "\": ";
}

void JsonWriter::NewLine() {
  text_ += '\n';
  text_.append(2 * depth_, ' ');
}

void JsonWriter::Quote(std::string_view text) {
  text_ += '"';
  for (const char letter : ValidUtf8(text)) {
    const auto code = static_cast<unsigned char>(letter);
    if (letter == '"' || letter == '\\') {
      text_ += '\\';
      text_ += letter;
    } else if (letter == '\n') {
      text_ += "\\n";
    } else if (code < 0x20) {
      fmt::format_to(std::back_inserter(text_), "\\u{:04x}", code);
    } else {
      text_ += letter;
    }
  }
  text_ += '"';
}

}  // namespace quorvan::cli
