#include "platform/mapping.h"

#include <limits>
#include <utility>

#include "platform/fault_seam.h"

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

FileMapping FileMapping::Create(const File& file, std::u16string_view name) {
  FileMapping mapping;
  const auto size = file.Size();
  if (!size || *size == 0) return mapping;
  auto system = MakeSystemMapping(file, name);
  if (!system) return mapping;
  mapping.system_ = std::move(*system);
  mapping.file_ = &file;
  mapping.size_ = *size;
  return mapping;
}

MappedView FileMapping::View(std::uint64_t offset, std::uint64_t length) const {
  MappedView view;
  if (!IsOpen() || length == 0 || offset % MappingGranularity() != 0) return view;
  const auto size = file_->Size();
  if (!size || offset > *size || length > *size - offset) return view;
  if (length > std::numeric_limits<std::size_t>::max()) return view;
  if (OutcomeOf(SystemCall::kMap) == CallOutcome::kFails) return view;
  const void* data = Map(offset, static_cast<std::size_t>(length));
  if (data == nullptr) return view;
  view.data_ = static_cast<const std::uint8_t*>(data);
  view.size_ = static_cast<std::size_t>(length);
  view.fileOffset_ = offset;
  return view;
}

MappedView FileMapping::ViewCovering(std::uint64_t offset, std::uint64_t length) const {
  const std::uint64_t misalign = offset % MappingGranularity();
  if (length > std::numeric_limits<std::uint64_t>::max() - misalign) return MappedView();
  return View(offset - misalign, length + misalign);
}

}  // namespace quorvan::platform
