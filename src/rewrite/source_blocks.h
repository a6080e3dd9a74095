// The samples of all sources of a rewrite, handed out frame by frame: straight from views of the
// files where they are mapped, else read in long runs by plain file access.

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

// Room for one frame of one track, whatever its width: the largest frame in samples of four bytes.
inline constexpr std::uint64_t kFrameRoom = std::uint64_t{kLargestFrameSamples} * 4;

// One channel of the interleaved sample frames of `wav` at `interleaved`, of which there are
// `held`, as `wanted` samples of `width` bytes at `target`: bytes as they are, or 16 bits in the
// upper ones of 24, and silence behind the last one held.
void FillChannel(const WAV_FILE_INFO& wav, std::uint32_t channel, const std::uint8_t* interleaved,
                 std::uint32_t held, std::uint32_t wanted, std::uint32_t width,
                 std::uint8_t* target);

// Whole sample frames that the data chunk of `wav` still holds behind its first `consumed` ones, at
// most `wanted`.
std::uint64_t SamplesLeft(const WAV_FILE_INFO& wav, std::uint64_t consumed, std::uint64_t wanted);

class SourceBlocks {
 public:
  SourceBlocks(const RewrapPlan& plan, const MXF_BASE_INFO& mxf, const SourceFiles& files)
      : plan_(plan), mxf_(mxf), files_(files) {}

  // Sets how far ahead the files are asked for: `blockFrames` frames, or fewer where they need more
  // than a job may take or the plan has fewer. Takes memory for what is worked on at a time. False
  // when there is none, or `blockFrames` is 0 or more than the clip's tracks can have.
  bool AllocateBlock(std::uint32_t blockFrames);

  // The same without a limit by the clip's tracks.
  bool AllocateAhead(std::uint32_t aheadFrames);

  // Takes memory for one frame of every track. False when there is none.
  bool AllocateTrackBuffers();

  // Frames of a full block: few enough to stay in the processor's cache until they are written.
  std::uint32_t frames() const { return blockFrames_; }

  // Turns to what each file gives to the `frames` frames from `firstEntry` on; blocks follow each
  // other from the plan's first frame on. The first file that does not give it; null when all do.
  const WAV_FILE_INFO* MoveTo(std::uint32_t firstEntry, std::uint32_t frames);

  // What each track of the plan, in their order, gets in the block's current frame, which is the
  // one of `entry`, in the clip's sample width: straight from the file's view or the block where
  // its bytes are just those, else split; silence where the file has ended. Valid until the next
  // call, which is for the frame behind. False when a view's storage has failed.
  bool Take(const INDEX_ENTRY_ARRAY& entry, std::array<const std::uint8_t*, kMaxTracks>* samples);

 private:
  // What the block holds of one source.
  struct Region {
    std::uint8_t* start = nullptr;
    const std::uint8_t* readPos = nullptr;
    std::uint32_t held = 0;      // sample frames from readPos on
    std::uint64_t consumed = 0;  // sample frames read from the file up to now
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
  std::uint32_t askedUpTo_ = 0;  // entry of the index
  std::unique_ptr<std::uint8_t[]> wavBlock_;
  std::unique_ptr<std::uint8_t[]> silence_;
  std::unique_ptr<std::uint8_t[]> trackBuffers_;
};

}  // namespace quorvan
