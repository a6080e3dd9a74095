#include "mxf/metadata/metadata_set.h"

#include <algorithm>
#include <cstring>

namespace quorvan {
namespace {
// Largest accepted value of a set, in bytes. The sets of real clips are far smaller; a larger
// length is damaged.
constexpr std::uint64_t kLargestSet = std::uint64_t{256} << 20;
}  // namespace

std::optional<MetadataSet> MetadataSet::Read(platform::File* file, std::uint64_t length) {
  MetadataSet set;
  set.fileOffset_ = file->Position();
  const std::uint64_t fileSize = file->Size().value_or(0);
  const std::uint64_t rest = fileSize > set.fileOffset_ ? fileSize - set.fileOffset_ : 0;
  const std::uint64_t wanted = std::min<std::uint64_t>(length & 0xFFFFFFFF, rest);
  if (wanted > kLargestSet) return std::nullopt;
  const auto size = static_cast<std::size_t>(wanted);
  set.bytes_.reset(new std::uint8_t[std::max<std::size_t>(size, 1)]);
  set.size_ = file->Read(set.bytes_.get(), size);
  return set;
}

BatchHeader ReadBatchHeader(std::span<const std::uint8_t> value) {
  if (value.size() < kBatchHeaderBytes) return {0, 0};
  return {ReadBe32(value.data()), ReadBe32(value.data() + 4)};
}

const std::uint8_t* LabelAt(std::span<const std::uint8_t> value, std::size_t start,
                            std::size_t step, std::size_t index) {
  constexpr std::size_t labelBytes = 16;
  if (value.size() < start + labelBytes) return nullptr;
  if (index > (value.size() - start - labelBytes) / step) return nullptr;
  return value.data() + start + index * step;
}

bool EqualsLabel(std::span<const std::uint8_t> value, const KlvKey& label) {
  return value.size() >= label.size() && std::memcmp(value.data(), label.data(), 16) == 0;
}

}  // namespace quorvan
