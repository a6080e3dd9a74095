// What both rewrite engines do between their preparation and their end: prove everything, then
// write frame by frame.

#pragma once

#include <array>
#include <cstdint>

#include "mxf/records.h"
#include "platform/file.h"
#include "platform/mapping.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/rewrap_proof.h"
#include "rewrite/row_writer.h"
#include "rewrite/source_blocks.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// An engine's numbers for what a run can come to.
struct RunCodes {
  std::int32_t unfit;           // a value that is not proven, a clip or source that does not fit
  std::int32_t sourceChanged;   // a file that is not the one that was added
  std::int32_t sourceCutShort;  // one that does not hold what it claims
  std::int32_t noMemory;
  std::int32_t clipFault;  // the clip's storage fails; frames may be written
  std::int32_t wavFault;   // that of a source; frames may be written
};

class RewrapRun {
 public:
  RewrapRun(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf,
            const RunCodes& codes)
      : files(plan, tracks),
        blocks(plan, *mxf, files),
        plan_(plan),
        tracks_(*tracks),
        mxf_(*mxf),
        codes_(codes),
        rows_(plan, *mxf, &clip) {}
  RewrapRun(const RewrapRun&) = delete;
  RewrapRun& operator=(const RewrapRun&) = delete;

  // The engine opens these and takes their memory.
  platform::File clip;
  SourceFiles files;
  SourceBlocks blocks;

  // The job is prepared: those who watch see it at its first frame, not cancelled.
  void Start();

  // Proves what has to hold before the first write, through `view` where there is one, and writes
  // all frames. 0, kCancelled, or one of the engine's codes.
  std::int32_t ProveAndWrite(const platform::MappedView* view);

 private:
  std::int32_t Prove(const platform::MappedView* view);
  std::int32_t CheckSources() const;
  std::int32_t Write();
  std::int32_t Cancel();
  std::int32_t CodeOf(ElementState state) const;
  std::int32_t CodeOf(GateResult result) const;

  const RewrapPlan& plan_;
  AUDIOTRACK_IO_INFO& tracks_;
  MXF_BASE_INFO& mxf_;
  RunCodes codes_;
  RowWriter rows_;
  std::array<const std::uint8_t*, kMaxTracks> samples_{};
};

}  // namespace quorvan
