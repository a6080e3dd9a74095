// Where the tests make calls of the operating system fail. The program itself never sets a seam.

#pragma once

namespace quorvan::platform {

// The calls that src/platform makes on behalf of its callers.
enum class SystemCall {
  kOpen,
  kLock,
  kSize,
  kRead,
  kWrite,
  kGatheredWrite,
  kMap,
  kFlush,
  kClose,
  kTimes,
  kRename,
  kThread,
};
inline constexpr int kSystemCalls = static_cast<int>(SystemCall::kThread) + 1;

// What a call comes to.
enum class CallOutcome {
  kAsEver,         // what the system makes of it
  kFails,          // an error; nothing was done, except that a failing close does close
  kComesShort,     // a transfer of half the bytes; a call that transfers none is made as ever
  kIsInterrupted,  // nothing was done, and the system would have it repeated
};

// Asked before each call, on the thread that makes the call.
using FaultSeam = CallOutcome (*)(SystemCall call);

// From now on `seam` decides the outcome of calls; null leaves all of them to the system.
void SetFaultSeam(FaultSeam seam);

// What the call that is about to be made comes to; kAsEver without a seam.
CallOutcome OutcomeOf(SystemCall call);

}  // namespace quorvan::platform
