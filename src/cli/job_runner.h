// Runs a job on the worker's thread while the console shows its progress and passes on the
// interrupt key.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/language.h"
#include "state/app_state_info.h"

namespace quorvan::cli {

// How a job has ended.
struct JobOutcome {
  std::int32_t result;                    // of the engine or the analysis; kSuccess when it is done
  platform::InBoth<std::u16string> text;  // for the operator; may be empty
};

// Runs the job that `app` describes, returns when it has ended, and tells how. The interrupt key
// asks the job to stop. When the system has no thread for the job, the result is kStageRewrapMapped
// + kNoThread, and the job has not begun. The progress is shown in `language`. May throw
// std::bad_alloc before the job begins.
JobOutcome RunJob(platform::Language language, APP_STATE_INFO* app);

// Writes `text`, the outcome in `language` of a rewrite, an export or a measurement: to standard
// output when `result` is kSuccess, else to standard error. Returns kDone for kSuccess, kDoneNotice
// for kDoneWithNotice, kInterrupted for kCancelled, else kFailed, whether or not the text could be
// written. Throws nothing.
int ReportJob(platform::Language language, std::int32_t result, std::u16string_view text);

}  // namespace quorvan::cli
