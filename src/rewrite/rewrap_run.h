// What both rewrite engines do between their preparation and their end: prove everything, write
// frame by frame, bring the audio onto the medium, and renew the clip's identity.

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

class RewrapRun {
 public:
  // `stage` is the engine's process code. All of it must outlive the object.
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

  // The engine opens these and takes their memory.
  platform::File clip;
  SourceFiles files;
  SourceBlocks blocks;

  // The job is prepared: those who watch see it at its first frame, not cancelled.
  void Start();

  // Proves what has to hold before the first write, through `view` where there is one, and writes
  // all frames. 0, kCancelled, or the stage's code plus a JobFault.
  std::int32_t ProveAndWrite(const platform::MappedView* view);

  // Behind a run that has written all frames: brings them onto the medium, renews the UMIDs, brings
  // these onto the medium too and reads them back. With `stampTimes` the file's last access and
  // last write become the end of its audio. 0; kDoneWithNotice, with the reason in `umidState`;
  // kCancelled, with all audio written and the old UMIDs; or the stage's code plus a JobFault.
  std::int32_t Finish(bool stampTimes);

  // Notes the file at fault for the message.
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

// Plans a rewrite and has `run` carry the plan out. What of both went wrong, as a result of
// `stage`.
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
