#include "support/temp_folder.h"

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "platform/text.h"
#include "platform/uuid.h"

namespace quorvan::test {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const char* what, const fs::path& path) {
  throw std::runtime_error("test folder: " + path.string() + ": " + what);
}

}  // namespace

TempFolder::TempFolder() {
  std::string name = "quorvan-test-";
  const auto uuid = platform::NewUuid().value();
  for (const unsigned byte : uuid)
    name += std::to_string(byte);
  const char* place = std::getenv("QUORVAN_TEST_FOLDER");
  path_ = (place != nullptr ? fs::path(place) : fs::temp_directory_path()) / name;
  if (!fs::create_directory(path_)) Fail("cannot create", path_);
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::u16string TempFolder::PathOf(const std::string& name) const {
  return (path_ / platform::ToUtf16(name)).make_preferred().u16string();
}

std::u16string TempFolder::Write(const std::string& name,
                                 const std::vector<std::uint8_t>& bytes) const {
  const fs::path path = PathOf(name);
  if (!WriteBytes(path, bytes)) Fail("cannot write", path);
  return path.u16string();
}

bool WriteBytes(const fs::path& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  return file.good();
}

std::vector<std::uint8_t> ReadAll(const fs::path& path) {
  std::vector<std::uint8_t> bytes(fs::file_size(path));
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file) Fail("cannot read", path);
  return bytes;
}

bool MakeLink(const fs::path& target, const fs::path& link) {
  std::error_code error;
  fs::create_symlink(target, link, error);
  return !error;
}

bool CutWhileOpen(const fs::path& path, std::uint64_t bytes) {
  std::error_code error;
  fs::resize_file(path, bytes, error);
  return !error;
}

#ifdef _WIN32
// The system does not tell the program what it has in memory: the program prefetches every file.
void DropFromMemory(const std::filesystem::path&) {}
#else
void DropFromMemory(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDONLY);
  const bool dropped =
      file >= 0 && fsync(file) == 0 && posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED) == 0;
  if (!dropped) Fail("cannot be dropped from memory", path);
  close(file);
}
#endif

}  // namespace quorvan::test
