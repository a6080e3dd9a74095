// JSON (RFC 8259) as text, two blanks an indent, written as it comes: no tree of it is ever held.

#pragma once

#include <fmt/format.h>

#include <cmath>
#include <concepts>
#include <string>
#include <string_view>

namespace quorvan::cli {

class JsonWriter {
 public:
  // Appends to `text`, which whoever fills an object or an array may shorten.
  explicit JsonWriter(std::string* text) : text_(*text) {}

  // A value with its name, of letters alone, within an object, or without a name within an array.
  // A number that is not finite shows as null; bytes of a text that are no UTF-8 show as U+FFFD.
  void Field(std::string_view name, std::string_view text);
  void Field(std::string_view name, const char* text) { Field(name, std::string_view(text)); }
  void Field(std::string_view name, std::integral auto number) {
    Raw(name, fmt::format("{}", number));
  }
  void Field(std::string_view name, double number) {
    Raw(name, std::isfinite(number) ? fmt::format("{}", number) : "null");
  }
  void Item(std::string_view text) { Field({}, text); }

  // An object or an array, whose contents `fill` writes; without a name within an array and at the
  // top.
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
  bool isEmpty_ = true;  // the object or array that is being filled
};

}  // namespace quorvan::cli
