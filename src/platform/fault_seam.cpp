#include "platform/fault_seam.h"

#include <atomic>

namespace quorvan::platform {
namespace {

std::atomic<FaultSeam> activeSeam = nullptr;

}  // namespace

void SetFaultSeam(FaultSeam seam) {
  activeSeam = seam;
}

CallOutcome OutcomeOf(SystemCall call) {
  const FaultSeam seam = activeSeam.load(std::memory_order_relaxed);
  return seam == nullptr ? CallOutcome::kAsEver : seam(call);
}

}  // namespace quorvan::platform
