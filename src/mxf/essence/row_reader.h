// The audio of a frame, read with plain file access: from what stands in front of the picture and
// from the row of audio elements, in two reads, and proven on the way.

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

class RowReader {
 public:
  // For `tracks`, from 0 and ascending, in the `frames` frames from `firstEntry` on, which are read
  // in that order. All of it must outlive the reader.
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

  // Takes its memory, for the rows of the last `rowsKept` frames, at least 1. False when there is
  // none.
  bool Allocate(std::uint32_t rowsKept = 1);

  // Starts again at an earlier frame.
  void Rewind(std::uint32_t entryIndex) { ahead_.Rewind(entryIndex); }

  // From now on looks at the clip through `view`, which covers it and outlives the reader, and
  // reads nothing by itself. What At gives lies in the view then: touching it can fault.
  void ReadThrough(const platform::MappedView* view) { view_ = view; }

  // Reads the frame of `entryIndex` and proves its values as ProveElements does.
  ElementState Read(std::uint32_t entryIndex);

  // The `length` bytes at `fileOffset`, when they stand in the row that was read last; else null.
  // They stay there until the row is no longer kept.
  const std::uint8_t* At(std::uint64_t fileOffset, std::uint64_t length) const;

  // Asks for the frames behind `entryIndex`, as Read does, for those who come back to write them.
  void Ask(std::uint32_t entryIndex) { ahead_.Ask(entryIndex); }

 private:
  // Bytes of the file that were read at one go.
  struct Window {
    std::uint64_t offset = 0;
    std::size_t held = 0;
    std::uint8_t* bytes = nullptr;

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
  bool failed_ = false;
  std::unique_ptr<std::uint8_t[]> headBytes_;
  std::unique_ptr<std::uint8_t[]> rowBytes_;  // of the rows that are kept
  std::size_t largestRow_ = 0;
  std::uint32_t rowsKept_ = 1;
  Window head_;
  Window row_;
};

}  // namespace quorvan
