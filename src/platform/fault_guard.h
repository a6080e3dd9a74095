// Survives a fault while a mapped view is read or written: a medium pulled out, a file cut short.

#pragma once

namespace quorvan::platform {

struct GuardResult {
  bool completed;       // false when the body was ended by a fault in a view
  const void* address;  // where the fault happened, null when completed
};

// Runs `body(context)`. A fault of the storage behind a mapped view ends the body at once and is
// reported; every other fault ends the process as ever. Since the body may be left at any
// instruction, it must own nothing: no allocation, no object with a destructor, no lock. Calls do
// not nest. Any number of threads may run guarded bodies at the same time.
GuardResult RunGuarded(void (*body)(void* context), void* context);

// The same for a callable object that lives with the caller.
template <typename Body>
GuardResult RunGuarded(Body& body) {
  return RunGuarded([](void* context) { (*static_cast<Body*>(context))(); }, &body);
}

}  // namespace quorvan::platform
