#include "platform/kept_place.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

namespace quorvan::platform {
namespace {

constexpr char kGroup[] = "[Window]\n";
constexpr std::string_view kValue = "position=@Rect(";

// The file that holds the place; empty when the environment names no folder for it.
std::filesystem::path PlaceFile() {
  const std::filesystem::path file = "MXF_Quorvan/MXF_Quorvan.conf";
  const char* folder = std::getenv("XDG_CONFIG_HOME");
  if (folder != nullptr && *folder != 0) return folder / file;
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home == 0) return {};
  return std::filesystem::path(home) / ".config" / file;
}

}  // namespace

std::optional<KeptPlace> ReadKeptPlace() {
  std::ifstream file(PlaceFile());
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with(kValue)) continue;
    std::istringstream numbers(line.substr(kValue.size()));
    KeptPlace place{};
    if (numbers >> place.left >> place.top >> place.width >> place.height) return place;
  }
  return std::nullopt;
}

// The stored place stays when there is no room for the new file.
void WriteKeptPlace(const KeptPlace& place) {
  const std::filesystem::path path = PlaceFile();
  if (path.empty()) return;
  const std::filesystem::path part = path.native() + ".part";
  std::error_code error;
  std::filesystem::create_directories(path.parent_path(), error);
  std::ofstream file(part);
  file << kGroup << kValue << place.left << ' ' << place.top << ' ' << place.width << ' '
       << place.height << ")\n";
  file.close();
  if (file.good()) {
    std::filesystem::rename(part, path, error);
  } else {
    std::filesystem::remove(part, error);
  }
}

bool KeptPlaceHasFrame() {
  return false;
}

}  // namespace quorvan::platform
