// Starts threads without exceptions, and joins them.

#pragma once

#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/fault_seam.h"

namespace quorvan::platform {

// Starts a thread that calls `body`, which must not throw, and puts it into `*thread`, which must
// hold no running thread. False, with `*thread` unchanged, when the system cannot start a thread or
// memory is out. Throws nothing.
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

// Waits, at the end of its scope, for the end of the thread that `*thread` then holds, if any. The
// std::thread must outlive this object.
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
