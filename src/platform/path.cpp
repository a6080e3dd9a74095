#include "platform/path.h"

#include <filesystem>

namespace quorvan::platform {
namespace {

constexpr auto kSeparator = static_cast<char16_t>(std::filesystem::path::preferred_separator);
constexpr std::u16string_view kSeparators = kSeparator == u'\\' ? u"\\/" : u"/";

// Where the last separator of `path` stands; npos without a separator.
std::size_t LastSeparator(std::u16string_view path) {
  return path.find_last_of(kSeparators);
}

}  // namespace

std::u16string_view NameBehindSeparator(std::u16string_view path) {
  const std::size_t separator = LastSeparator(path);
  return separator == std::u16string_view::npos ? std::u16string_view()
                                                : path.substr(separator + 1);
}

std::u16string_view LastComponent(std::u16string_view path) {
  return LastSeparator(path) == std::u16string_view::npos ? path : NameBehindSeparator(path);
}

std::u16string_view FolderOf(std::u16string_view path) {
  const std::size_t separator = LastSeparator(path);
  if (separator == std::u16string_view::npos) return {};
  const bool isBehindDrive = kSeparator == u'\\' && separator > 0 && path[separator - 1] == u':';
  return path.substr(0, separator == 0 || isBehindDrive ? separator + 1 : separator);
}

std::u16string JoinPath(std::u16string_view folder, std::u16string_view name) {
  std::u16string path(folder);
  if (!path.empty() && kSeparators.find(path.back()) == kSeparators.npos) path += kSeparator;
  return path.append(name);
}

std::u16string_view WithoutExtension(std::u16string_view path) {
  const std::size_t dot = LastComponent(path).rfind(u'.');
  if (dot == std::u16string_view::npos) return path;
  return path.substr(0, path.size() - LastComponent(path).size() + dot);
}

std::u16string LowerCaseExtension(std::u16string_view path) {
  const std::u16string_view name = LastComponent(path);
  const std::size_t dot = name.rfind(u'.');
  if (dot == std::u16string_view::npos) return {};
  std::u16string extension(name.substr(dot));
  for (char16_t& unit : extension) {
    if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit - u'A' + u'a');
  }
  return extension;
}

}  // namespace quorvan::platform
