// The progress of a job that runs on a thread of its own, and the request to stop it.

#pragma once

#include <atomic>
#include <cstdint>

#include "platform/language.h"

namespace quorvan {

// The thread that watches the job writes `cancel`. The job's thread writes the other fields; for a
// job that counts in another record, the front end's threads copy the counts into JobProgress.
struct JobProgress {
  // What the job does while it has nothing to count; null for no text. The text lives as long as
  // the program.
  std::atomic<const platform::Text*> stage = nullptr;
  std::atomic<std::uint64_t> done = 0;    // frames or bytes
  std::atomic<std::uint64_t> total = 0;   // frames or bytes; 0 until it is known
  std::atomic<std::uint32_t> cancel = 0;  // 1 asks the job to stop
};

}  // namespace quorvan
