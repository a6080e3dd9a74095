// The place at which tests make calls of the operating system fail. The program itself never sets a
// seam.

#pragma once

namespace quorvan::platform {

// The kinds of system calls at which a seam is asked.
enum class SystemCall {
  kOpen,
  kLock,  // on Windows a part of kOpen
  kSize,
  kRead,
  kCachedRead,  // a read of bytes that memory holds already
  kWrite,       // also the change of a file's size
  kGatheredWrite,
  kMap,
  kFlush,
  kClose,
  kTimes,  // reading and setting of file times
  kRename,
  kThread,  // the start of a thread
};
inline constexpr int kSystemCalls = static_cast<int>(SystemCall::kThread) + 1;

// What happens to a call.
enum class CallOutcome {
  kAsEver,         // the call is made unchanged
  kFails,          // the call is not made and fails; a close is made, and then fails
  kComesShort,     // a read or write transfers half the bytes; other calls are made unchanged
  kIsInterrupted,  // the call is not made and fails as if interrupted by a signal; closes, maps and
                   // starts of threads are made unchanged, and so is every call on Windows, which
                   // has no such failure
};

// Called before each call of a kind of SystemCall, on the thread that makes the call. Decides what
// happens to the call.
using FaultSeam = CallOutcome (*)(SystemCall call);

// From now on `seam` decides what happens to calls. With null all calls are made unchanged.
void SetFaultSeam(FaultSeam seam);

// Asks the seam what happens to a call of kind `call` that is about to be made. kAsEver without a
// seam.
CallOutcome OutcomeOf(SystemCall call);

}  // namespace quorvan::platform
