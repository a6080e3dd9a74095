#include "mxf/essence/header_window.h"

#include <algorithm>

#include "mxf/essence/read_ahead.h"
#include "mxf/metadata/klv.h"

namespace quorvan {

HeaderWindow::HeaderWindow(const platform::File& file, std::size_t coldBytes)
    : file_(file), bytes_(std::max(coldBytes, ReadAhead::kHeadBytes)) {}

std::span<const std::uint8_t> HeaderWindow::At(std::uint64_t offset) {
  const bool isHeld = offset >= start_ && offset - start_ <= held_ &&
                      held_ - (offset - start_) >= kMostKlvHeaderBytes;
  if (!isHeld) Fill(offset);
  const auto place = static_cast<std::size_t>(offset - start_);
  return std::span(bytes_).subspan(place, std::min(held_ - place, kMostKlvHeaderBytes));
}

void HeaderWindow::Fill(std::uint64_t offset) {
  start_ = offset;
  held_ = ReadAhead::kHeadBytes;
  if (!cold_ && file_.ReadCachedAt(offset, bytes_.data(), held_)) return;
  cold_ = true;
  held_ = file_.ReadAt(offset, bytes_.data(), bytes_.size());
}

}  // namespace quorvan
