// What both export engines share: from the plan to the walk through the frames and the end.

#pragma once

#include <cstdint>
#include <new>

#include "export/export_files.h"
#include "export/export_plan.h"
#include "mxf/analysis.h"
#include "mxf/essence/audio_element.h"
#include "platform/text.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Plans an export and has `run` carry the plan out. What of both went wrong, as a result of
// `stage`.
template <typename Run>
std::int32_t RunPlannedExport(const char16_t* path, AUDIOTRACK_IO_INFO* tracks,
                              const MXF_BASE_INFO* mxf, ProcessCode stage, Run run) {
  const auto base = static_cast<std::int32_t>(stage);
  if (tracks != nullptr) BeginJob(tracks);
  ExportPlan plan{};
  if (const JobFault fault = PlanExport(path, tracks, mxf, &plan)) return base + fault;
  try {
    return run(plan);
  } catch (const std::bad_alloc&) {
    return base + kOutOfMemory;
  }
}

// Calls `prove` with the numbers of the `frames` frames from `first` on, counted from 0 in the
// export. Returns 0; what `prove` gave when that was not 0, without going on; or kCancelled in
// front of the frame before which `cancel` became 1.
template <typename Prove>
std::int32_t ProveFrames(AUDIOTRACK_IO_INFO* tracks, std::uint32_t first, std::uint32_t frames,
                         Prove prove) {
  for (std::uint32_t frame = first; frame < first + frames; ++frame) {
    if (tracks->cancel == 1) {
      tracks->cancel = 0;
      return kCancelled;
    }
    if (const std::int32_t failed = prove(frame)) return failed;
  }
  return kSuccess;
}

// Calls `take` with the numbers of the `frames` frames from `first` on, counted from 0 in the
// export, and keeps `currentFrame`. Returns 0; what `take` gave when that was not 0, without going
// on; or kCancelled behind the frame during which `cancel` became 1.
template <typename Take>
std::int32_t TakeFrames(AUDIOTRACK_IO_INFO* tracks, std::uint32_t first, std::uint32_t frames,
                        Take take) {
  for (std::uint32_t frame = first; frame < first + frames; ++frame) {
    if (const std::int32_t failed = take(frame)) return failed;
    if (tracks->cancel == 1) {
      tracks->cancel = 0;
      return kCancelled;
    }
    tracks->currentFrame = frame;
  }
  return kSuccess;
}

// The outcomes of an export as results of its stage. Notes frame and file at fault for the message.
class ExportOutcome {
 public:
  ExportOutcome(AUDIOTRACK_IO_INFO* tracks, ProcessCode stage, const ExportFiles& files)
      : tracks_(*tracks), stage_(stage), files_(files) {}

  std::int32_t Of(JobFault fault) const {
    if (fault == kNoFault) return kSuccess;
    NameFile();
    return static_cast<std::int32_t>(stage_) + fault;
  }

  // Of the frame of entry `entryIndex`.
  std::int32_t Of(ElementState state, std::uint32_t entryIndex) const {
    if (state == ElementState::kProven) return kSuccess;
    tracks_.fault.frame = entryIndex;
    return Of(FaultOfFrame(state));
  }

  // Brings the files onto the medium: the end of an export that has written all frames.
  std::int32_t Finish(ExportFiles* files) const {
    if (const std::int32_t failed = Of(files->Finish(&tracks_))) return failed;
    if (tracks_.cancel == 0) return kSuccess;
    tracks_.cancel = 0;
    return kCancelled;
  }

  void NameFile() const {
    platform::CopyText(tracks_.fault.path, std::size(tracks_.fault.path), files_.pathAtFault());
  }

 private:
  AUDIOTRACK_IO_INFO& tracks_;
  ProcessCode stage_;
  const ExportFiles& files_;
};

}  // namespace quorvan
