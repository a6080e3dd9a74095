// What both front ends do before and after a job: they describe the job in the state record, learn
// why it cannot start, and write the log of a rewrite that is done.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/language.h"
#include "state/app_state_info.h"

namespace quorvan {

// Why a job cannot start.
struct JobRefusal {
  std::int32_t result = 0;     // 0 when the job can start, else the number of the refusal
  std::u16string_view text{};  // for the operator at the window
};

// Describes an analysis of `mxfFile` in `app`: sets jobKind, and clears analysisOk, the progress
// and the stop request. Throws nothing.
void PrepareAnalysis(APP_STATE_INFO* app);

// Describes a job of `kind`, which is not kAnalysisJob, in `app`, and checks whether it can start.
// A job cannot start when its engine's own check of the arguments refuses it: no track is ON (for a
// rewrite or an export), the range lies outside the clip, or no job takes the clip. A range of 0
// frames is refused too, although the engines allow it.
//
// Sets jobKind in any case. For a job that can start, it also sets totalFrames, clears
// currentFrame, cancel and phase, and counts an export in exportCount. Returns a refusal with
// `result` 0 for such a job; else `result` is the process code of the job (for a measurement, of
// the export by memory mapping) plus a JobFault. Throws nothing.
JobRefusal PrepareJob(JobKind kind, APP_STATE_INFO* app);

// The refusal of a job for which the system could not start a thread.
JobRefusal NoThreadRefusal();

// Why no job takes the loaded clip, whatever its tracks and its range, as the refusal of a job of
// `kind`; a refusal with `result` 0 when jobs take the clip. Throws nothing.
JobRefusal CheckClipFor(JobKind kind, const APP_STATE_INFO& app);

// Tells the operator why no job takes the loaded clip; empty when jobs take the clip.
std::u16string_view ClipRefusal(const APP_STATE_INFO& app);

// True when a UMID of the loaded clip has 64 bytes. A rewrite cannot renew such a UMID: the front
// end asks the operator first, and after a Yes sets `keepUmids`, so that the rewrite leaves the
// UMIDs as they are.
bool NeedsOldIdentity(const APP_STATE_INFO& app);

// What the operator is told of a rewrite that is done.
struct RewriteEnd {
  bool logged = false;        // the log is written
  std::u16string logFailure;  // why there is no log; empty when it is written or was not wanted
  std::u16string text;        // the outcome
};

// Ends a rewrite whose `result` is kSuccess or kDoneWithNotice: writes its rewrap log when
// `wantsLog` is true, and returns the texts for the operator in `language`. The log is Japanese.
// The clip is rewritten, whether or not there is a log. Throws std::bad_alloc.
RewriteEnd EndRewrite(std::int32_t result, bool wantsLog, APP_STATE_INFO* app,
                      platform::Language language = platform::kWindowLanguage);

}  // namespace quorvan
