// Reads and proves the audio of a clip frame by frame.
//
// A row is the audio elements of one frame, in file order. When the first track is wanted, a frame
// usually takes two plain reads: the bytes in front of the picture, and the row. Every other header
// that lies outside both, such as that of a track in front of the row, takes a further read. The
// keys that were read prove the audio.

#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "mxf/essence/audio_element.h"
#include "mxf/essence/read_ahead.h"
#include "platform/file.h"
#include "platform/mapping.h"

namespace quorvan {

// Reads the rows of a range of frames, with plain reads or through a view. Functions throw nothing.
class RowReader {
 public:
  // Reads `tracks`, zero-based and ascending, in the `frames` frames from the frame `firstEntry`
  // (zero-based) on, in this order. `clip`, `mxf` and the memory of `tracks` must outlive the
  // reader.
  RowReader(const platform::File& clip, const MXF_BASE_INFO& mxf,
            std::span<const std::uint32_t> tracks, std::uint32_t firstEntry, std::uint32_t frames)
      : clip_(clip),
        mxf_(mxf),
        tracks_(tracks),
        firstEntry_(firstEntry),
        frames_(frames),
        ahead_(clip, mxf, tracks, firstEntry, frames) {}
  RowReader(const RowReader&) = delete;
  RowReader& operator=(const RowReader&) = delete;

  // Allocates the memory for the rows of the last `rowsKept` frames, at least 1. Must be called
  // before Read, except when the reader has a view. False when memory is out.
  bool Allocate(std::uint32_t rowsKept = 1);

  // Prefetches again from the frame `entryIndex` on. Call before frames are read or written again.
  void Rewind(std::uint32_t entryIndex) { ahead_.Rewind(entryIndex); }

  // From now on uses `view` in place of plain reads. `view` must cover the frames and outlive the
  // reader. The bytes that At returns then lie in the view, and reading them can fault.
  void ReadThrough(const platform::MappedView* view) { view_ = view; }

  // Reads the row of the frame `entryIndex` (zero-based, within the range) and proves its elements.
  // Returns what ProveElements returns. With plain reads, also returns kMisplaced when LocateRow
  // gives no row, and kFault when a read fails.
  ElementState Read(std::uint32_t entryIndex);

  // The `length` bytes of the clip at `fileOffset` when they lie in the row that was read last or,
  // with a view, anywhere in the view; else null. After a plain read the bytes stay valid until
  // `rowsKept` further frames are read.
  const std::uint8_t* At(std::uint64_t fileOffset, std::uint64_t length) const;

  // Prefetches the frame `entryIndex` and the frames behind it, as Read does, for a pass that
  // writes them.
  void Ask(std::uint32_t entryIndex) { ahead_.Ask(entryIndex); }

 private:
  // The bytes of the clip that one read has brought.
  struct Window {
    std::uint64_t offset = 0;  // file offset of the first byte
    std::size_t held = 0;      // valid bytes
    std::uint8_t* bytes = nullptr;

    // The `length` bytes of the clip at `fileOffset`; null when they are not all in the window.
    const std::uint8_t* At(std::uint64_t fileOffset, std::uint64_t length) const;
  };

  void PrefetchKeys(std::uint32_t entryIndex) const;
  bool Fill(Window* window, std::uint64_t offset, std::uint64_t bytes);
  const std::uint8_t* HeaderAt(std::uint64_t offset, std::size_t wanted, const ElementRow& row,
                               std::uint64_t rest);

  const platform::File& clip_;
  const MXF_BASE_INFO& mxf_;
  std::span<const std::uint32_t> tracks_;
  std::uint32_t firstEntry_;
  std::uint32_t frames_;
  ReadAhead ahead_;
  const platform::MappedView* view_ = nullptr;
  bool failed_ = false;  // a read for the current frame has failed
  std::unique_ptr<std::uint8_t[]> headBytes_;
  std::unique_ptr<std::uint8_t[]> rowBytes_;  // rowsKept_ rows of largestRow_ bytes each
  std::size_t largestRow_ = 0;                // bytes of the longest row of the range
  std::uint32_t rowsKept_ = 1;
  Window head_;  // headers outside the row
  Window row_;   // the row of the current frame
};

}  // namespace quorvan
