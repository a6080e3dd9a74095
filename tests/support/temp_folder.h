// A folder of a test's own, gone with all it holds when the test ends.

#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace quorvan::test {

class TempFolder {
 public:
  // Throws when the system gives no folder.
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

  // Full path of a name in the folder, whether or not there is such a file. The name is UTF-8.
  std::u16string PathOf(const std::string& name) const;

  // Writes a file and returns its full path; throws when it cannot be written.
  std::u16string Write(const std::string& name, const std::vector<std::uint8_t>& bytes) const;

 private:
  std::filesystem::path path_;
};

// False when not every byte could be written.
bool WriteBytes(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes);

// The whole content of a file; throws when it cannot be read.
std::vector<std::uint8_t> ReadAll(const std::filesystem::path& path);

// Brings a file onto the medium and out of the memory of a system that keeps it there; throws
// when it cannot be.
void DropFromMemory(const std::filesystem::path& path);

}  // namespace quorvan::test
