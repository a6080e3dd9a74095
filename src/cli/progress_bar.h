// Runs a job on a thread of its own while this one shows how far it is and hands on the interrupt
// key.

#pragma once

#include <functional>
#include <string_view>

#include "state/job_progress.h"

namespace quorvan::cli {

// Runs `job` to its end. With a terminal on standard error a bar shows how many of `unit` (frames,
// bytes) `progress` counts, the percentage and the time left; while there is nothing to count, the
// stage. The interrupt key sets `cancel` of `progress`. False, without a call of `job`, when there
// is no thread for it. `job` must not throw.
//
// `exchange`, where there is one, is called on this thread every few milliseconds while the job
// runs, and once behind its end: it copies into `progress` what a job counts elsewhere, and hands
// on `cancel`.
bool RunWithProgress(const std::function<void()>& job, std::string_view unit, JobProgress* progress,
                     const std::function<void()>& exchange = {});

}  // namespace quorvan::cli
