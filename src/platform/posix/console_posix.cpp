#include "platform/console.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace quorvan::platform {
namespace {

constexpr int kDefaultColumns = 80;

std::atomic<std::atomic<std::uint32_t>*> interruptFlag = nullptr;
static_assert(std::atomic<std::atomic<std::uint32_t>*>::is_always_lock_free &&
              std::atomic<std::uint32_t>::is_always_lock_free);

void RaiseFlag(int) {
  if (auto* flag = interruptFlag.load()) flag->store(1);
}

}  // namespace

ArgumentsState TakeArguments(int*, char***) {
  return ArgumentsState::kTaken;
}

bool InputIsTerminal() {
  return isatty(STDIN_FILENO) == 1;
}

bool ErrorIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

int TerminalColumns() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kDefaultColumns;
  return size.ws_col;
}

bool ReadLine(std::string* line) {
  line->clear();
  char c = 0;
  while (read(STDIN_FILENO, &c, 1) == 1) {
    if (c == '\n') return true;
    line->push_back(c);
  }
  return false;
}

bool WriteText(StandardStream stream, std::string_view text) {
  std::FILE* file = stream == StandardStream::kOutput ? stdout : stderr;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return std::fflush(file) == 0 && written;
}

void SetFlagOnInterrupt(std::atomic<std::uint32_t>* flag) {
  interruptFlag = flag;
  struct sigaction action {};
  action.sa_handler = RaiseFlag;  // without SA_RESTART, so that a wait for input ends too
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction inherited {};
    sigaction(signal, nullptr, &inherited);
    if (inherited.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

void PrepareStandardStreams() {
  for (int handle = open("/dev/null", O_RDWR); handle >= 0; handle = open("/dev/null", O_RDWR)) {
    if (handle <= STDERR_FILENO) continue;
    close(handle);
    break;
  }
  struct sigaction action {};
  action.sa_handler = SIG_IGN;
  for (const int signal : {SIGPIPE, SIGXFSZ})
    sigaction(signal, &action, nullptr);
}

}  // namespace quorvan::platform
