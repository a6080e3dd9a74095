#include "platform/fault_guard.h"

#include <pthread.h>
#include <ucontext.h>

#include <csetjmp>
#include <csignal>
#include <mutex>

namespace quorvan::platform {
namespace {

// The guard that the running thread is in; null outside.
struct ActiveGuard {
  sigjmp_buf escape;
  const void* volatile address;  // read behind the jump
  sigset_t signals;              // that were blocked before the fault
};
thread_local ActiveGuard* activeGuard = nullptr;

struct sigaction previousAction;

// The storage behind a view is gone: leave the guarded body. Saving the signal mask at each entry
// would cost a system call, so it is taken from where the fault has put it.
void HandleStorageFault(int signal, siginfo_t* info, void* context) {
  if (activeGuard != nullptr) {
    activeGuard->address = info->si_addr;
    activeGuard->signals = static_cast<ucontext_t*>(context)->uc_sigmask;
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
