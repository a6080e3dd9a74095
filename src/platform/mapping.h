// Reading a file as memory: a mapping stands for the whole file, a view is a stretch of it in
// memory.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/file.h"

namespace quorvan::platform {

// The file offset at which a view starts is a multiple of this number of bytes: of a memory page,
// on Windows of 16 pages.
std::uint64_t MappingGranularity();

// A stretch of a file in memory, unmapped on destruction. Reading its bytes faults when the medium
// has gone away or the file has been cut short since, so read them only inside RunGuarded
// (fault_guard.h).
class MappedView {
 public:
  MappedView() = default;
  MappedView(MappedView&& other) noexcept;
  MappedView& operator=(MappedView&& other) noexcept;
  MappedView(const MappedView&) = delete;
  MappedView& operator=(const MappedView&) = delete;
  ~MappedView();

  bool IsMapped() const { return data_ != nullptr; }

  // Gives the memory back. The view is not mapped afterwards.
  void Unmap();

  // Address of the first byte; null when not mapped.
  const std::uint8_t* data() const { return data_; }

  // Length of the view in bytes; 0 when not mapped.
  std::size_t size() const { return size_; }

  // File offset of the first byte.
  std::uint64_t fileOffset() const { return fileOffset_; }

  // Tells the system that reads will be scattered over the view, so that it fetches nothing around
  // them.
  void ExpectScattered() const;

  // Asks the processor to load the byte at file offset `offset` into its cache, without waiting for
  // it. Does nothing when the byte is not in this view or not in memory. Never faults.
  void PrefetchByte(std::uint64_t offset) const;

  // True when the bytes [offset, offset + length) of the file lie in this view.
  bool Covers(std::uint64_t offset, std::uint64_t length) const;

 private:
  friend class FileMapping;

  const std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
  std::uint64_t fileOffset_ = 0;
};

// A mapping of a whole open file. The File must outlive the mapping and stay at its address.
class FileMapping {
 public:
  // Maps `file`. `name`, of up to 31 characters, is the name of the mapping on systems with named
  // mappings; POSIX has none. While another mapping has the name, the new mapping gets none.
  // Returns a mapping that is not open when the file is empty or closed, when its size cannot be
  // read, or when the system has no mapping.
  static FileMapping Create(const File& file, std::u16string_view name);

  FileMapping() = default;

  bool IsOpen() const { return file_ != nullptr; }

  // Size of the file in bytes when the mapping was created; 0 for a mapping that is not open.
  std::uint64_t size() const { return size_; }

  // A view of `length` bytes, at least 1, from the file offset `offset`, a multiple of
  // MappingGranularity(). Returns a view that is not mapped when the arguments are invalid, when
  // the stretch does not lie within the file as it is now, or when the system has no room for it.
  MappedView View(std::uint64_t offset, std::uint64_t length) const;

  // The smallest view that covers the bytes [offset, offset + length) of the file; `offset` may be
  // any file offset. Returns a view that is not mapped in the same cases as View.
  MappedView ViewCovering(std::uint64_t offset, std::uint64_t length) const;

 private:
  using SystemMapping = std::unique_ptr<void, void (*)(void*)>;

  // The system's own mapping of `file`, null where the system has no such thing. Nothing when it
  // refuses.
  static std::optional<SystemMapping> MakeSystemMapping(const File& file, std::u16string_view name);

  // Maps a stretch of the file into memory; null when the system refuses.
  const void* Map(std::uint64_t offset, std::size_t length) const;

  SystemMapping system_{nullptr, nullptr};  // the system's own mapping; null on POSIX
  const File* file_ = nullptr;
  std::uint64_t size_ = 0;
};

}  // namespace quorvan::platform
