// Runs a job on a thread of its own while the calling thread shows its progress and passes on the
// interrupt key.

#pragma once

#include <functional>
#include <string_view>

#include "platform/language.h"
#include "state/job_progress.h"

namespace quorvan::cli {

// What a job counts.
inline constexpr platform::InBoth<std::string_view> kFrames = {"フレーム", "frames"};
inline constexpr platform::InBoth<std::string_view> kProvenFrames = {"フレームを確認",
                                                                     "frames checked"};
inline constexpr platform::InBoth<std::string_view> kBytes = {"バイト", "bytes"};

// Runs `job`, which must not throw, and returns true when it has ended. False, without a call of
// `job` or `exchange`, when the system has no thread for it. The interrupt key sets `cancel` of
// `progress`.
//
// When standard error is a terminal, it shows a bar in `language` with the numbers that `progress`
// counts, their unit `unit`, which `exchange` may change, the percentage and the time left. While
// `total` is 0, it shows the stage instead, if there is a stage.
//
// `exchange`, where it is not empty, is called on the calling thread every few milliseconds while
// the job runs, and once after its end. It copies into `progress` what a job counts elsewhere and
// passes on `cancel`.
bool RunWithProgress(platform::Language language, const std::function<void()>& job,
                     const platform::InBoth<std::string_view>& unit, JobProgress* progress,
                     const std::function<void()>& exchange = {});

}  // namespace quorvan::cli
