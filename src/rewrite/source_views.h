// The samples of all sources of a rewrite, through views of the files, handed out frame by frame.

#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "mxf/records.h"
#include "mxf/segment_run.h"
#include "platform/mapping.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/rewrap_proof.h"

namespace quorvan {

class SourceViews {
 public:
  SourceViews(const RewrapPlan& plan, const MXF_BASE_INFO& mxf, const SourceFiles& files)
      : plan_(plan), mxf_(mxf), files_(files) {}

  // Makes a mapping of every file. False when there can be none.
  bool Map();

  // Takes memory for the silence and for one frame of every track. False when there is none.
  bool AllocateSilence();
  bool AllocateTrackBuffers();

  // Makes a view of what each file gives to the frames of `run`, which follow those before. False
  // when there can be none.
  bool Enter(const SegmentRun& run);

  // What each track of the plan, in their order, gets in the run's current frame, which is the one
  // of `entry`, in the clip's sample width: straight from a view where its bytes are just those,
  // else split into memory; silence where the file has ended. Valid until the next call. False when
  // the storage of a file fails.
  bool Take(const INDEX_ENTRY_ARRAY& entry, std::array<const std::uint8_t*, kMaxTracks>* samples);

  void Close();

 private:
  struct Source {
    platform::FileMapping mapping;
    platform::MappedView view;
    std::uint64_t consumed = 0;  // sample frames used up to now
    std::uint64_t ready = 0;     // sample frames that were asked for at one go
  };

  void MakeReady(const WAV_FILE_INFO& wav, Source* source, std::uint64_t wanted);
  bool Split(const TrackSource& source, std::uint32_t c, const std::uint8_t* interleaved,
             std::uint32_t held, std::uint32_t wanted, std::uint8_t* target) const;

  const RewrapPlan& plan_;
  const MXF_BASE_INFO& mxf_;
  const SourceFiles& files_;
  std::array<Source, kMaxTracks> sources_;
  std::unique_ptr<std::uint8_t[]> silence_;
  std::unique_ptr<std::uint8_t[]> trackBuffers_;
};

}  // namespace quorvan
