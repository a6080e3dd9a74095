// Has the audio of a clip's frames brought into memory ahead of those who walk through them, and
// nothing of the video between.

#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "mxf/essence/audio_element.h"
#include "platform/file.h"

namespace quorvan {

// Where the audio of a frame lies: from the key of the first value that is wanted to the end of the
// last one.
struct ElementRow {
  std::uint64_t start;  // file offset
  std::uint64_t bytes;
};

// The row of `tracks`, from 0 and ascending, in the frame of `entry`. Nothing when the index does
// not lead to one of believable length, or no track is wanted.
std::optional<ElementRow> LocateRow(const MXF_BASE_INFO& mxf, const INDEX_ENTRY_ARRAY& entry,
                                    std::span<const std::uint32_t> tracks);

class ReadAhead {
 public:
  // What stands in front of a picture, with the picture's own header, on the usual grid.
  static constexpr std::size_t kHeadBytes = 640;

  // For `tracks` in the `frames` frames from `firstEntry` on, which are walked through in that
  // order. All of it must outlive the object.
  ReadAhead(const platform::File& clip, const MXF_BASE_INFO& mxf,
            std::span<const std::uint32_t> tracks, std::uint32_t firstEntry, std::uint32_t frames)
      : clip_(clip), mxf_(mxf), tracks_(tracks), next_(firstEntry), end_(firstEntry + frames) {}

  // The walk starts again at an earlier frame.
  void Rewind(std::uint32_t entryIndex) { next_ = entryIndex; }

  // True when some read has had to wait for the medium: the clip was not in memory. A clip that is
  // needs nobody to ask for it.
  bool IsCold() const { return cold_; }
  void SetCold() { cold_ = true; }

  // Asks for the frames behind `entryIndex` when the clip is cold.
  void Ask(std::uint32_t entryIndex);

  // The same for those who read through a view and so cannot tell whether they had to wait: looks
  // first whether the frame at hand is in memory, every few frames.
  void LookAndAsk(std::uint32_t entryIndex);

 private:
  const platform::File& clip_;
  const MXF_BASE_INFO& mxf_;
  std::span<const std::uint32_t> tracks_;
  std::uint32_t next_;  // first frame that was not asked for
  std::uint32_t end_;
  std::uint32_t nextLook_ = 0;
  bool cold_ = false;
};

}  // namespace quorvan
