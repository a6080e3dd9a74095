#include "platform/console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <iostream>

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

bool InputIsTerminal() {
  return isatty(STDIN_FILENO) == 1;
}

bool OutputIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

int TerminalColumns() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kDefaultColumns;
  return size.ws_col;
}

bool ReadLine(std::string* line) {
  return static_cast<bool>(std::getline(std::cin, *line));
}

void SetFlagOnInterrupt(std::atomic<std::uint32_t>* flag) {
  interruptFlag = flag;
  struct sigaction action {};
  action.sa_handler = flag != nullptr ? RaiseFlag : SIG_DFL;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

}  // namespace quorvan::platform
