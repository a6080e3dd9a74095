#include "platform/file.h"

#include <algorithm>
#include <utility>

#include "platform/fault_seam.h"

namespace quorvan::platform {
namespace {

constexpr std::size_t kMostAtOnce = std::size_t{32} << 20;        // servers refuse far more
constexpr std::size_t kStoppableTransfer = std::size_t{1} << 20;  // between checks for a stop

bool IsWithinFiles(std::uint64_t offset, std::size_t length) {
  return offset <= kMostFileOffset && length <= kMostFileOffset - offset;
}

}  // namespace

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

std::size_t File::ReadAt(std::uint64_t offset, void* buffer, std::size_t length) const {
  if (!IsWithinFiles(offset, length)) return 0;
  const std::size_t most = stopRequest_ == nullptr ? kMostAtOnce : kStoppableTransfer;
  std::size_t done = 0;
  while (done < length) {
    if (StopAsked()) {
      if (trouble_ == ReadTrouble::kNone) trouble_ = ReadTrouble::kStopped;
      break;
    }
    const auto step =
        ReadOnce(offset + done, static_cast<char*>(buffer) + done, std::min(length - done, most));
    if (!step) trouble_ = ReadTrouble::kFailed;
    if (!step || *step == 0) break;
    done += *step;
  }
  return done;
}

bool File::WriteAt(std::uint64_t offset, const void* data, std::size_t length) {
  return WriteAll(SystemCall::kWrite, offset, data, length);
}

bool File::WriteAll(SystemCall kind, std::uint64_t offset, const void* data, std::size_t length) {
  if (!IsWithinFiles(offset, length)) return false;
  for (std::size_t done = 0; done < length;) {
    const auto step = WriteOnce(kind, offset + done, static_cast<const char*>(data) + done,
                                std::min(length - done, kMostAtOnce));
    if (!step || *step == 0) return false;
    done += *step;
  }
  return true;
}

}  // namespace quorvan::platform
