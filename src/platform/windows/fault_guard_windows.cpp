#include "platform/fault_guard.h"

#include <windows.h>

namespace quorvan::platform {
namespace {

// What the exception handler needs to leave a guarded body.
struct ActiveGuard {
  CONTEXT escape;                // the processor's registers in front of the body
  const void* volatile address;  // of the fault; volatile, because the handler sets it
};

// The guard of the body that this thread runs; null outside a guarded body. The handler asks for it
// inside a fault, where a thread_local of the compiler might allocate.
const DWORD activeGuard = TlsAlloc();

// True for a read of a page that lies in a view and may be read: only the storage can have failed.
// Windows raises an exception of its own for this; Wine raises the exception of wild pointers.
bool IsStorageFault(const EXCEPTION_RECORD& record) {
  const bool isPageFault = record.ExceptionCode == EXCEPTION_IN_PAGE_ERROR ||
                           record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION;
  if (!isPageFault || record.ExceptionInformation[0] != 0) return false;
  const auto* address = reinterpret_cast<const void*>(record.ExceptionInformation[1]);
  MEMORY_BASIC_INFORMATION page{};
  return VirtualQuery(address, &page, sizeof page) != 0 && page.State == MEM_COMMIT &&
         page.Type == MEM_MAPPED && page.Protect == PAGE_READONLY;
}

// Leaves the guarded body after a fault in a view: the thread continues in front of the body.
LONG CALLBACK HandleStorageFault(EXCEPTION_POINTERS* fault) {
  const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
  if (!IsStorageFault(record)) return EXCEPTION_CONTINUE_SEARCH;
  auto* guard = static_cast<ActiveGuard*>(TlsGetValue(activeGuard));
  if (guard == nullptr) return EXCEPTION_CONTINUE_SEARCH;
  guard->address = reinterpret_cast<const void*>(record.ExceptionInformation[1]);
  *fault->ContextRecord = guard->escape;
  return EXCEPTION_CONTINUE_EXECUTION;
}

// Without the handler, or without a place for the guards, no body can be guarded.
const bool canGuard = AddVectoredExceptionHandler(1, HandleStorageFault) != nullptr &&
                      activeGuard != TLS_OUT_OF_INDEXES;

}  // namespace

GuardResult RunGuarded(void (*body)(void* context), void* context) {
  if (!canGuard) return {false, nullptr};
  ActiveGuard guard;
  guard.address = nullptr;
  RtlCaptureContext(&guard.escape);  // a body that faults continues here
  if (guard.address != nullptr) {
    TlsSetValue(activeGuard, nullptr);
    return {false, guard.address};
  }
  TlsSetValue(activeGuard, &guard);
  body(context);
  TlsSetValue(activeGuard, nullptr);
  return {true, nullptr};
}

}  // namespace quorvan::platform
