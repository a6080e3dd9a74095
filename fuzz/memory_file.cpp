#include "memory_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/text.h"

namespace quorvan::fuzz {

MemoryFile::MemoryFile() : handle_(memfd_create("input", MFD_CLOEXEC)) {
  if (handle_ < 0) std::abort();
  path_ = platform::ToUtf16("/proc/self/fd/" + std::to_string(handle_));
}

MemoryFile::~MemoryFile() {
  close(handle_);
}

void MemoryFile::Replace(const std::uint8_t* data, std::size_t size) {
  if (ftruncate(handle_, 0) != 0) std::abort();
  for (std::size_t done = 0; done < size;) {
    const ssize_t written = pwrite(handle_, data + done, size - done, static_cast<off_t>(done));
    if (written <= 0) std::abort();
    done += static_cast<std::size_t>(written);
  }
}

}  // namespace quorvan::fuzz
