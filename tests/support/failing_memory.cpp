#include "support/failing_memory.h"

#include <cstddef>
#include <new>

namespace quorvan::test {
namespace {

thread_local int countdown = 0;
thread_local bool failed = false;

bool FailsNow() {
  if (countdown == 0 || --countdown > 0) return false;
  failed = true;
  return true;
}

}  // namespace

void FailAllocation(int nth) {
  countdown = nth;
  failed = false;
}

bool AllocationFailed() {
  return failed;
}

}  // namespace quorvan::test

// The program's own forms in place of the library's; what they give is freed as ever.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (quorvan::test::FailsNow()) return nullptr;
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  if (quorvan::test::FailsNow()) return nullptr;
  try {
    return ::operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
