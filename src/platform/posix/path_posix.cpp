#include "platform/path.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/text.h"

namespace quorvan::platform {
namespace {

constexpr char16_t kSeparator = u'/';

// The desktop folder of the user with the home folder `home`. Its name depends on the user's
// language and is read from the file user-dirs.dirs of the freedesktop.org base directories, whose
// line XDG_DESKTOP_DIR="..." has an absolute path or one that starts with $HOME. "Desktop" in
// `home` without such a line.
std::filesystem::path NamedDesktop(const std::filesystem::path& home) {
  constexpr std::string_view kName = "XDG_DESKTOP_DIR=\"";
  constexpr std::string_view kHome = "$HOME";
  const char* settings = std::getenv("XDG_CONFIG_HOME");
  const bool named = settings != nullptr && *settings != 0;
  std::ifstream file((named ? std::filesystem::path(settings) : home / ".config") /
                     "user-dirs.dirs");
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with(kName) || line.back() != '"' || line.size() == kName.size()) continue;
    const std::string folder = line.substr(kName.size(), line.size() - kName.size() - 1);
    return folder.starts_with(kHome) ? home.native() + folder.substr(kHome.size()) : folder;
  }
  return home / "Desktop";
}

}  // namespace

std::u16string_view NameBehindSeparator(std::u16string_view path) {
  const std::size_t separator = path.rfind(kSeparator);
  return separator == std::u16string_view::npos ? std::u16string_view()
                                                : path.substr(separator + 1);
}

std::u16string_view LastComponent(std::u16string_view path) {
  return path.find(kSeparator) == std::u16string_view::npos ? path : NameBehindSeparator(path);
}

std::u16string_view FolderOf(std::u16string_view path) {
  const std::size_t separator = path.rfind(kSeparator);
  if (separator == std::u16string_view::npos) return {};
  return path.substr(0, std::max<std::size_t>(separator, 1));
}

std::u16string JoinPath(std::u16string_view folder, std::u16string_view name) {
  std::u16string path(folder);
  if (!path.empty() && path.back() != kSeparator) path += kSeparator;
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

std::u16string DesktopFolder() {
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home == 0) return {};
  const std::filesystem::path desktop = NamedDesktop(home);
  std::error_code error;
  return ToUtf16(std::filesystem::is_directory(desktop, error) ? desktop.native() : home);
}

std::u16string AbsolutePath(std::u16string_view path) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(ToUtf8(path), error);
  return error ? std::u16string(path) : ToUtf16(absolute.native());
}

}  // namespace quorvan::platform
