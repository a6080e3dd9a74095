// Threads whose start may fail.

#pragma once

#include <functional>
#include <thread>

namespace quorvan::platform {

// Starts a thread that runs `body`, which must not throw, and hands it over in `*thread`. False,
// with
// `*thread` as it was, when the system has no thread or no memory for it.
bool StartThread(std::thread* thread, std::function<void()> body);

}  // namespace quorvan::platform
