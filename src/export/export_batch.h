// The steps that both export engines share: the plan, the walk through the frames, the results and
// the end.

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

// Plans an export of the clip at `path` and calls `run` with the plan. Returns what `run` returns;
// `stage` plus the fault of PlanExport when no plan can be made; or `stage` plus kOutOfMemory when
// `run` throws std::bad_alloc.
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

// Calls `prove(frame)` for each of the `frames` frames from `first` on, and counts the proven
// frames in `provenFrames`; frames count from 0 in the export. Returns 0 when every call has
// returned 0. Stops at the first call that returns something else, and returns it. Stops in front
// of the next frame when `cancel` is 1, clears `cancel` and returns kCancelled.
template <typename Prove>
std::int32_t ProveFrames(AUDIOTRACK_IO_INFO* tracks, std::uint32_t first, std::uint32_t frames,
                         Prove prove) {
  for (std::uint32_t frame = first; frame < first + frames; ++frame) {
    if (tracks->cancel == 1) {
      tracks->cancel = 0;
      return kCancelled;
    }
    if (const std::int32_t failed = prove(frame)) return failed;
    tracks->provenFrames = frame + 1;
  }
  return kSuccess;
}

// Calls `take(frame)` for each of the `frames` frames from `first` on, and puts the number of each
// frame that is taken into `currentFrame`; frames count from 0 in the export. Returns 0 when every
// call has returned 0. Stops at the first call that returns something else, and returns it. Stops
// behind the frame during which `cancel` becomes 1, clears `cancel` and returns kCancelled.
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

// Turns the faults of an export into results of its stage, and puts the frame and the file at fault
// into `fault` of `tracks` for the message.
class ExportOutcome {
 public:
  // `tracks` and `files` must outlive the object.
  ExportOutcome(AUDIOTRACK_IO_INFO* tracks, ProcessCode stage, const ExportFiles& files)
      : tracks_(*tracks), stage_(stage), files_(files) {}

  // Returns 0 for kNoFault, else the stage's code plus `fault`.
  std::int32_t Of(JobFault fault) const {
    if (fault == kNoFault) return kSuccess;
    NameFile();
    return static_cast<std::int32_t>(stage_) + fault;
  }

  // The result for `state`, the state of the frame at `entryIndex` in the INDEX_ENTRY_ARRAY.
  std::int32_t Of(ElementState state, std::uint32_t entryIndex) const {
    if (state == ElementState::kProven) return kSuccess;
    tracks_.fault.frame = entryIndex;
    return Of(FaultOfFrame(state));
  }

  // Ends an export that has written all frames: brings the files onto the medium. Returns 0,
  // kCancelled, or the stage's code plus a JobFault.
  std::int32_t Finish(ExportFiles* files) const {
    if (const std::int32_t failed = Of(files->Finish(&tracks_))) return failed;
    if (tracks_.cancel == 0) return kSuccess;
    tracks_.cancel = 0;
    return kCancelled;
  }

  // Copies the path of the new file at fault, empty when there is none, to `fault.path`.
  void NameFile() const {
    platform::CopyText(tracks_.fault.path, std::size(tracks_.fault.path), files_.pathAtFault());
  }

 private:
  AUDIOTRACK_IO_INFO& tracks_;
  ProcessCode stage_;
  const ExportFiles& files_;
};

}  // namespace quorvan
