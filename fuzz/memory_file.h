// A file that lives in memory, so that a fuzz target hands its input to code that opens paths.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quorvan::fuzz {

class MemoryFile {
 public:
  // Ends the program when the system gives no such file.
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  // The file holds exactly these bytes from now on.
  void Replace(const std::uint8_t* data, std::size_t size);

  // Opens the file anew, as long as this object lives.
  const std::u16string& Path() const { return path_; }

 private:
  int handle_ = -1;
  std::u16string path_;
};

}  // namespace quorvan::fuzz
