// Runs one job of the program on the worker's thread, with progress and the interrupt key.

#pragma once

#include <cstdint>
#include <string>

#include "state/app_state_info.h"

namespace quorvan::cli {

struct JobOutcome {
  std::int32_t result;  // of the engine or the analysis
  std::u16string text;  // for the operator; may be empty
};

// Runs the job that `app` describes to its end.
JobOutcome RunJob(APP_STATE_INFO* app);

// Tells the outcome of a rewrite, an export or a measurement: the text of a success on standard
// output, any other on standard error. Returns the exit status, which is that of the job, whether
// or not its text could be written.
int ReportJob(const JobOutcome& outcome);

}  // namespace quorvan::cli
