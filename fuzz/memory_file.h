// A file in memory, through which a fuzz target gives its input to code that opens paths.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quorvan::fuzz {

class MemoryFile {
 public:
  // Ends the program when the system cannot make such a file.
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  // Makes `data`, `size` bytes, the whole contents of the file. Ends the program on failure.
  void Replace(const std::uint8_t* data, std::size_t size);

  // A path that opens the file as long as this object exists.
  const std::u16string& Path() const { return path_; }

 private:
  int handle_ = -1;
  std::u16string path_;
};

}  // namespace quorvan::fuzz
