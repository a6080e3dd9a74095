// The steps that both rewrite engines share: prove everything, write frame by frame, bring the
// audio onto the medium, and renew the clip's UMIDs.

#pragma once

#include <array>
#include <cstdint>
#include <new>
#include <string>
#include <utility>

#include "mxf/analysis.h"
#include "mxf/records.h"
#include "platform/file.h"
#include "platform/mapping.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/row_writer.h"
#include "rewrite/source_blocks.h"
#include "rewrite/source_files.h"
#include "rewrite/umid.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// One rewrite, after its engine has opened the files and allocated the memory.
class RewrapRun {
 public:
  // `stage` is the engine's process code; a failure is this code plus a JobFault. `plan`, `tracks`
  // and `mxf` must outlive the object.
  RewrapRun(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf,
            ProcessCode stage)
      : files(plan, tracks, *mxf->audio),
        blocks(plan, *mxf, files),
        plan_(plan),
        tracks_(*tracks),
        mxf_(*mxf),
        stage_(stage),
        rows_(plan, *mxf, &clip),
        identity_(&clip, mxf) {}
  RewrapRun(const RewrapRun&) = delete;
  RewrapRun& operator=(const RewrapRun&) = delete;

  // The engine opens the clip and the source files and allocates the blocks.
  platform::File clip;
  SourceFiles files;
  SourceBlocks blocks;

  // Begins the job: sets `currentFrame` to 0 and clears `cancel`. Call it when the engine has
  // prepared everything; a request to stop that came before is forgotten.
  void Start();

  // Proves everything that must hold before the first write, then writes all frames of the plan.
  // Reads the frames through `view`, which covers the whole clip; with null, reads them with plain
  // file access. Returns 0; kCancelled; kUmidTooLong, with nothing written, for a clip with
  // 64-byte UMIDs unless `keepUmids` is 1; or `stage` plus a JobFault. Throws std::bad_alloc, but
  // only before the first write.
  std::int32_t ProveAndWrite(const platform::MappedView* view);

  // Ends a rewrite after ProveAndWrite has returned 0: brings the audio onto the medium, renews the
  // UMIDs, brings the UMIDs onto the medium and reads them back. With `stampTimes`, sets the clip's
  // last access and last write to the time of this call. Returns 0; kDoneWithNotice, with the
  // reason in `umidState`; kCancelled, with all audio written and the old UMIDs; or `stage` plus a
  // JobFault. Throws nothing.
  std::int32_t Finish(bool stampTimes);

  // Copies the path of the source file at fault to `fault.path`, for the message.
  void NameFile(const WAV_FILE_INFO& wav);

 private:
  std::int32_t Failed(JobFault fault, const WAV_FILE_INFO* wav = nullptr);
  std::int32_t Prove(const platform::MappedView* view);
  std::int32_t ProveClip();
  std::int32_t Write();
  std::int32_t Cancel();
  std::int32_t SourceFailed();
  std::int32_t RenewIdentity(platform::FileTime audioEnd, bool stampTimes);
  bool Flush();
  void StampTimes(platform::FileTime time);

  const RewrapPlan& plan_;
  AUDIOTRACK_IO_INFO& tracks_;
  MXF_BASE_INFO& mxf_;
  ProcessCode stage_;
  RowWriter rows_;
  ClipIdentity identity_;
  std::array<const std::uint8_t*, kMaxTracks> samples_{};
};

// Plans a rewrite of the clip at `path` and calls `run` with the plan. Returns what `run` returns;
// `stage` plus the fault of PlanRewrap when no plan can be made; or `stage` plus kOutOfMemory when
// `run` throws std::bad_alloc.
template <typename Run>
std::int32_t RunPlanned(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf,
                        ProcessCode stage, Run run) {
  const auto base = static_cast<std::int32_t>(stage);
  if (tracks != nullptr) BeginJob(tracks);
  RewrapPlan plan{};
  if (const JobFault fault = PlanRewrap(path, tracks, mxf, &plan)) return base + fault;
  try {
    return run(plan);
  } catch (const std::bad_alloc&) {
    return base + kOutOfMemory;
  }
}

}  // namespace quorvan
