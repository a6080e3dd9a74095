// Reads the samples of up to two tracks of a clip, frame by frame, on a thread of its own: the
// measurement takes far longer over a frame than its reading does, and need not wait for it.

#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <thread>

#include "mxf/audio_element.h"
#include "mxf/records.h"
#include "mxf/row_reader.h"
#include "platform/file.h"
#include "state/frame_range.h"
#include "state/job_fault.h"

namespace quorvan {

inline constexpr std::uint32_t kLoudnessChannels = 2;

// One frame as it was read.
struct SampleFrame {
  ElementState state = ElementState::kProven;
  std::uint32_t count = 0;         // samples of each channel
  const float* samples = nullptr;  // interleaved, full scale is 1; valid until the next is taken
};

class SampleReader {
 public:
  // For `tracks`, from 0 and ascending, at most kLoudnessChannels, in the frames of `range`. All of
  // it must outlive the reader. A channel that has no track is silent.
  SampleReader(const platform::File& clip, const MXF_BASE_INFO& mxf,
               std::span<const std::uint32_t> tracks, const FrameRange& range)
      : mxf_(mxf),
        tracks_(tracks),
        range_(range),
        rows_(clip, mxf, tracks, range.firstEntry, range.total) {}
  SampleReader(const SampleReader&) = delete;
  SampleReader& operator=(const SampleReader&) = delete;

  // Ends the reading, wherever it is.
  ~SampleReader();

  // Starts to read. kNoFault, kOutOfMemory or kNoThread. The samples must be such that CanConvert.
  JobFault Start();

  // Waits for the next frame. Not to be called behind the last one, nor behind one that is not
  // kProven.
  SampleFrame Next();

  // True for the bytes of a sample that can be converted: 2, 3 or 4.
  static bool CanConvert(std::uint32_t blockAlign);

 private:
  // Frames that are held at a time. Some of them are given back together, since waking the other
  // thread costs as much as reading a frame.
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
  std::atomic<std::uint32_t> filled_ = 0;  // frames that are read; written by the reading thread
  std::atomic<std::uint32_t> taken_ = 0;   // frames that are done with, or kStopped
  std::uint32_t next_ = 0;
  std::thread thread_;
};

}  // namespace quorvan
