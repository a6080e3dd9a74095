// Starts threads without exceptions, and joins them.

#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
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

// A thread for whose end others can wait with a time limit. The destructor waits without a limit.
class WatchedThread {
 public:
  WatchedThread() = default;
  WatchedThread(const WatchedThread&) = delete;
  WatchedThread& operator=(const WatchedThread&) = delete;
  ~WatchedThread() {
    if (thread_.joinable()) thread_.join();
  }

  // Runs `body`, which must not throw, on the thread. To be called once. False when the system has
  // no thread or no memory for it.
  template <typename Body>
  bool Start(Body body) {
    return StartThread(&thread_, [this, run = std::move(body)] {
      run();
      const std::lock_guard lock(mutex_);
      ended_ = true;
      hasEnded_.notify_one();
    });
  }

  // True when `body` has returned before `time` is over.
  bool EndsWithin(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    return hasEnded_.wait_for(lock, time, [this] { return ended_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable hasEnded_;
  bool ended_ = false;
  std::thread thread_;
};

// The destructor joins the thread that `*thread` holds at that moment, if it holds a thread. The
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
