#include "platform/thread.h"

#include <new>
#include <system_error>
#include <utility>

#include "platform/fault_seam.h"

namespace quorvan::platform {

bool StartThread(std::thread* thread, std::function<void()> body) {
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

}  // namespace quorvan::platform
