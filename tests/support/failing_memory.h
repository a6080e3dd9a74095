// Memory that runs out when a test says so.

#pragma once

namespace quorvan::test {

// From now on the `nth` allocation of this thread by new (std::nothrow) fails, from 1, and no
// other. 0 lets all succeed.
void FailAllocation(int nth);

// Whether that allocation has come to pass.
bool AllocationFailed();

}  // namespace quorvan::test
