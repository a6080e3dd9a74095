#include "platform/fault_guard.h"

#include <pthread.h>
#include <ucontext.h>

#include <csetjmp>
#include <csignal>
#include <mutex>

namespace quorvan::platform {
namespace {

// What the signal handler needs to leave a guarded body.
struct ActiveGuard {
  sigjmp_buf escape;
  const void* volatile address;  // of the fault; volatile, because it is read after the jump
  sigset_t signals;              // the signals that were blocked before the fault
};

// The guard of the body that this thread runs; null outside a guarded body.
thread_local ActiveGuard* activeGuard = nullptr;

struct sigaction previousAction;

// Leaves the guarded body after a fault in a view. The signal mask to restore is taken from the
// context of the fault: saving the mask on every entry into a body would cost a system call.
void HandleStorageFault(int signal, siginfo_t* info, void* context) {
  if (activeGuard != nullptr) {
    activeGuard->address = info->si_addr;
    activeGuard->signals = static_cast<ucontext_t*>(context)->uc_sigmask;
    siglongjmp(activeGuard->escape, 1);
  }
  // A fault outside guarded bodies: restore the earlier handler. The instruction then faults again
  // and reaches that handler.
  sigaction(signal, &previousAction, nullptr);
}

void InstallHandlerOnce() {
  static std::once_flag installed;
  std::call_once(installed, [] {
    struct sigaction action {};
    action.sa_sigaction = HandleStorageFault;
    action.sa_flags = SA_SIGINFO;
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
    pthread_sigmask(SIG_SETMASK, &guard.signals, nullptr);
    return {false, guard.address};
  }
  activeGuard = &guard;
  body(context);
  activeGuard = nullptr;
  return {true, nullptr};
}

}  // namespace quorvan::platform
