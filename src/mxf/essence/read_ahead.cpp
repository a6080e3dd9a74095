#include "mxf/essence/read_ahead.h"

#include <algorithm>

namespace quorvan {
namespace {

// Longest accepted row, in bytes. On every KAG grid the rows of real clips are far shorter.
constexpr std::uint64_t kMostRowBytes = std::uint64_t{1} << 24;

// Number of coming frames that are prefetched: enough to keep the queue of a disk full.
constexpr std::uint32_t kFramesAhead = 64;

// Frames between two tests whether the clip is in memory. One test costs as much as the proof of
// some frames.
constexpr std::uint32_t kFramesPerLook = 8;

}  // namespace

std::optional<ElementRow> LocateRow(const MXF_BASE_INFO& mxf, const INDEX_ENTRY_ARRAY& entry,
                                    std::span<const std::uint32_t> tracks) {
  if (tracks.empty()) return std::nullopt;
  const auto first = LocateElementValue(mxf, entry, tracks.front());
  const auto last = LocateElementValue(mxf, entry, tracks.back());
  if (!first || !last || last->end() < first->keyOffset()) return std::nullopt;
  const ElementRow row = {first->keyOffset(), last->end() - first->keyOffset()};
  return row.bytes <= kMostRowBytes ? std::optional(row) : std::nullopt;
}

void ReadAhead::Ask(std::uint32_t entryIndex) {
  if (!cold_) return;
  const auto reach = static_cast<std::uint32_t>(
      std::min<std::uint64_t>(end_, std::uint64_t{entryIndex} + kFramesAhead));
  for (next_ = std::max(next_, entryIndex); next_ < reach; ++next_) {
    const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[next_];
    const auto row = LocateRow(mxf_, entry, tracks_);
    if (!row) continue;
    clip_.Prefetch(entry.fileOffset, kHeadBytes);
    clip_.Prefetch(row->start, row->bytes);
  }
}

void ReadAhead::LookAndAsk(std::uint32_t entryIndex) {
  if (!cold_ && entryIndex >= nextLook_) {
    nextLook_ = entryIndex + kFramesPerLook;
    const auto row = LocateRow(mxf_, (*mxf_.indexEntries)[entryIndex], tracks_);
    std::uint8_t sample = 0;
    cold_ = row && !clip_.ReadCachedAt(row->start, &sample, 1);
  }
  Ask(entryIndex);
}

}  // namespace quorvan
