#include "mxf/metadata/klv.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace quorvan {
namespace {

constexpr std::uint8_t kEightByteLength = 0x87;
constexpr std::size_t kLongestHeader = kKlvKeyBytes + 8;

// Bytes that a search in a block skips between two checks for a stop request.
constexpr std::size_t kBytesPerLook = std::size_t{1} << 20;

// Number of bytes of the length field that starts with `first`; 0 for a form that the searches do
// not follow.
std::size_t LengthFieldBytes(std::uint8_t first) {
  if (first == kFourByteLength) return 4;
  if (first == kEightByteLength) return 8;
  return 0;
}

std::uint64_t LengthValue(const std::uint8_t* field, std::size_t fieldBytes) {
  if (fieldBytes == 4) return ReadBe24(field + 1);
  return ReadBe64(field) & 0x00FFFFFFFFFFFFFF;
}

bool StartsWithPrefix(const std::uint8_t* p) {
  return std::memcmp(p, kUlPrefix.data(), kUlPrefix.size()) == 0;
}

// Offset of the first UL prefix in the `length` bytes at `data`, where a prefix that the end cuts
// off counts too; `length` when there is none.
std::size_t NextPrefix(const std::uint8_t* data, std::size_t length) {
  std::size_t at = 0;
  while (at < length) {
    const void* hit = std::memchr(data + at, kUlPrefix[0], length - at);
    if (hit == nullptr) return length;
    at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(hit) - data);
    const std::size_t compared = std::min(kUlPrefix.size(), length - at);
    if (std::memcmp(data + at, kUlPrefix.data(), compared) == 0) return at;
    ++at;
  }
  return length;
}

// A window over the file, so that a search does not need a system call for each KLV or byte. Each
// new window is twice as long as the one before, up to the size of the buffer.
class FileWindow {
 public:
  explicit FileWindow(const platform::File* file) : file_(file) {}

  // The bytes of the file from `offset` on: at least `wanted` of them, fewer at the end of the
  // file.
  std::span<const std::uint8_t> At(std::uint64_t offset, std::size_t wanted) {
    if (offset < start_ || offset - start_ > filled_ || filled_ - (offset - start_) < wanted) {
      start_ = offset;
      filled_ = file_->ReadAt(offset, buffer_.data(), std::max(wanted, nextFill_));
      nextFill_ = std::min(nextFill_ * 2, buffer_.size());
    }
    const auto skipped = static_cast<std::size_t>(offset - start_);
    return std::span<const std::uint8_t>(buffer_.data() + skipped, filled_ - skipped);
  }

 private:
  const platform::File* file_;
  std::array<std::uint8_t, 32768> buffer_;
  std::uint64_t start_ = 0;
  std::size_t filled_ = 0;
  std::size_t nextFill_ = 256;
};

bool IsBefore(std::uint64_t position, std::uint64_t limit) {
  return static_cast<std::int64_t>(position) < static_cast<std::int64_t>(limit);
}

}  // namespace

bool KeyMatches(const std::uint8_t* candidate, const KlvKey& wanted) {
  for (std::size_t i = 0; i < kKlvKeyBytes; ++i) {
    if (wanted[i] != 0xFF && wanted[i] != candidate[i]) return false;
  }
  return true;
}

bool IsContainerElement(const std::uint8_t* key) {
  constexpr std::array<std::uint8_t, 4> kGenericContainer = {0x0D, 0x01, 0x03, 0x01};
  return std::equal(kGenericContainer.begin(), kGenericContainer.end(), key + 8);
}

