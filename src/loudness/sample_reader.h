// Reads the samples of up to two tracks of a clip, frame by frame, on a thread of its own.
// Measuring a frame takes far longer than reading it, and the reading goes on meanwhile.

#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <thread>

#include "mxf/essence/audio_element.h"
#include "mxf/essence/row_reader.h"
#include "mxf/records.h"
#include "platform/file.h"
#include "state/frame_range.h"
#include "state/job_fault.h"

namespace quorvan {

inline constexpr std::uint32_t kLoudnessChannels = 2;

// The samples of one frame.
struct SampleFrame {
  ElementState state = ElementState::kProven;  // kProven, or why the frame could not be read
  std::uint32_t count = 0;                     // samples of each channel
  const float* samples = nullptr;  // interleaved, full scale is 1; valid until the next Next
};

class SampleReader {
 public:
  // Reads `tracks` (from 0, ascending, at most kLoudnessChannels) in the frames of `range` of the
  // open `clip`, whose analysis is `mxf`. The index of `mxf` must hold the range. All arguments
  // must outlive the reader. A channel without a track is silent.
  SampleReader(const platform::File& clip, const MXF_BASE_INFO& mxf,
               std::span<const std::uint32_t> tracks, const FrameRange& range)
      : mxf_(mxf),
        tracks_(tracks),
        range_(range),
        rows_(clip, mxf, tracks, range.firstEntry, range.total) {}
  SampleReader(const SampleReader&) = delete;
  SampleReader& operator=(const SampleReader&) = delete;

  // Stops the reading, at whatever frame it is, and waits for the end of its thread.
  ~SampleReader();

  // Allocates the memory and starts the reading thread. To be called once, and only when CanConvert
  // is true for blockAlign of the clip. kNoFault, kOutOfMemory, or kNoThread when no thread could
  // be started.
  JobFault Start();

  // Waits for the next frame of the range and returns it. Must not be called before Start has
  // succeeded, after the last frame, or after a frame that is not kProven.
  SampleFrame Next();

  // True when samples of `blockAlign` bytes can be converted: 2, 3 or 4 bytes.
  static bool CanConvert(std::uint32_t blockAlign);

 private:
  // Frames in the ring, and number of frames whose slots Next gives back to the reading thread at
  // once, because waking that thread costs as much as reading a frame.
  static constexpr std::uint32_t kSlots = 64;
  static constexpr std::uint32_t kGivenBack = 16;
  static constexpr std::uint32_t kStopped = ~std::uint32_t{0};

  void ReadAll();
  bool WaitForSlot(std::uint32_t frame);
  SampleFrame Read(std::uint32_t frame);

  const MXF_BASE_INFO& mxf_;
  std::span<const std::uint32_t> tracks_;
  const FrameRange& range_;
  RowReader rows_;
  std::unique_ptr<float[]> samples_;
  std::array<SampleFrame, kSlots> frames_;
  std::atomic<std::uint32_t> filled_ = 0;  // frames read so far; written by the reading thread
  std::atomic<std::uint32_t> taken_ = 0;   // frames given back so far, or kStopped
  std::uint32_t next_ = 0;                 // number, in the range, of the frame that Next returns
  std::thread thread_;
};

}  // namespace quorvan
