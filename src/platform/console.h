// The terminal in front of a console program, and its interrupt key.

#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace quorvan::platform {

bool InputIsTerminal();
bool OutputIsTerminal();

// Columns of the terminal behind standard error; 80 when there is none or it does not tell.
int TerminalColumns();

// Reads one line from standard input without its line end. False at the end of the input.
bool ReadLine(std::string* line);

// From now on the interrupt key and a request to terminate set `*flag` to 1 and do nothing else.
// `flag` must outlive the program's last use of it; null restores the system's own behaviour.
void SetFlagOnInterrupt(std::atomic<std::uint32_t>* flag);

}  // namespace quorvan::platform