int FindKlvKey(platform::File* file, const KlvKey& key, std::uint64_t startOffset,
               std::uint64_t limitOffset, std::uint64_t* outLength) {
  if (outLength != nullptr) *outLength = 0;
  if (file == nullptr || !file->IsOpen() || !file->Seek(startOffset)) return 0;

  FileWindow window(file);
  std::uint64_t position = startOffset;
  while (IsBefore(position, limitOffset) && file->Seek(position)) {
    const auto bytes = window.At(position, kLongestHeader);
    if (bytes.size() < kKlvKeyBytes) break;
    if (!StartsWithPrefix(bytes.data())) {
      position += 1 + NextPrefix(bytes.data() + 1, bytes.size() - 1);
      continue;
    }
    const std::uint8_t form = bytes.size() > kKlvKeyBytes ? bytes[kKlvKeyBytes] : std::uint8_t{0};
    const std::size_t fieldBytes = LengthFieldBytes(form);
    if (fieldBytes == 0) {
      position += kKlvKeyBytes;
      continue;
    }
    if (bytes.size() < kKlvKeyBytes + fieldBytes) break;
    const std::uint64_t length = LengthValue(bytes.data() + kKlvKeyBytes, fieldBytes);
    const std::uint64_t value = position + kKlvKeyBytes + fieldBytes;
    if (KeyMatches(bytes.data(), key)) {
      if (outLength != nullptr) *outLength = length;
      return file->Seek(value) ? 1 : 0;
    }
    position = value + length;  // position < 2^63 and length < 2^56
  }
  return 0;
}

int FindKlvKeyInBuffer(const KlvKey& key, const std::uint8_t* buffer, std::size_t bufferLength,
                       std::uint64_t* outValueOffset, std::uint64_t* outLength,
                       const platform::File* source) {
  *outValueOffset = 0;
  *outLength = 0;
  if (bufferLength < kKlvKeyBytes + 4) return 0;

  std::uint64_t position = 0;
  while (position < bufferLength && bufferLength - position >= kKlvKeyBytes + 4) {
    if (source != nullptr && source->StopAsked()) break;
    const std::uint8_t* candidate = buffer + position;
    const auto rest = static_cast<std::size_t>(bufferLength - position);
    if (!StartsWithPrefix(candidate)) {
      position += 1 + NextPrefix(candidate + 1, std::min(rest - 1, kBytesPerLook));
      continue;
    }
    const std::size_t fieldBytes = LengthFieldBytes(candidate[kKlvKeyBytes]);
    if (fieldBytes == 0) {
      position += kKlvKeyBytes;
      continue;
    }
    if (rest < kKlvKeyBytes + fieldBytes) break;
    const std::uint64_t length = LengthValue(candidate + kKlvKeyBytes, fieldBytes);
    const std::uint64_t value = position + kKlvKeyBytes + fieldBytes;
    if (KeyMatches(candidate, key)) {
      *outValueOffset = value;
      *outLength = length;
      return 1;
    }
    position = value + length;
  }
  *outValueOffset = std::max<std::uint64_t>(position, bufferLength);
  return 0;
}

std::size_t ReadKlvHeader(std::span<const std::uint8_t> bytes, std::uint64_t* length) {
  constexpr std::uint8_t longForm = 0x80;
  constexpr std::size_t mostLengthBytes = kMostKlvHeaderBytes - kKlvKeyBytes - 1;
  if (bytes.size() <= kKlvKeyBytes || !StartsWithPrefix(bytes.data())) return 0;
  const std::uint8_t first = bytes[kKlvKeyBytes];
  *length = first;
  if (first < longForm) return kKlvKeyBytes + 1;
  const std::size_t lengthBytes = first - longForm;
  const std::size_t header = kKlvKeyBytes + 1 + lengthBytes;
  if (lengthBytes == 0 || lengthBytes > mostLengthBytes || bytes.size() < header) return 0;
  *length = 0;
  for (std::size_t i = kKlvKeyBytes + 1; i < header; ++i)
    *length = *length << 8 | bytes[i];
  return header;
}

bool LocalSetWalk::Next(LocalItem* item) {
  constexpr std::size_t kItemHeader = 4;
  if (next_ >= set_.size() || set_.size() - next_ < kItemHeader) return false;
  const std::uint8_t* header = set_.data() + next_;
  const std::size_t length = ReadBe16(header + 2);
  valueOffset_ = next_ + kItemHeader;
  if (length > set_.size() - valueOffset_) return false;
  item->tag = ReadBe16(header);
  item->value = set_.subspan(valueOffset_, length);
  next_ = valueOffset_ + length;
  return true;
}

}  // namespace quorvan
