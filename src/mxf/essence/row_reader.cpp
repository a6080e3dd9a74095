#include "mxf/essence/row_reader.h"

#include <algorithm>
#include <new>

namespace quorvan {
namespace {

// Number of frames between the frame that is being proven and the frame whose keys are prefetched.
constexpr std::uint32_t kKeyFramesAhead = 2;

}  // namespace

const std::uint8_t* RowReader::Window::At(std::uint64_t fileOffset, std::uint64_t length) const {
  if (fileOffset < offset || fileOffset - offset > held) return nullptr;
  return length <= held - (fileOffset - offset) ? bytes + (fileOffset - offset) : nullptr;
}

bool RowReader::Allocate(std::uint32_t rowsKept) {
  std::uint64_t largest = 0;
  for (std::uint32_t i = 0; i < frames_; ++i) {
    const auto row = LocateRow(mxf_, (*mxf_.indexEntries)[firstEntry_ + i], tracks_);
    if (row) largest = std::max(largest, row->bytes);
  }
  largestRow_ = static_cast<std::size_t>(largest);
  rowsKept_ = rowsKept;
  headBytes_.reset(new (std::nothrow) std::uint8_t[ReadAhead::kHeadBytes]);
  rowBytes_.reset(new (std::nothrow) std::uint8_t[largestRow_ * rowsKept_ + 1]);
  head_.bytes = headBytes_.get();
  return headBytes_ != nullptr && rowBytes_ != nullptr;
}

// Reads `bytes` bytes at `offset` into `*window`. False when fewer bytes could be read. The first
// read that has to wait for the medium shows that the clip is not in memory: from then on the
// coming frames are prefetched. A cached clip needs no prefetch.
bool RowReader::Fill(Window* window, std::uint64_t offset, std::uint64_t bytes) {
  const auto wanted = static_cast<std::size_t>(bytes);
  window->offset = offset;
  window->held = wanted;
  if (!ahead_.IsCold() && clip_.ReadCachedAt(offset, window->bytes, wanted)) return true;
  ahead_.SetCold();
  window->held = clip_.ReadAt(offset, window->bytes, wanted);
  return window->held == wanted;
}

const std::uint8_t* RowReader::At(std::uint64_t fileOffset, std::uint64_t length) const {
  if (view_ != nullptr) {
    return view_->Covers(fileOffset, length) ? view_->data() + (fileOffset - view_->fileOffset())
                                             : nullptr;
  }
  return row_.At(fileOffset, length);
}

// The `wanted` bytes of the header at the file offset `offset`. `rest` is the number of bytes from
// `offset` to the end of the frame. Within the row, reads up to the end of the row. Elsewhere reads
// at most kHeadBytes, which usually hold all headers in front of a picture. Null when the read
// fails (`failed_` is then true) or yields fewer than `wanted` bytes.
const std::uint8_t* RowReader::HeaderAt(std::uint64_t offset, std::size_t wanted,
                                        const ElementRow& row, std::uint64_t rest) {
  const bool inRow = offset >= row.start && offset - row.start < row.bytes;
  const std::uint64_t rowRest = inRow ? row.bytes - (offset - row.start) : 0;
  const bool whole = rowRest >= wanted;
  Window* window = whole ? &row_ : &head_;
  if (const std::uint8_t* header = window->At(offset, wanted)) return header;
  failed_ =
      !Fill(window, offset, whole ? rowRest : std::min<std::uint64_t>(rest, ReadAhead::kHeadBytes));
  return failed_ ? nullptr : window->At(offset, wanted);
}

// Prefetches into the processor's cache the first key of a frame, the keys of its audio elements
// and the keys of the fill behind them. The keys lie far apart: without the prefetch, the proof
// would wait for the memory at each key.
void RowReader::PrefetchKeys(std::uint32_t entryIndex) const {
  if (entryIndex >= firstEntry_ + frames_) return;
  const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[entryIndex];
  view_->PrefetchByte(entry.fileOffset);
  for (const std::uint32_t track : tracks_) {
    if (const auto value = LocateElementValue(mxf_, entry, track)) {
      view_->PrefetchByte(value->keyOffset());
      view_->PrefetchByte(value->end());
    }
  }
}

ElementState RowReader::Read(std::uint32_t entryIndex) {
  if (view_ != nullptr) {
    ahead_.LookAndAsk(entryIndex);
    PrefetchKeys(entryIndex + kKeyFramesAhead);
    return ProveElements(*view_, mxf_, entryIndex, tracks_);
  }
  const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[entryIndex];
  const std::uint64_t start = entry.fileOffset;
  const std::uint64_t end = FrameEnd(mxf_, entryIndex);
  const std::uint32_t wanted = TracksUpToLast(tracks_);
  head_.held = row_.held = 0;
  row_.bytes = rowBytes_.get() + (entryIndex - firstEntry_) % rowsKept_ * largestRow_;
  failed_ = false;
  if (wanted == 0) return ElementState::kProven;
  const auto row = LocateRow(mxf_, entry, tracks_);
  if (wanted > kMaxTracks || end < start || !row) return ElementState::kMisplaced;
  ahead_.Ask(entryIndex);

  FrameElements elements;
  for (std::uint64_t at = start; elements.count < wanted && at < end;) {
    const std::uint64_t rest = end - at;
    const auto held = static_cast<std::size_t>(std::min<std::uint64_t>(rest, kMostKlvHeaderBytes));
    const std::uint8_t* key = HeaderAt(at, held, *row, rest);
    if (key == nullptr) return failed_ ? ElementState::kFault : ElementState::kMisplaced;
    const auto step = TakeElement(key, at, rest, &elements);
    if (!step) return ElementState::kMisplaced;
    at += *step;
  }
  if (elements.count != wanted || row_.At(row->start, row->bytes) == nullptr) {
    return ElementState::kMisplaced;
  }
  return CompareWithIndex(elements, mxf_, entry, tracks_);
}

}  // namespace quorvan
