#include <strings.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/path.h"
#include "platform/text.h"

namespace quorvan::platform {
namespace {

// The desktop folder of the user with the home folder `home`. The folder's name depends on the
// user's language and stands in the file user-dirs.dirs of the freedesktop.org base directories, in
// the line XDG_DESKTOP_DIR="...", as an absolute path or behind $HOME. When the file has no such
// line, the folder is Desktop in `home`.
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

std::optional<std::u16string> PathOfAddress(const std::string& host, const std::string& path) {
  std::array<char, 256> machine{};
  const bool named = gethostname(machine.data(), machine.size() - 1) == 0;
  const bool isHere = host.empty() || host == "localhost" ||
                      (named && strcasecmp(host.c_str(), machine.data()) == 0);
  if (!isHere) return std::nullopt;
  return ToUtf16(path);
}

}  // namespace quorvan::platform
