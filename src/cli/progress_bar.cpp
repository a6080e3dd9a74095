#include "cli/progress_bar.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <new>
#include <string>
#include <thread>

#include "cli/console.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/thread.h"

namespace quorvan::cli {
namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(20);
constexpr int kPollsPerRedraw = 5;
constexpr int kColumnsBesideBar = 62;
constexpr int kNarrowestBar = 8;
constexpr int kWidestBar = 40;

std::string TimeLeft(double elapsed, double share) {
  if (share <= 0.0) return "--:--";
  const auto seconds = std::lround(elapsed * (1.0 - share) / share);
  return fmt::format("{:02}:{:02}", seconds / 60, seconds % 60);
}

std::string BarLine(const JobProgress& progress, double elapsed, int columns) {
  const std::uint64_t total = progress.total();
  const std::uint64_t done = std::min(progress.done(), total);
  const double share = total == 0 ? 0.0 : static_cast<double>(done) / static_cast<double>(total);
  const int width = std::clamp(columns - kColumnsBesideBar, kNarrowestBar, kWidestBar);
  const int filled = static_cast<int>(share * width);
  return fmt::format("[{:#<{}}{:.<{}}] {}/{} {} {:5.1f}%  {} left", "", filled, "", width - filled,
                     done, total, progress.unit, 100.0 * share, TimeLeft(elapsed, share));
}

// The stage's name while there is nothing to count.
std::string StageLine(const JobProgress& progress, int columns) {
  std::string line = progress.stage();
  if (line.size() >= static_cast<std::size_t>(columns)) line.clear();
  return line;
}

void Draw(const JobProgress& progress, double started) {
  const int columns = platform::TerminalColumns();
  std::string line = progress.stage && progress.total() == 0
                         ? StageLine(progress, columns)
                         : BarLine(progress, platform::MonotonicSeconds() - started, columns);
  if (columns > 1) line.resize(std::min(line.size(), static_cast<std::size_t>(columns) - 1));
  PrintRaw("\r" + line + "\x1b[K");
}

// A bar that cannot be drawn must not end the job.
void TryToDraw(const JobProgress& progress, double started) {
  try {
    Draw(progress, started);
  } catch (const std::bad_alloc&) {
    return;
  }
}

}  // namespace

bool RunWithProgress(const std::function<void()>& job, const JobProgress& progress) {
  std::mutex mutex;
  std::condition_variable hasEnded;
  bool ended = false;
  std::thread worker;
  const bool started = platform::StartThread(&worker, [&] {
    job();
    const std::lock_guard lock(mutex);
    ended = true;
    hasEnded.notify_one();
  });
  if (!started) return false;
  const bool shows = platform::ErrorIsTerminal();
  const double startTime = platform::MonotonicSeconds();
  for (int poll = 0;; ++poll) {
    {
      std::unique_lock lock(mutex);
      if (hasEnded.wait_for(lock, kPollInterval, [&] { return ended; })) break;
    }
    if (Interrupted()) progress.requestCancel();
    if (shows && poll % kPollsPerRedraw == 0) TryToDraw(progress, startTime);
  }
  worker.join();
  if (shows) {
    TryToDraw(progress, startTime);
    PrintRaw("\n");
  }
  return true;
}

}  // namespace quorvan::cli
