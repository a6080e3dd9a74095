#include "platform/mapping.h"

#include <sys/mman.h>
#include <unistd.h>

#include <limits>

#include "platform/fault_seam.h"

namespace quorvan::platform {

std::uint64_t MappingGranularity() {
  static const auto pageSize = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  return pageSize;
}

void MappedView::Unmap() {
  if (data_ != nullptr) munmap(const_cast<std::uint8_t*>(data_), size_);
  data_ = nullptr;
  size_ = 0;
  fileOffset_ = 0;
}

void MappedView::ExpectScattered() const {
  if (data_ != nullptr) madvise(const_cast<std::uint8_t*>(data_), size_, MADV_RANDOM);
}

FileMapping FileMapping::Create(const File& file, std::u16string_view) {
  FileMapping mapping;
  const auto size = file.Size();
  if (!size || *size == 0) return mapping;
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
  void* data = mmap(nullptr, static_cast<std::size_t>(length), PROT_READ, MAP_SHARED,
                    static_cast<int>(file_->NativeHandle()), static_cast<off_t>(offset));
  if (data == MAP_FAILED) return view;
  view.data_ = static_cast<const std::uint8_t*>(data);
  view.size_ = static_cast<std::size_t>(length);
  view.fileOffset_ = offset;
  return view;
}

}  // namespace quorvan::platform
