// A folder of a test's own, gone with all it holds when the test ends.

#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace quorvan::test {

class TempFolder {
 public:
  // In the folder that the environment variable QUORVAN_TEST_FOLDER names, else in the system's own
  // for such files. Throws when the system gives no folder.
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

// Makes a symbolic link. False where the system has none, or none for this user.
bool MakeLink(const std::filesystem::path& target, const std::filesystem::path& link);

// Cuts a file to `bytes` bytes while a job has the file open. False where the system keeps others
// from changing such a file.
bool CutWhileOpen(const std::filesystem::path& path, std::uint64_t bytes);

// Brings a file onto the medium and out of the memory of a system that keeps it there; throws
// when it cannot be.
void DropFromMemory(const std::filesystem::path& path);

}  // namespace quorvan::test
