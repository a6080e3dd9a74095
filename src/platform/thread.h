// Threads whose start may fail.

#pragma once

#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/fault_seam.h"

namespace quorvan::platform {

// Starts a thread that runs `body`, which must not throw, and hands it over in `*thread`. False,
// with `*thread` as it was, when the system has no thread or no memory for it. Throws nothing.
template <typename Body>
bool StartThread(std::thread* thread, Body body) {
  if (OutcomeOf(SystemCall::kThread) == CallOutcome::kFails) return false;
  try {
    *thread = std::thread(std::move(body));
    return true;
  } catch (const std::system_error&) {
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

// Joins a thread, if it has one, at the end of its scope.
class JoinAtEnd {
 public:
  explicit JoinAtEnd(std::thread* thread) : thread_(*thread) {}
  JoinAtEnd(const JoinAtEnd&) = delete;
  JoinAtEnd& operator=(const JoinAtEnd&) = delete;
  ~JoinAtEnd() {
    if (thread_.joinable()) thread_.join();
  }

 private:
  std::thread& thread_;
};

}  // namespace quorvan::platform
