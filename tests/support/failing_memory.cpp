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

void* Allocate(std::size_t size) noexcept {
  return FailsNow() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* AllocateOrThrow(std::size_t size) {
  void* memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
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
void* operator new(std::size_t size) {
  return quorvan::test::AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return quorvan::test::AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return quorvan::test::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return quorvan::test::Allocate(size);
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
