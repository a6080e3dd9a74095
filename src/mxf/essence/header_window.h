// Reads the headers of KLVs for a walk that goes through a file from front to back.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/file.h"

namespace quorvan {

// Holds a stretch of the file. While the file is in memory, a read brings a few hundred bytes: they
// hold all headers in front of a picture. A file that is not in memory is cold: a seek to each
// header would take longer than reading everything, so a read then brings `coldBytes`.
class HeaderWindow {
 public:
  // Bytes that a walk reads at a time from a cold file whose headers nobody prefetches.
  static constexpr std::size_t kBlockBytes = 4 << 20;

  // `file` must outlive the object. Throws std::bad_alloc.
  HeaderWindow(const platform::File& file, std::size_t coldBytes);

  // The kMostKlvHeaderBytes bytes at the file offset `offset`; fewer at the end of the file, when a
  // read fails or is stopped. Valid until the next call. Throws nothing.
  std::span<const std::uint8_t> At(std::uint64_t offset);

  // True when a read had to wait for the medium, because the file was not in memory.
  bool IsCold() const { return cold_; }

 private:
  void Fill(std::uint64_t offset);

  const platform::File& file_;
  std::vector<std::uint8_t> bytes_;
  std::uint64_t start_ = 0;  // file offset of the window
  std::size_t held_ = 0;     // valid bytes of the window
  bool cold_ = false;
};

}  // namespace quorvan
