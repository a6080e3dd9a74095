// What happens at the calls of the system that a job makes.

#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <utility>

#include "platform/fault_seam.h"

namespace quorvan::test {

// Decides what the calls come to as long as it lives; one at a time.
class CallHook {
 public:
  // Is asked before each call, on its thread, with the call's kind and its number among those of
  // its kind, from 1.
  using Decision = std::function<platform::CallOutcome(platform::SystemCall, int nth)>;

  explicit CallHook(Decision decision) {
    decision_ = std::move(decision);
    for (std::atomic<int>& calls : calls_)
      calls = 0;
    platform::SetFaultSeam([](platform::SystemCall call) {
      return decision_(call, ++calls_[static_cast<std::size_t>(call)]);
    });
  }

  // Runs `step` before the `nth` call of a kind, before all of them when `nth` is 0.
  CallHook(platform::SystemCall kind, int nth, const std::function<void()>& step)
      : CallHook([=](platform::SystemCall call, int number) {
          if (call == kind && (nth == 0 || nth == number)) step();
          return platform::CallOutcome::kAsEver;
        }) {}

  CallHook(const CallHook&) = delete;
  CallHook& operator=(const CallHook&) = delete;
  ~CallHook() { platform::SetFaultSeam(nullptr); }

 private:
  static inline Decision decision_;
  static inline std::array<std::atomic<int>, platform::kSystemCalls> calls_;
};

}  // namespace quorvan::test
