// Runs a job on the worker's thread while the console shows its progress and passes on the
// interrupt key.

#pragma once

#include <cstdint>
#include <string>

#include "state/app_state_info.h"

namespace quorvan::cli {

// How a job has ended.
struct JobOutcome {
  std::int32_t result;  // of the engine or the analysis; kSuccess when it is done
  std::u16string text;  // for the operator, at most kMostReportChars characters; may be empty
};

// Runs the job that `app` describes, returns when it has ended, and tells how. The interrupt key
// asks the job to stop. When the system has no thread for the job, the result is kStageRewrapMapped
// + kNoThread, and the job has not begun. May throw std::bad_alloc before the job begins.
JobOutcome RunJob(APP_STATE_INFO* app);

// Writes the text of the outcome of a rewrite, an export or a measurement: to standard output when
// the result is kSuccess, else to standard error. Returns kDone for kSuccess, kDoneNotice for
// kDoneWithNotice, kInterrupted for kCancelled, else kFailed, whether or not the text could be
// written. Throws nothing.
int ReportJob(const JobOutcome& outcome);

}  // namespace quorvan::cli
