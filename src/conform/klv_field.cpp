#include "conform/klv_field.h"

#include <algorithm>
#include <array>
#include <span>

namespace quorvan {
namespace {

constexpr std::uint64_t kLongestShortLength = 0xFFFFFF;
constexpr std::uint8_t kEightByteLength = 0x87;
constexpr KlvKey kWrittenFill = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x02,
                                 0x03, 0x01, 0x02, 0x10, 0x01, 0x00, 0x00, 0x00};

// Takes the header `head`, whose bytes stand at `offset`, apart. False as ReadKlvSpan.
bool TakeApart(std::span<const std::uint8_t> head, std::uint64_t offset, std::uint64_t end,
               KlvSpan* span) {
  std::uint64_t length = 0;
  const std::size_t headBytes = ReadKlvHeader(head, &length);
  if (headBytes == 0 || length > end - offset - headBytes) return false;
  std::copy_n(head.begin(), kKlvKeyBytes, span->key.begin());
  span->offset = offset;
  span->valueOffset = offset + headBytes;
  span->length = length;
  return true;
}

}  // namespace

bool ReadKlvSpan(HeaderWindow* window, std::uint64_t offset, std::uint64_t end, KlvSpan* span) {
  if (offset >= end) return false;
  const auto held = window->At(offset);
  return TakeApart(
      held.first(static_cast<std::size_t>(std::min<std::uint64_t>(held.size(), end - offset))),
      offset, end, span);
}

bool ReadKlvSpan(const platform::File& file, std::uint64_t offset, std::uint64_t end,
                 KlvSpan* span) {
  std::array<std::uint8_t, kMostKlvHeaderBytes> head;
  if (offset >= end) return false;
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(head.size(), end - offset));
  const std::size_t got = file.ReadAt(offset, head.data(), wanted);
  return TakeApart(std::span(head).first(got), offset, end, span);
}

std::uint64_t WrittenHeaderBytes(std::uint64_t length) {
  return kKlvKeyBytes + (length <= kLongestShortLength ? 4 : 8);
}

void AppendKlvHeader(const KlvKey& key, std::uint64_t length, std::vector<std::uint8_t>* out) {
  out->insert(out->end(), key.begin(), key.end());
  const bool threeBytes = length <= kLongestShortLength;
  out->push_back(threeBytes ? kFourByteLength : kEightByteLength);
  for (int shift = threeBytes ? 16 : 48; shift >= 0; shift -= 8) {
    out->push_back(static_cast<std::uint8_t>(length >> shift));
  }
}

void AppendFill(std::uint64_t bytes, std::vector<std::uint8_t>* out) {
  if (bytes < kSmallestFill) return;
  const std::uint64_t header = WrittenHeaderBytes(bytes - kSmallestFill);
  AppendKlvHeader(kWrittenFill, bytes - header, out);
  out->resize(out->size() + static_cast<std::size_t>(bytes - header));
}

std::uint64_t RoundedWithFill(std::uint64_t bytes, std::uint64_t grid) {
  const std::uint64_t rest = bytes % grid;
  if (rest == 0) return bytes;
  std::uint64_t rounded = bytes + (grid - rest);
  while (rounded - bytes < kSmallestFill)
    rounded += grid;
  return rounded;
}

void PutBe32(std::uint8_t* p, std::uint32_t value) {
  for (int i = 0; i < 4; ++i)
    p[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

void PutBe64(std::uint8_t* p, std::uint64_t value) {
  PutBe32(p, static_cast<std::uint32_t>(value >> 32));
  PutBe32(p + 4, static_cast<std::uint32_t>(value));
}

}  // namespace quorvan
