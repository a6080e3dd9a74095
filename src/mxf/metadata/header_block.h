// Holds the header metadata of a clip in memory and finds the places in it that may be overwritten.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "mxf/records.h"
#include "platform/file.h"

namespace quorvan {

// The place in the file of a stretch of bytes within the value of an item. Only HeaderBlock makes a
// MetadataPlace, so code that takes one cannot be given any other place of the clip.
class MetadataPlace {
 public:
  // File offset of the first byte.
  std::uint64_t fileOffset() const { return fileOffset_; }

  // Length in bytes.
  std::size_t bytes() const { return bytes_; }

  friend bool operator==(const MetadataPlace&, const MetadataPlace&) = default;

 private:
  friend class HeaderBlock;
  MetadataPlace(std::uint64_t fileOffset, std::size_t bytes)
      : fileOffset_(fileOffset), bytes_(bytes) {}

  std::uint64_t fileOffset_;
  std::size_t bytes_;
};

// Results of HeaderBlock::Read.
enum class HeaderState {
  kRead,   // the header metadata is in memory
  kNone,   // the records give an empty range for the header metadata, or a range above 256 MiB
  kFault,  // the file cannot be read, or is shorter than the records say
};

// The header metadata of a clip, as one block of bytes in memory. It begins at the end of the
// header partition's pack, includes the fill there, and ends where HeaderByteCount says (SMPTE
// 377), but in any case before the next partition, the first frame and the end of the file.
class HeaderBlock {
 public:
  // Reads the header metadata of the clip `file`, which `mxf` describes completely, index included.
  // The block may be used only after kRead. Throws std::bad_alloc when memory is out or
  // platform::FitsMemory refuses. May be called again: with the same records, only the first call
  // allocates memory.
  HeaderState Read(const platform::File& file, const MXF_BASE_INFO& mxf);

  // Finds all places where `wanted`, which must not be empty, is the value of an item of a set or a
  // part of the value, and appends them to `*places` in ascending order. Places do not overlap.
  // Throws std::bad_alloc when memory is out.
  void FindInItems(std::span<const std::uint8_t> wanted, std::vector<MetadataPlace>* places) const;

  // The place of the first `bytes` bytes of the first item with `tag` in the set at `set`. Nothing
  // when the set does not lie in the block whole, or has no item with `tag`, or when its first item
  // with `tag` has fewer bytes.
  std::optional<MetadataPlace> FindItem(const METADATA_SET_PLACE& set, std::uint16_t tag,
                                        std::size_t bytes) const;

  // The value of the set at `set`, in this block's memory. Empty when the set does not lie in the
  // block whole.
  std::span<const std::uint8_t> SetAt(const METADATA_SET_PLACE& set) const;

  // The bytes at `place`, in this block's memory. Empty when the place does not lie in the block
  // whole.
  std::span<const std::uint8_t> At(const MetadataPlace& place) const;

  // Replaces the bytes at `place` in this block's memory by `bytes`; the file stays as it is. Does
  // nothing when `bytes` is not as long as the place, or the place does not lie in the block whole.
  void Put(const MetadataPlace& place, std::span<const std::uint8_t> bytes);

  // All bytes of the block.
  std::span<const std::uint8_t> Bytes() const { return {bytes_.get(), size_}; }

 private:
  template <typename Visit>
  void VisitItems(Visit visit) const;

  std::uint64_t start_ = 0;  // file offset of the first byte
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  std::unique_ptr<std::uint8_t[]> bytes_;
};

}  // namespace quorvan
