#include "platform/mapping.h"

#include <sys/mman.h>
#include <unistd.h>

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

std::optional<FileMapping::SystemMapping> FileMapping::MakeSystemMapping(const File&,
                                                                         std::u16string_view) {
  return SystemMapping(nullptr, nullptr);
}

const void* FileMapping::Map(std::uint64_t offset, std::size_t length) const {
  void* data = mmap(nullptr, length, PROT_READ, MAP_SHARED, static_cast<int>(file_->NativeHandle()),
                    static_cast<off_t>(offset));
  return data == MAP_FAILED ? nullptr : data;
}

}  // namespace quorvan::platform
