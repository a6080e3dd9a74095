// The terminal in front of a console program, and its interrupt key.

#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace quorvan::platform {

// Whether standard input or standard error is a terminal.
bool InputIsTerminal();
bool ErrorIsTerminal();

// Columns of the terminal behind standard error; 80 when there is none or it does not tell.
int TerminalColumns();

// Reads one line from standard input without its line end. False at the end of the input and when
// the interrupt key cut the reading short.
bool ReadLine(std::string* line);

// From now on the interrupt key, a request to terminate and the loss of the terminal set `*flag` to
// 1 and do nothing else, unless the program was started with them ignored. `flag` must live as long
// as the program.
void SetFlagOnInterrupt(std::atomic<std::uint32_t>* flag);

// Makes the standard streams safe for what follows: one that is closed leads to nothing, so that no
// file takes its place, and output that cannot be written fails instead of ending the program.
void PrepareStandardStreams();

}  // namespace quorvan::platform
