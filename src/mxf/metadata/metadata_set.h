// Reads one set of the header metadata into memory, and takes batches and labels out of values.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "mxf/metadata/klv.h"
#include "platform/file.h"

namespace quorvan {

// The value of one set of the header metadata, in memory.
class MetadataSet {
 public:
  // Reads the value at the file pointer and leaves the pointer behind it. Its length in bytes is
  // the low 32 bits of `length`; the value is shorter when the file ends early or a read fails.
  // Returns nothing, with the pointer unchanged, when the value is longer than 256 MiB; the sets of
  // real clips are far shorter. Throws std::bad_alloc when memory is out.
  static std::optional<MetadataSet> Read(platform::File* file, std::uint64_t length);

  std::span<const std::uint8_t> value() const { return {bytes_.get(), size_}; }

  // File offset of the value's first byte.
  std::uint64_t fileOffset() const { return fileOffset_; }

 private:
  std::unique_ptr<std::uint8_t[]> bytes_;
  std::size_t size_ = 0;
  std::uint64_t fileOffset_ = 0;
};

// The two numbers in front of the items of a batch (SMPTE 377).
struct BatchHeader {
  std::uint32_t count;     // number of items
  std::uint32_t itemSize;  // bytes of each item
};
inline constexpr std::size_t kBatchHeaderBytes = 8;

// Reads the batch header at the start of `value`. Both numbers are 0 when `value` has fewer than 8
// bytes.
BatchHeader ReadBatchHeader(std::span<const std::uint8_t> value);

// The 16 bytes of the label with the zero-based number `index` in `value`, whose first label is at
// byte `start` and whose labels begin `step` bytes apart. Null when the label does not lie in
// `value` whole.
const std::uint8_t* LabelAt(std::span<const std::uint8_t> value, std::size_t start,
                            std::size_t step, std::size_t index);

// True when `value` begins with the 16 bytes of `label`.
bool EqualsLabel(std::span<const std::uint8_t> value, const KlvKey& label);

// True when `file` is an open file, so that a reader can read it.
inline bool IsUsable(const platform::File* file) {
  return file != nullptr && file->IsOpen();
}

}  // namespace quorvan
