// Writes JSON (RFC 8259) as text, indented by two blanks for each level. Every call writes its
// value at once, and no tree of values is held in memory.

#pragma once

#include <fmt/format.h>

#include <cmath>
#include <concepts>
#include <string>
#include <string_view>

#include "platform/language.h"

namespace quorvan::cli {

// Writes one JSON value, as a rule an object. `name` is empty for an item of an array and for the
// outermost value; elsewhere it names the value within its object, in characters that JSON does not
// escape.
class JsonWriter {
 public:
  // Appends to `text`, which must live as long as this object. While an object or an array is
  // filled, the caller may take written text out of `text`.
  explicit JsonWriter(std::string* text) : text_(*text) {}

  // Writes a value. A number that is not finite becomes null; in a text (UTF-8), bytes that are no
  // UTF-8 become U+FFFD.
  void Field(std::string_view name, std::string_view text);
  void Field(std::string_view name, const char* text) { Field(name, std::string_view(text)); }
  void Field(std::string_view name, std::integral auto number) {
    Raw(name, fmt::format("{}", number));
  }
  void Field(std::string_view name, double number) {
    Raw(name, std::isfinite(number) ? fmt::format("{}", number) : "null");
  }
  // Writes an object with a text in both languages, as the members ja and en.
  void InBoth(std::string_view name, const platform::InBoth<std::string>& text) {
    Object(name, [&] {
      Field("ja", text.ja);
      Field("en", text.en);
    });
  }
  // Writes a text as an item of an array.
  void Item(std::string_view text) { Field({}, text); }

  // Writes an object or an array. Calls `fill`, without arguments, to write the contents.
  template <typename Fill>
  void Object(std::string_view name, Fill fill) {
    Nest(name, '{', '}', fill);
  }
  template <typename Fill>
  void Array(std::string_view name, Fill fill) {
    Nest(name, '[', ']', fill);
  }

 private:
  template <typename Fill>
  void Nest(std::string_view name, char open, char close, Fill fill) {
    Begin(name);
    text_ += open;
    isEmpty_ = true;
    ++depth_;
    fill();
    --depth_;
    if (!isEmpty_) NewLine();
    text_ += close;
    isEmpty_ = false;
  }

  void Raw(std::string_view name, std::string_view value);
  void Begin(std::string_view name);
  void NewLine();
  void Quote(std::string_view text);

  std::string& text_;
  std::size_t depth_ = 0;
  bool isEmpty_ = true;  // the object or array being filled has no value yet
};

}  // namespace quorvan::cli
