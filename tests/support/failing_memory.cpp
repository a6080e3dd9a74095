#include "support/failing_memory.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace quorvan::test {
namespace {

std::atomic<int> countdown = 0;
std::atomic<bool> failed = false;

bool FailsNow() {
  if (countdown.load(std::memory_order_relaxed) <= 0 || countdown.fetch_sub(1) != 1) return false;
  failed = true;
  return true;
}

}  // namespace

void FailAllocation(int nth) {
  failed = false;
  countdown = nth;
}

bool AllocationFailed() {
  return failed;
}

}  // namespace quorvan::test

// The program's own forms in place of the library's.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return quorvan::test::FailsNow() ? nullptr : std::malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept {
  return operator new(size, nothrow);
}
void* operator new(std::size_t size) {
  void* memory = operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
