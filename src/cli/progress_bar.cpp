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
#include "state/wording.h"

namespace quorvan::cli {
namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(20);
constexpr int kPollsPerRedraw = 5;
constexpr int kColumnsBesideBar = 70;
constexpr int kNarrowestBar = 8;
constexpr int kWidestBar = 40;

// What the bar shows besides the progress.
struct View {
  platform::Language language;
  const platform::InBoth<std::string_view>& unit;
  double started;  // MonotonicSeconds when the job began to count
};

std::string TimeLeft(double elapsed, double share) {
  if (share <= 0.0) return "--:--";
  const auto seconds = std::lround(elapsed * (1.0 - share) / share);
  return fmt::format("{:02}:{:02}", seconds / 60, seconds % 60);
}

std::string BarLine(const JobProgress& progress, const View& view, int columns) {
  const std::uint64_t total = progress.total;
  const std::uint64_t done = std::min(progress.done.load(), total);
  const double share = total == 0 ? 0.0 : static_cast<double>(done) / static_cast<double>(total);
  const int width = std::clamp(columns - kColumnsBesideBar, kNarrowestBar, kWidestBar);
  const int filled = static_cast<int>(share * width);
  const double elapsed = platform::MonotonicSeconds() - view.started;
  return Worded(view.language,
                {"[{:#<{}}{:.<{}}] {}/{} {} {:5.1f}%  残り {}",
                 "[{:#<{}}{:.<{}}] {}/{} {} {:5.1f}%  {} left"},
                "", filled, "", width - filled, done, total, view.unit.In(view.language),
                100.0 * share, TimeLeft(elapsed, share));
}

// Cuts the line where it does not fit into `columns`. Outside of ASCII, a character takes two.
void CutTo(int columns, std::u16string* line) {
  int taken = 0;
  const auto end = std::find_if(line->begin(), line->end(), [&](char16_t c) {
    taken += c < 0x80 ? 1 : 2;
    return taken > columns;
  });
  line->erase(end, line->end());
}

void Draw(const JobProgress& progress, const View& view) {
  const int columns = platform::TerminalColumns();
  const platform::Text* stage = progress.stage;
  std::u16string line = stage != nullptr && progress.total == 0
                            ? std::u16string(stage->In(view.language))
                            : platform::ToUtf16(BarLine(progress, view, columns));
  if (columns > 1) CutTo(columns - 1, &line);
  const std::string shown = platform::ToUtf8(line);
  PrintRaw("\r" + shown + "\x1b[K");
}

// Draws the bar. Without memory for the bar it draws nothing: the job must go on.
void TryToDraw(const JobProgress& progress, const View& view) {
  try {
    Draw(progress, view);
  } catch (const std::bad_alloc&) {
    return;
  }
}

}  // namespace

bool RunWithProgress(platform::Language language, const std::function<void()>& job,
                     const platform::InBoth<std::string_view>& unit, JobProgress* progress,
                     const std::function<void()>& exchange) {
  platform::WatchedThread worker;
  if (!worker.Start(job)) return false;
  const bool shows = platform::ErrorIsTerminal();
  View view{language, unit, platform::MonotonicSeconds()};
  std::uint64_t counted = 0;
  for (int poll = 0; !worker.EndsWithin(kPollInterval); ++poll) {
    if (Interrupted()) progress->cancel = 1;
    if (exchange) exchange();
    // A job that counts from 0 again has come to its next step, and so does the time left.
    if (progress->done < counted) view.started = platform::MonotonicSeconds();
    counted = progress->done;
    if (shows && poll % kPollsPerRedraw == 0) TryToDraw(*progress, view);
  }
  if (exchange) exchange();
  if (shows) {
    TryToDraw(*progress, view);
    PrintRaw("\n");
  }
  return true;
}

}  // namespace quorvan::cli
