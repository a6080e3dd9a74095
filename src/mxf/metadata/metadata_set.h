// Reading one set of the header metadata whole.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "mxf/metadata/klv.h"
#include "platform/file.h"

namespace quorvan {

// The value of a set in memory.
class MetadataSet {
 public:
  // Reads `length` bytes (its low 32 bits) at the file pointer, fewer where the file ends, and
  // leaves the pointer behind them. Nothing when they are too many for a set. Throws when memory is
  // out.
  static std::optional<MetadataSet> Read(platform::File* file, std::uint64_t length);

  std::span<const std::uint8_t> value() const { return {bytes_.get(), size_}; }

  // File offset of the value's first byte.
  std::uint64_t fileOffset() const { return fileOffset_; }

 private:
  std::unique_ptr<std::uint8_t[]> bytes_;
  std::size_t size_ = 0;
  std::uint64_t fileOffset_ = 0;
};

// A batch: item count and item size in front of the items (SMPTE 377).
struct BatchHeader {
  std::uint32_t count;
  std::uint32_t itemSize;
};
inline constexpr std::size_t kBatchHeaderBytes = 8;

// Both zero for a value too short to hold them.
BatchHeader ReadBatchHeader(std::span<const std::uint8_t> value);

// Label `index` of a value that holds labels from `start` on; null when it does not lie in it
// whole.
const std::uint8_t* LabelAt(std::span<const std::uint8_t> value, std::size_t start,
                            std::size_t step, std::size_t index);

// True when `value` begins with the 16 bytes of `label`.
bool EqualsLabel(std::span<const std::uint8_t> value, const KlvKey& label);

// True when the readers can work with this handle.
inline bool IsUsable(const platform::File* file) {
  return file != nullptr && file->IsOpen();
}

}  // namespace quorvan
