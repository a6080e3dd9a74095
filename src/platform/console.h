// The terminal of a console program, its interrupt key and the standard streams.

#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorvan::platform {

// What became of the arguments of main.
enum class ArgumentsState {
  kTaken,
  kOutOfMemory,
  kNoText,  // UTF-8 has no form of its own for an argument, which could be taken for another name
};

// Replaces the arguments of main by their UTF-8 form where the system passes another encoding. The
// arguments live as long as the program. Replaces nothing unless they are taken. To be called once.
ArgumentsState TakeArguments(int* argc, char*** argv);

// True when standard input is a terminal.
bool InputIsTerminal();

// True when standard error is a terminal.
bool ErrorIsTerminal();

// Columns of the terminal on standard error. 80 when standard error is no terminal or the terminal
// does not tell its width.
int TerminalColumns();

// Reads one line from standard input into `*line`, without the line end. False when the input ends
// before a line end, or when the interrupt key or a read error stops the reading; `*line` then
// holds what was read.
bool ReadLine(std::string* line);

enum class StandardStream { kOutput, kError };

// Writes `text` (UTF-8) to a standard stream. False when not all of it could be written. Throws
// nothing.
bool WriteText(StandardStream stream, std::string_view text);

// From now on the interrupt key, a request to terminate and the loss of the terminal only set
// `*flag` to 1 instead of ending the program. A signal that was ignored when the program started
// stays ignored. `flag` must live as long as the program.
void SetFlagOnInterrupt(std::atomic<std::uint32_t>* flag);

// Makes the standard streams safe for the rest of the program. A closed standard stream is opened
// on the null device, so that no file gets its handle and is written to by mistake. From now on a
// write to a closed pipe or beyond the file size limit fails instead of ending the program.
void PrepareStandardStreams();

}  // namespace quorvan::platform
