#include "platform/mapping.h"

#include <windows.h>

#include <algorithm>
#include <array>

#include "platform/fault_seam.h"

namespace quorvan::platform {
namespace {

constexpr std::size_t kLongestName = 31;

// A read-only mapping of the whole file `file` with the name `name`, without a name when `name` is
// empty; null when the system has none. A name belongs to the first mapping that gets it: when
// another mapping has it already, which may stand for another file, the new mapping has no name.
HANDLE CreateMapping(HANDLE file, std::u16string_view name) {
  const auto create = [file](const wchar_t* called) {
    return CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, called);
  };
  if (name.empty()) return create(nullptr);
  std::array<wchar_t, kLongestName + 1> text{};
  std::copy_n(name.begin(), std::min(name.size(), kLongestName), text.begin());
  const HANDLE named = create(text.data());
  if (named != nullptr && GetLastError() != ERROR_ALREADY_EXISTS) return named;
  if (named != nullptr) CloseHandle(named);
  return create(nullptr);
}

}  // namespace

std::uint64_t MappingGranularity() {
  static const std::uint64_t granularity = [] {
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return info.dwAllocationGranularity;
  }();
  return granularity;
}

void MappedView::Unmap() {
  if (data_ != nullptr) UnmapViewOfFile(data_);
  data_ = nullptr;
  size_ = 0;
  fileOffset_ = 0;
}

// The system takes this for a file, when it is opened, and not for a view.
void MappedView::ExpectScattered() const {}

std::optional<FileMapping::SystemMapping> FileMapping::MakeSystemMapping(const File& file,
                                                                         std::u16string_view name) {
  if (OutcomeOf(SystemCall::kMap) == CallOutcome::kFails) return std::nullopt;
  const HANDLE created = CreateMapping(reinterpret_cast<HANDLE>(file.NativeHandle()), name);
  if (created == nullptr) return std::nullopt;
  return SystemMapping(created, [](void* handle) { CloseHandle(handle); });
}

const void* FileMapping::Map(std::uint64_t offset, std::size_t length) const {
  return MapViewOfFile(system_.get(), FILE_MAP_READ, static_cast<DWORD>(offset >> 32),
                       static_cast<DWORD>(offset), length);
}

}  // namespace quorvan::platform
