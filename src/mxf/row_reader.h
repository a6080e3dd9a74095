// The audio of a frame, read with plain file access: from what stands in front of the picture and
// from the row of audio elements, in two reads, and proven on the way.

#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "mxf/audio_element.h"
#include "mxf/frame_walk.h"
#include "platform/file.h"

namespace quorvan {

class RowReader {
 public:
  // For `tracks`, from 0 and ascending, in the `frames` frames from `firstEntry` on, which are read
  // in that order. All of it must outlive the reader.
  RowReader(const platform::File& clip, const MXF_BASE_INFO& mxf,
            std::span<const std::uint32_t> tracks, std::uint32_t firstEntry, std::uint32_t frames)
      : clip_(clip), mxf_(mxf), tracks_(tracks), next_(firstEntry), end_(firstEntry + frames) {}
  RowReader(const RowReader&) = delete;
  RowReader& operator=(const RowReader&) = delete;

  // Takes its memory. False when there is none.
  bool Allocate();

  // Starts again at an earlier frame.
  void Rewind(std::uint32_t entryIndex) { next_ = entryIndex; }

  // Reads the frame of `entryIndex` and proves its values as ProveElements does.
  ElementState Read(std::uint32_t entryIndex);

  // The `length` bytes at `fileOffset`, when they stand in the row that was read last; else null.
  const std::uint8_t* At(std::uint64_t fileOffset, std::uint64_t length) const;

  // True when a read had to wait for the medium: the clip was not in memory.
  bool IsCold() const { return cold_; }

  // Asks for the frames behind `entryIndex` ahead of time, as far as that was not done already.
  void Prefetch(std::uint32_t entryIndex);

 private:
  // Bytes of the file that were read at one go.
  struct Window {
    std::uint64_t offset = 0;
    std::size_t held = 0;
    std::unique_ptr<std::uint8_t[]> bytes;

    const std::uint8_t* At(std::uint64_t fileOffset, std::uint64_t length) const;
  };

  // From the key of the first value that is wanted to the end of the last one.
  struct Row {
    std::uint64_t start;
    std::uint64_t bytes;
  };

  bool Locate(const INDEX_ENTRY_ARRAY& entry, Row* row) const;
  bool Fill(Window* window, std::uint64_t offset, std::uint64_t bytes);
  const std::uint8_t* HeaderAt(std::uint64_t offset, std::size_t wanted, const Row& row,
                               std::uint64_t rest);

  const platform::File& clip_;
  const MXF_BASE_INFO& mxf_;
  std::span<const std::uint32_t> tracks_;
  std::uint32_t next_;  // first frame that was not asked for
  std::uint32_t end_;
  bool cold_ = false;
  bool failed_ = false;
  Window head_;
  Window row_;
};

}  // namespace quorvan
