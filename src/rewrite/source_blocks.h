// The samples of all sources of a rewrite, handed out frame by frame: straight from the view of a
// source file that is mapped, else from a block of frames that is read with plain file access.

#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "mxf/essence/audio_element.h"
#include "mxf/records.h"
#include "mxf/sample_pattern.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/source_files.h"
#include "wav/wav_library.h"

namespace quorvan {

// Bytes for one frame of one track, enough for every clip: the largest frame, in samples of four
// bytes.
inline constexpr std::uint64_t kFrameRoom = std::uint64_t{kLargestFrameSamples} * 4;

// Copies one channel of the source file `wav` for one track of the clip. `channel` is zero-based.
// The `held` sample frames at `interleaved` hold all channels of the file, and `held` is at most
// `wanted`. Writes `wanted` samples of `width` bytes to `target`: 16 or 24 bits unchanged, or 16
// bits in the upper bytes of 24, and silence behind the last sample held. FitsClip
// (wav/wav_check.h) lets no other widths through. Throws nothing.
void FillChannel(const WAV_FILE_INFO& wav, std::uint32_t channel, const std::uint8_t* interleaved,
                 std::uint32_t held, std::uint32_t wanted, std::uint32_t width,
                 std::uint8_t* target);

// Number of whole sample frames in the data chunk of `wav` behind its first `consumed` sample
// frames, at most `wanted`. 0 when the audio has ended. `wav.blockAlign` must not be 0.
std::uint64_t SamplesLeft(const WAV_FILE_INFO& wav, std::uint64_t consumed, std::uint64_t wanted);

// Reads and splits the sources of one rewrite. No function of the class throws.
class SourceBlocks {
 public:
  // `plan`, `mxf` and `files` must outlive the object.
  SourceBlocks(const RewrapPlan& plan, const MXF_BASE_INFO& mxf, const SourceFiles& files)
      : plan_(plan), mxf_(mxf), files_(files) {}

  // Checks the buffer duration of `blockFrames` frames and calls AllocateAhead. Returns false also
  // when `blockFrames` is 0, or when so many frames of all tracks of the clip need more bytes than
  // fit 32 bits (FitsBlock).
  bool AllocateBlock(std::uint32_t blockFrames);

  // Sets how far ahead the source files are prefetched: `aheadFrames` frames, but not more than the
  // plan has, nor more than fit kMostBlockBytes. Takes memory for a frame of silence and for one
  // block of each source that is not mapped, so call SourceFiles::Map before. Returns false when
  // memory is out.
  bool AllocateAhead(std::uint32_t aheadFrames);

  // Takes memory for one frame of every track. Returns false when memory is out.
  bool AllocateTrackBuffers();

  // Frames of a full block: few enough to stay in the processor's cache between being read and
  // being written.
  std::uint32_t frames() const { return blockFrames_; }

  // Moves on to the next block: reads the samples of each source file for the `frames` frames from
  // `firstEntry` on, or finds them in the file's view. `firstEntry` counts in the
  // INDEX_ENTRY_ARRAY; it is the plan's first frame in the first call, then the frame behind the
  // block before. `frames` is at most frames(). Prefetches the next stretch of the source files
  // when `firstEntry` reaches the end of the last one. Returns null, or the first source file that
  // cannot be read or does not reach far enough.
  const WAV_FILE_INFO* MoveTo(std::uint32_t firstEntry, std::uint32_t frames);

  // Takes the block's next frame, whose index entry is `entry`. `(*samples)[n]` then leads to the
  // samples of the plan's n-th track: entry.audioSamples samples in the clip's sample width,
  // silence where the source file has ended or the track gets silence. They lie in the source
  // file's view or in the block when its bytes need no change, else in a buffer of this object, and
  // stay there until the next call of Take or MoveTo. Bytes in a view can still fault when they are
  // read. Returns false when the storage of a view has failed.
  bool Take(const INDEX_ENTRY_ARRAY& entry, std::array<const std::uint8_t*, kMaxTracks>* samples);

 private:
  // The samples of the current block that come from one source.
  struct Region {
    std::uint8_t* start = nullptr;          // where samples are read to, unless mapped
    const std::uint8_t* readPos = nullptr;  // first sample frame that Take has not taken yet
    std::uint32_t held = 0;                 // sample frames from readPos on
    std::uint64_t consumed = 0;             // sample frames of the file up to the end of the block
  };

  void AskFor(std::uint32_t firstEntry);
  std::uint64_t BlockBytes(const TrackSource& source) const;
  void Split(const INDEX_ENTRY_ARRAY& entry, std::array<const std::uint8_t*, kMaxTracks>* samples);

  const RewrapPlan& plan_;
  const MXF_BASE_INFO& mxf_;
  const SourceFiles& files_;
  std::array<Region, kMaxTracks> regions_;
  std::uint32_t blockFrames_ = 0;
  std::uint32_t aheadFrames_ = 0;
  std::uint32_t askedUpTo_ = 0;  // first index entry whose samples were not prefetched
  std::unique_ptr<std::uint8_t[]> wavBlock_;
  std::unique_ptr<std::uint8_t[]> silence_;
  std::unique_ptr<std::uint8_t[]> trackBuffers_;
};

}  // namespace quorvan
