// Runs a job on a thread of its own while this one shows how far it is and hands on the interrupt
// key.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace quorvan::cli {

struct JobProgress {
  std::function<std::uint64_t()> done;
  std::function<std::uint64_t()> total;  // 0 while it is not known
  std::function<void()> requestCancel;   // called while the job runs, as often as needed
  std::string_view unit;                 // what is counted, for the display
  std::function<std::string()> stage;    // what is being done while there is no total; may be empty
};

// Runs `job` to its end. With a terminal on standard error a bar shows the count, the
// percentage and the time left. From the interrupt key on `requestCancel` is called until the job
// ends. False, without a call of `job`, when there is no thread for it. `job` must not throw.
bool RunWithProgress(const std::function<void()>& job, const JobProgress& progress);

}  // namespace quorvan::cli
