#include "mxf/row_reader.h"

#include <algorithm>
#include <new>

namespace quorvan {
namespace {

// What stands in front of a picture, with the picture's own header, on the usual grid.
constexpr std::size_t kHeadBytes = 640;

// More than any grid puts between the tracks of a frame.
constexpr std::uint64_t kMostRowBytes = std::uint64_t{1} << 24;

// Frames that are asked for ahead: enough to keep the queue of a disk full.
constexpr std::uint32_t kFramesAhead = 64;

}  // namespace

const std::uint8_t* RowReader::Window::At(std::uint64_t fileOffset, std::uint64_t length) const {
  if (fileOffset < offset || fileOffset - offset > held) return nullptr;
  return length <= held - (fileOffset - offset) ? bytes.get() + (fileOffset - offset) : nullptr;
}

bool RowReader::Allocate() {
  std::uint64_t largest = 0;
  for (std::uint32_t i = next_; i < end_; ++i) {
    Row row;
    if (Locate((*mxf_.indexEntries)[i], &row)) largest = std::max(largest, row.bytes);
  }
  head_.bytes.reset(new (std::nothrow) std::uint8_t[kHeadBytes]);
  row_.bytes.reset(new (std::nothrow) std::uint8_t[static_cast<std::size_t>(largest) + 1]);
  return head_.bytes != nullptr && row_.bytes != nullptr;
}

bool RowReader::Locate(const INDEX_ENTRY_ARRAY& entry, Row* row) const {
  if (tracks_.empty()) return false;
  const auto first = LocateElementValue(mxf_, entry, tracks_.front());
  const auto last = LocateElementValue(mxf_, entry, tracks_.back());
  if (!first || !last || last->end() < first->keyOffset()) return false;
  *row = {first->keyOffset(), last->end() - first->keyOffset()};
  return row->bytes <= kMostRowBytes;
}

void RowReader::Prefetch(std::uint32_t entryIndex) {
  const auto reach = static_cast<std::uint32_t>(
      std::min<std::uint64_t>(end_, std::uint64_t{entryIndex} + kFramesAhead));
  for (next_ = std::max(next_, entryIndex); next_ < reach; ++next_) {
    const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[next_];
    Row row;
    if (!Locate(entry, &row)) continue;
    clip_.Prefetch(entry.fileOffset, kHeadBytes);
    clip_.Prefetch(row.start, row.bytes);
  }
}

// The first read that would have to wait shows that the clip lies on the medium: from then on what
// is going to be read is asked for ahead. A clip in memory is spared the questions.
bool RowReader::Fill(Window* window, std::uint64_t offset, std::uint64_t bytes) {
  const auto wanted = static_cast<std::size_t>(bytes);
  window->offset = offset;
  window->held = wanted;
  if (!cold_ && clip_.ReadCachedAt(offset, window->bytes.get(), wanted)) return true;
  cold_ = true;
  window->held = clip_.ReadAt(offset, window->bytes.get(), wanted);
  return window->held == wanted;
}

const std::uint8_t* RowReader::At(std::uint64_t fileOffset, std::uint64_t length) const {
  return row_.At(fileOffset, length);
}

// The header at `offset`, of which the frame holds `wanted` bytes: the row is read whole, anything
// else only as far as the headers of a frame usually lie together. Null when it does not come.
const std::uint8_t* RowReader::HeaderAt(std::uint64_t offset, std::size_t wanted, const Row& row,
                                        std::uint64_t rest) {
  const bool inRow = offset >= row.start && offset - row.start < row.bytes;
  const std::uint64_t rowRest = inRow ? row.bytes - (offset - row.start) : 0;
  const bool whole = rowRest >= wanted;
  Window* window = whole ? &row_ : &head_;
  if (const std::uint8_t* header = window->At(offset, wanted)) return header;
  failed_ = !Fill(window, offset, whole ? rowRest : std::min<std::uint64_t>(rest, kHeadBytes));
  return failed_ ? nullptr : window->At(offset, wanted);
}

ElementState RowReader::Read(std::uint32_t entryIndex) {
  const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[entryIndex];
  const std::uint64_t start = entry.fileOffset;
  const std::uint64_t end = FrameEnd(mxf_, entryIndex);
  const std::uint32_t wanted = TracksUpToLast(tracks_);
  head_.held = row_.held = 0;
  failed_ = false;
  if (wanted == 0) return ElementState::kSound;
  Row row;
  if (wanted > kMaxTracks || end < start || !Locate(entry, &row)) return ElementState::kMisplaced;
  if (cold_) Prefetch(entryIndex);

  FrameElements elements;
  for (std::uint64_t at = start; elements.count < wanted && at < end;) {
    const std::uint64_t rest = end - at;
    const auto held = static_cast<std::size_t>(std::min<std::uint64_t>(rest, kMostHeaderBytes));
    const std::uint8_t* key = HeaderAt(at, held, row, rest);
    if (key == nullptr) return failed_ ? ElementState::kFault : ElementState::kMisplaced;
    const auto step = TakeElement(key, at, rest, &elements);
    if (!step) return ElementState::kMisplaced;
    at += *step;
  }
  const bool sound = elements.count == wanted &&
                     AreWhereTheIndexSays(elements, mxf_, entry, tracks_) &&
                     row_.At(row.start, row.bytes) != nullptr;
  return sound ? ElementState::kSound : ElementState::kMisplaced;
}

}  // namespace quorvan
