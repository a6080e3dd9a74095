#include "cli/progress_bar.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <new>
#include <string>

#include "cli/console.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/text.h"
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

std::string BarLine(const JobProgress& progress, std::string_view unit, double elapsed,
                    int columns) {
  const std::uint64_t total = progress.total;
  const std::uint64_t done = std::min(progress.done.load(), total);
  const double share = total == 0 ? 0.0 : static_cast<double>(done) / static_cast<double>(total);
  const int width = std::clamp(columns - kColumnsBesideBar, kNarrowestBar, kWidestBar);
  const int filled = static_cast<int>(share * width);
  return fmt::format("[{:#<{}}{:.<{}}] {}/{} {} {:5.1f}%  {} left", "", filled, "", width - filled,
                     done, total, unit, 100.0 * share, TimeLeft(elapsed, share));
}

// The text of the stage; empty when the line has no room for it.
std::string StageLine(const char16_t* stage, int columns) {
  std::string line = platform::ToUtf8(stage);
  if (line.size() >= static_cast<std::size_t>(columns)) line.clear();
  return line;
}

void Draw(const JobProgress& progress, std::string_view unit, double started) {
  const int columns = platform::TerminalColumns();
  const char16_t* stage = progress.stage;
  std::string line = stage != nullptr && progress.total == 0
                         ? StageLine(stage, columns)
                         : BarLine(progress, unit, platform::MonotonicSeconds() - started, columns);
  if (columns > 1) line.resize(std::min(line.size(), static_cast<std::size_t>(columns) - 1));
  PrintRaw("\r" + line + "\x1b[K");
}

// Draws the bar. Without memory for the bar it draws nothing: the job must go on.
void TryToDraw(const JobProgress& progress, std::string_view unit, double started) {
  try {
    Draw(progress, unit, started);
  } catch (const std::bad_alloc&) {
    return;
  }
}

}  // namespace

bool RunWithProgress(const std::function<void()>& job, std::string_view unit, JobProgress* progress,
                     const std::function<void()>& exchange) {
  platform::WatchedThread worker;
  if (!worker.Start(job)) return false;
  const bool shows = platform::ErrorIsTerminal();
  const double startTime = platform::MonotonicSeconds();
  for (int poll = 0; !worker.EndsWithin(kPollInterval); ++poll) {
    if (Interrupted()) progress->cancel = 1;
    if (exchange) exchange();
    if (shows && poll % kPollsPerRedraw == 0) TryToDraw(*progress, unit, startTime);
  }
  if (exchange) exchange();
  if (shows) {
    TryToDraw(*progress, unit, startTime);
    PrintRaw("\n");
  }
  return true;
}

}  // namespace quorvan::cli
