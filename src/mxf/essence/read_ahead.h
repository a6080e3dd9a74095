// Prefetches the audio of the coming frames for a job that walks through a clip, without the video
// between.

#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "mxf/essence/audio_element.h"
#include "platform/file.h"

namespace quorvan {

// The stretch of a row (the audio elements of one frame in file order) that a job needs: from the
// key of the first wanted element to the end of the value of the last wanted element.
struct ElementRow {
  std::uint64_t start;  // file offset
  std::uint64_t bytes;
};

// The row of `tracks`, zero-based and ascending, in the frame of `entry`, as the index gives it.
// Nothing when there are no tracks, when the index leads to no element for the first or the last
// track, when the last element ends in front of the first, or when the row would be longer than
// 16 MiB. Throws nothing.
std::optional<ElementRow> LocateRow(const MXF_BASE_INFO& mxf, const INDEX_ENTRY_ARRAY& entry,
                                    std::span<const std::uint32_t> tracks);

// Prefetches, for each coming frame, the bytes at its start and its row. A clip that is in memory
// is cached and needs no prefetch; the clip counts as cold once a read had to wait for the medium.
// Functions throw nothing.
class ReadAhead {
 public:
  // Bytes at the start of a frame. On the usual KAG grid they hold everything in front of the
  // picture, and the picture's own key and length field.
  static constexpr std::size_t kHeadBytes = 640;

  // Prefetches `tracks`, zero-based and ascending, in the `frames` frames from the frame
  // `firstEntry` (zero-based) on, which the caller walks through in this order. `clip`, `mxf` and
  // the memory of `tracks` must outlive the object.
  ReadAhead(const platform::File& clip, const MXF_BASE_INFO& mxf,
            std::span<const std::uint32_t> tracks, std::uint32_t firstEntry, std::uint32_t frames)
      : clip_(clip), mxf_(mxf), tracks_(tracks), next_(firstEntry), end_(firstEntry + frames) {}

  // Starts the walk again at the frame `entryIndex`.
  void Rewind(std::uint32_t entryIndex) { next_ = entryIndex; }

  // True when the clip is cold: a read had to wait for the medium, because the clip was not in
  // memory.
  bool IsCold() const { return cold_; }

  // Call after a read had to wait for the medium.
  void SetCold() { cold_ = true; }

  // Prefetches the frame `entryIndex` and the frames behind it, as far as that has not happened
  // yet, when the clip is cold. Does not wait for the bytes.
  void Ask(std::uint32_t entryIndex);

  // Prefetches as Ask does, for a caller that reads through a view and cannot tell whether it had
  // to wait. Every few frames, first tests whether the row of the frame `entryIndex` is in memory,
  // and makes the clip cold when it is not. Frames that were passed before a Rewind are not tested
  // again.
  void LookAndAsk(std::uint32_t entryIndex);

 private:
  const platform::File& clip_;
  const MXF_BASE_INFO& mxf_;
  std::span<const std::uint32_t> tracks_;
  std::uint32_t next_;          // first frame that is not yet prefetched
  std::uint32_t end_;           // behind the last frame
  std::uint32_t nextLook_ = 0;  // first frame at which LookAndAsk tests again
  bool cold_ = false;
};

}  // namespace quorvan
