#include "rewrite/row_gaps.h"

#include <algorithm>
#include <new>

namespace quorvan {
namespace {

constexpr std::uint8_t kNoKind = 255;
constexpr std::size_t kMostKinds = 64;
constexpr std::size_t kMostGapBytes = 64 * 1024;  // of all gaps of a row together

}  // namespace

bool RowGaps::Allocate(std::uint32_t frames) {
  kindOfFrame_.reset(new (std::nothrow) std::uint8_t[std::size_t{frames} + 1]);
  if (kindOfFrame_ == nullptr) return false;
  std::fill_n(kindOfFrame_.get(), frames, kNoKind);
  kinds_.reserve(kMostKinds);
  return true;
}

void RowGaps::Keep(std::uint32_t frame, std::span<const std::uint32_t> tracks,
                   std::span<const ElementValue> values, const RowReader& reader) {
  gaps_.clear();
  for (std::size_t i = 1; i < values.size(); ++i) {
    if (tracks[i] != tracks[i - 1] + 1) continue;
    const std::uint64_t start = values[i - 1].end();
    if (values[i].fileOffset() < start) return;
    const std::uint64_t bytes = values[i].fileOffset() - start;
    const std::uint8_t* gap = reader.At(start, bytes);
    if (gap == nullptr || bytes > kMostGapBytes - gaps_.size()) return;
    gaps_.insert(gaps_.end(), gap, gap + bytes);
  }
  if (lastKind_ >= kinds_.size() || kinds_[lastKind_] != gaps_) {
    lastKind_ =
        static_cast<std::size_t>(std::find(kinds_.begin(), kinds_.end(), gaps_) - kinds_.begin());
    if (lastKind_ == kMostKinds) return;
    if (lastKind_ == kinds_.size()) kinds_.push_back(gaps_);
  }
  kindOfFrame_[frame] = static_cast<std::uint8_t>(lastKind_);
}

const std::uint8_t* RowGaps::Of(std::uint32_t frame) const {
  const std::uint8_t kind = kindOfFrame_[frame];
  return kind == kNoKind ? nullptr : kinds_[kind].data();
}

}  // namespace quorvan
