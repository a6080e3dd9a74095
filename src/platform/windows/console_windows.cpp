#include "platform/console.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <vector>

#include "platform/text.h"
#include "platform/windows/wide_text.h"

namespace quorvan::platform {
namespace {

constexpr int kDefaultColumns = 80;
constexpr std::size_t kConsoleBytes = 1024;  // of UTF-8, for one call of the system

std::atomic<std::atomic<std::uint32_t>*> interruptFlag = nullptr;

bool IsTerminal(DWORD stream) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(stream), &mode);
}

// Runs on a thread of the system's own. After a request to terminate and the loss of the terminal
// the system ends the process as soon as this function returns, or after some seconds: the function
// waits, so that the program can come to an end within this time.
BOOL WINAPI RaiseFlag(DWORD event) {
  if (auto* flag = interruptFlag.load()) flag->store(1);
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
  return TRUE;
}

// Appends to `*line` what `next` reads, one character at a time, up to a line end, and takes the
// line end off. False when `next` has no more characters before.
template <typename Character, typename Next>
bool AppendLine(std::basic_string<Character>* line, Next next) {
  for (Character c = 0; next(&c);) {
    if (c == '\n') {
      if (!line->empty() && line->back() == '\r') line->pop_back();
      return true;
    }
    line->push_back(c);
  }
  return false;
}

// The length of the longest part of `text`, from its start on, that fits a call of the console and
// does not end inside a character.
std::size_t ConsolePart(std::string_view text) {
  std::size_t part = std::min(text.size(), kConsoleBytes);
  const auto isInside = [&](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
  };
  while (part < text.size() && part > 1 && isInside(part))
    --part;
  return part;
}

bool WriteToConsole(HANDLE console, std::string_view text) {
  while (!text.empty()) {
    std::array<wchar_t, kConsoleBytes> wide;
    const std::size_t part = ConsolePart(text);
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(part),
                                           wide.data(), static_cast<int>(wide.size()));
    if (length <= 0) return false;
    DWORD written = 0;
    for (DWORD done = 0; done < static_cast<DWORD>(length); done += written) {
      const DWORD rest = static_cast<DWORD>(length) - done;
      if (!WriteConsoleW(console, &wide[done], rest, &written, nullptr) || written == 0)
        return false;
    }
    text.remove_prefix(part);
  }
  return true;
}

bool WriteToFile(HANDLE file, std::string_view text) {
  while (!text.empty()) {
    DWORD written = 0;
    const auto part = static_cast<DWORD>(std::min<std::size_t>(text.size(), MAXLONG));
    if (!WriteFile(file, text.data(), part, &written, nullptr) || written == 0) return false;
    text.remove_prefix(written);
  }
  return true;
}

// Opens a standard stream that leads nowhere on the null device.
void OpenWhenClosed(DWORD stream) {
  const HANDLE handle = GetStdHandle(stream);
  if (handle != nullptr && GetFileType(handle) != FILE_TYPE_UNKNOWN) return;
  SetStdHandle(stream,
               CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                           nullptr, OPEN_EXISTING, 0, nullptr));
}

// The terminal of standard error follows the escape sequences of the progress bar from now on.
void FollowEscapeSequences() {
  const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode = 0;
  if (GetConsoleMode(error, &mode)) {
    SetConsoleMode(error, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  }
}

// The arguments of the process. Throws std::bad_alloc.
std::vector<std::u16string> Arguments() {
  int count = 0;
  const std::unique_ptr<wchar_t*, void (*)(void*)> wide(
      CommandLineToArgvW(GetCommandLineW(), &count), [](void* list) { LocalFree(list); });
  if (wide == nullptr) throw std::bad_alloc();
  std::vector<std::u16string> arguments;
  for (int i = 0; i < count; ++i)
    arguments.push_back(FromWide(wide.get()[i]));
  return arguments;
}

}  // namespace

ArgumentsState TakeArguments(int* argc, char*** argv) {
  static std::vector<std::string> arguments;
  static std::vector<char*> pointers;
  try {
    for (const std::u16string& argument : Arguments()) {
      arguments.push_back(ToUtf8(argument));
      if (ToUtf16(arguments.back()) != argument) return ArgumentsState::kNoText;
    }
    for (std::string& argument : arguments)
      pointers.push_back(argument.data());
    pointers.push_back(nullptr);
  } catch (const std::bad_alloc&) {
    return ArgumentsState::kOutOfMemory;
  }
  *argc = static_cast<int>(arguments.size());
  *argv = pointers.data();
  return ArgumentsState::kTaken;
}

bool InputIsTerminal() {
  return IsTerminal(STD_INPUT_HANDLE);
}

bool ErrorIsTerminal() {
  return IsTerminal(STD_ERROR_HANDLE);
}

int TerminalColumns() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info)) return kDefaultColumns;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

bool ReadLine(std::string* line) {
  line->clear();
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  if (!InputIsTerminal()) {
    return AppendLine(line, [&](char* c) {
      DWORD got = 0;
      return ReadFile(input, c, 1, &got, nullptr) && got == 1;
    });
  }
  std::wstring wide;
  const bool whole = AppendLine(&wide, [&](wchar_t* c) {
    DWORD got = 0;
    return ReadConsoleW(input, c, 1, &got, nullptr) && got == 1;
  });
  *line = ToUtf8(FromWide(wide));
  return whole;
}

bool WriteText(StandardStream stream, std::string_view text) {
  const DWORD name = stream == StandardStream::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE;
  const HANDLE handle = GetStdHandle(name);
  return IsTerminal(name) ? WriteToConsole(handle, text) : WriteToFile(handle, text);
}

void SetFlagOnInterrupt(std::atomic<std::uint32_t>* flag) {
  interruptFlag = flag;
  SetConsoleCtrlHandler(RaiseFlag, TRUE);
}

void PrepareStandardStreams() {
  for (const DWORD stream : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE})
    OpenWhenClosed(stream);
  FollowEscapeSequences();
}

}  // namespace quorvan::platform
