// A file as memory, to be read: a mapping of the whole file, and views of stretches of it.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/file.h"

namespace quorvan::platform {

// Every view starts at a multiple of this number of bytes.
std::uint64_t MappingGranularity();

// A stretch of a file in memory, unmapped on destruction. Touching it can fault when the medium
// goes away or the file is cut short meanwhile: do it inside RunGuarded (fault_guard.h).
class MappedView {
 public:
  MappedView() = default;
  MappedView(MappedView&& other) noexcept;
  MappedView& operator=(MappedView&& other) noexcept;
  MappedView(const MappedView&) = delete;
  MappedView& operator=(const MappedView&) = delete;
  ~MappedView();

  bool IsMapped() const { return data_ != nullptr; }
  void Unmap();

  // First byte of the view; null when not mapped.
  const std::uint8_t* data() const { return data_; }

  // Length of the view in bytes.
  std::size_t size() const { return size_; }

  // File offset of the first byte.
  std::uint64_t fileOffset() const { return fileOffset_; }

  // Tells the system that it is touched here and there: nothing around is worth fetching.
  void ExpectScattered() const;

  // Lets the processor fetch the byte at file offset `offset`, if it is at hand, while something
  // else is being done. Never faults.
  void PrefetchByte(std::uint64_t offset) const;

  // True when the bytes [offset, offset + length) of the file lie in this view.
  bool Covers(std::uint64_t offset, std::uint64_t length) const;

 private:
  friend class FileMapping;

  const std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
  std::uint64_t fileOffset_ = 0;
};

// A mapping of a whole open file. The file must outlive it.
class FileMapping {
 public:
  // `name` is the name under which systems with named mappings know this one. Returns a mapping
  // that is not open when the file is empty or closed.
  static FileMapping Create(const File& file, std::u16string_view name);

  FileMapping() = default;

  bool IsOpen() const { return file_ != nullptr; }

  // Size of the file in bytes when the mapping was made.
  std::uint64_t size() const { return size_; }

  // A view of `length` bytes, at least 1, from `offset`, a multiple of MappingGranularity(). Not
  // mapped when the stretch does not lie in the file as it is now, or the system has no room.
  MappedView View(std::uint64_t offset, std::uint64_t length) const;

  // The smallest view that covers [offset, offset + length), whatever the granularity.
  MappedView ViewCovering(std::uint64_t offset, std::uint64_t length) const;

 private:
  const File* file_ = nullptr;
  std::uint64_t size_ = 0;
};

}  // namespace quorvan::platform
