// Memory that runs out when a test says so.

#pragma once

namespace quorvan::test {

// From now on the `nth` allocation by new, from 1, on whatever thread, fails, and no other. 0 lets
// all succeed.
void FailAllocation(int nth);

// Whether that allocation has come to pass.
bool AllocationFailed();

}  // namespace quorvan::test
