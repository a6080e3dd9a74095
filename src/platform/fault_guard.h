// Survives a fault while a mapped view is read. A view faults when its medium is removed or its
// file is cut short.

#pragma once

namespace quorvan::platform {

struct GuardResult {
  bool completed;       // false when a fault in a view has ended the body
  const void* address;  // memory address of the fault; null when completed
};

// Runs `body(context)`. When the storage of a mapped view fails, the body is left at once, and the
// result says where. Every other fault ends the process as usual. Because the body may be left at
// any instruction, it must own nothing: no allocation, no object with a destructor, no lock. A
// guarded body must not call RunGuarded. Several threads may run guarded bodies at the same time.
GuardResult RunGuarded(void (*body)(void* context), void* context);

// Runs `body()` as RunGuarded(body, context) does; `body` is a callable object of the caller.
template <typename Body>
GuardResult RunGuarded(Body& body) {
  return RunGuarded([](void* context) { (*static_cast<Body*>(context))(); }, &body);
}

}  // namespace quorvan::platform
