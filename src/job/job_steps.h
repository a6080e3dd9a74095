// What window and console do around a job: they describe the job in the state record, learn why it
// cannot start, and write the log of a rewrite that is done.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "state/app_state_info.h"

namespace quorvan {

// Why a job cannot start; `result` is 0 when it can.
struct JobRefusal {
  std::int32_t result = 0;     // the job's process code plus a JobFault
  std::u16string_view text{};  // for the operator
};

// Makes the analysis of `mxfFile` the job of `app`: nothing is counted and nothing asks it to stop.
void PrepareAnalysis(APP_STATE_INFO* app);

// Makes `kind`, which is no analysis, the job of `app`, and asks its engine's own check of the
// arguments whether it can start: it cannot with no track ON, a range outside the clip or a clip
// that can only be looked at. A range of no frame at all, which the engines allow, is refused too.
// A job that can start has `totalFrames`, no frame done and no request to stop; an export is
// counted in `exportCount`.
JobRefusal PrepareJob(JobKind kind, APP_STATE_INFO* app);

// Why no job takes the loaded clip, whatever its tracks and its range; as a result of the job
// `kind`.
JobRefusal CheckClipFor(JobKind kind, const APP_STATE_INFO& app);

// The text of that refusal; empty for a clip that jobs take.
std::u16string_view ClipRefusal(const APP_STATE_INFO& app);

// True when a rewrite of the loaded clip would leave its UMIDs as they are, since they have 64
// bytes: the operator is asked first, and a Yes becomes `keepUmids` of `tracks`.
bool NeedsOldIdentity(const APP_STATE_INFO& app);

// Writes the rewrap log of the rewrite that has ended with `result`: 0, or kDoneWithNotice, whose
// reason then stands in the log. False, with the words for the operator in `*failure`, when there
// is no log; the rewrite stands all the same.
bool LogRewrite(std::int32_t result, APP_STATE_INFO* app, std::u16string* failure);

}  // namespace quorvan
