// The header metadata of a clip in memory, and the places in it that may be overwritten.

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

// Where some bytes of an item's value lie in the file. Only HeaderBlock makes one.
class MetadataPlace {
 public:
  std::uint64_t fileOffset() const { return fileOffset_; }
  std::size_t bytes() const { return bytes_; }

  friend bool operator==(const MetadataPlace&, const MetadataPlace&) = default;

 private:
  friend class HeaderBlock;
  MetadataPlace(std::uint64_t fileOffset, std::size_t bytes)
      : fileOffset_(fileOffset), bytes_(bytes) {}

  std::uint64_t fileOffset_;
  std::size_t bytes_;
};

enum class HeaderState {
  kRead,
  kNone,   // the records lead to no header metadata of believable size
  kFault,  // the file cannot be read
};

// The header metadata reaches from the end of the partition pack, over the fill behind it, as far
// as HeaderByteCount says (SMPTE 377), and in any case ends before the next partition and the first
// frame.
class HeaderBlock {
 public:
  // Reads the header metadata of the analysed clip in `file`. Throws when memory is out or would
  // be. May be called again: memory is taken only by the first call, as long as the records stay
  // what they are.
  HeaderState Read(const platform::File& file, const MXF_BASE_INFO& mxf);

  // All places where `wanted` is the value, or part of the value, of an item of a set. Appends them
  // to `*places`, in ascending order.
  void FindInItems(std::span<const std::uint8_t> wanted, std::vector<MetadataPlace>* places) const;

  // The first `bytes` bytes of the first item with `tag` in the set at `set`; nothing when the set
  // does not lie in the block whole, or has no such item or a shorter one.
  std::optional<MetadataPlace> FindItem(const METADATA_SET_PLACE& set, std::uint16_t tag,
                                        std::size_t bytes) const;

  // The value of a set; empty when it does not lie in the block whole.
  std::span<const std::uint8_t> SetAt(const METADATA_SET_PLACE& set) const;

  // What stands at a place of this clip's header metadata.
  std::span<const std::uint8_t> At(const MetadataPlace& place) const;

  // Puts `bytes` at a place of the block in memory, and nothing in the file.
  void Put(const MetadataPlace& place, std::span<const std::uint8_t> bytes);

  // All of the block.
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
