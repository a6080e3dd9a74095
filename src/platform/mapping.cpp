#include "platform/mapping.h"

#include <limits>
#include <utility>

namespace quorvan::platform {

MappedView::MappedView(MappedView&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      fileOffset_(std::exchange(other.fileOffset_, 0)) {}

MappedView& MappedView::operator=(MappedView&& other) noexcept {
  if (this != &other) {
    Unmap();
    data_ = std::exchange(other.data_, nullptr);
    size_ = std::exchange(other.size_, 0);
    fileOffset_ = std::exchange(other.fileOffset_, 0);
  }
  return *this;
}

MappedView::~MappedView() {
  Unmap();
}

bool MappedView::Covers(std::uint64_t offset, std::uint64_t length) const {
  if (data_ == nullptr || offset < fileOffset_) return false;
  const std::uint64_t start = offset - fileOffset_;
  return start <= size_ && length <= size_ - start;
}

void MappedView::PrefetchByte(std::uint64_t offset) const {
  if (Covers(offset, 1)) __builtin_prefetch(data_ + (offset - fileOffset_));
}

MappedView FileMapping::ViewCovering(std::uint64_t offset, std::uint64_t length) const {
  const std::uint64_t misalign = offset % MappingGranularity();
  if (length > std::numeric_limits<std::uint64_t>::max() - misalign) return MappedView();
  return View(offset - misalign, length + misalign);
}

}  // namespace quorvan::platform
