#include "platform/fault_guard.h"

#include <csetjmp>
#include <csignal>
#include <mutex>

namespace quorvan::platform {
namespace {

// The guard that the running thread is in; null outside.
struct ActiveGuard {
  sigjmp_buf escape;
  const void* volatile address;  // read behind the jump
};
thread_local ActiveGuard* activeGuard = nullptr;

struct sigaction previousAction;

// The storage behind a view is gone: leave the guarded body. The signal stays unblocked
// (SA_NODEFER), so the jump has no mask to restore.
void HandleStorageFault(int signal, siginfo_t* info, void*) {
  if (activeGuard != nullptr) {
    activeGuard->address = info->si_addr;
    siglongjmp(activeGuard->escape, 1);
  }
  // Not ours: hand it back to what stood here before; the instruction then faults again.
  sigaction(signal, &previousAction, nullptr);
}

void InstallHandlerOnce() {
  static std::once_flag installed;
  std::call_once(installed, [] {
    struct sigaction action {};
    action.sa_sigaction = HandleStorageFault;
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    sigemptyset(&action.sa_mask);
    sigaction(SIGBUS, &action, &previousAction);
  });
}

}  // namespace

GuardResult RunGuarded(void (*body)(void* context), void* context) {
  InstallHandlerOnce();
  ActiveGuard guard;
  guard.address = nullptr;
  if (sigsetjmp(guard.escape, 0) != 0) {
    activeGuard = nullptr;
    return {false, guard.address};
  }
  activeGuard = &guard;
  body(context);
  activeGuard = nullptr;
  return {true, nullptr};
}

}  // namespace quorvan::platform
