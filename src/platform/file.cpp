#include "platform/file.h"

#include <utility>

namespace quorvan::platform {

File::File(File&& other) noexcept
    : handle_(std::exchange(other.handle_, kNoHandle)),
      name_(std::move(other.name_)),
      position_(std::exchange(other.position_, 0)),
      stopRequest_(std::exchange(other.stopRequest_, nullptr)),
      trouble_(std::exchange(other.trouble_, ReadTrouble::kNone)),
      prefetching_(std::move(other.prefetching_)) {}

File& File::operator=(File&& other) noexcept {
  if (this != &other) {
    Close();
    handle_ = std::exchange(other.handle_, kNoHandle);
    name_ = std::move(other.name_);
    position_ = std::exchange(other.position_, 0);
    stopRequest_ = std::exchange(other.stopRequest_, nullptr);
    trouble_ = std::exchange(other.trouble_, ReadTrouble::kNone);
    prefetching_ = std::move(other.prefetching_);
  }
  return *this;
}

File::~File() {
  Close();
}

bool File::Seek(std::uint64_t offset) {
  if (offset > kMostFileOffset) return false;
  position_ = offset;
  return true;
}

std::size_t File::Read(void* buffer, std::size_t length) {
  const std::size_t done = ReadAt(position_, buffer, length);
  position_ += done;
  return done;
}

bool File::Write(const void* data, std::size_t length) {
  if (!WriteAt(position_, data, length)) return false;
  position_ += length;
  return true;
}

}  // namespace quorvan::platform
