// What the companion says, and what the operator's interrupt key says to it.

#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

namespace quorvan::cli {

// Writes text and a line end to standard output. False, and said on standard error, when
// it could not be written whole.
bool PrintLine(std::string_view text);
bool PrintLine(std::u16string_view text);

// Writes a message, or an English line with the program's name in front, to standard error.
void PrintError(std::u16string_view message);
void PrintError(std::string_view line);

// Writes text as it is to standard error.
void PrintRaw(std::string_view text);

// From now on the interrupt key only makes Interrupted() true.
void WatchForInterrupts();
bool Interrupted();

// What Interrupted tells, for those who look by themselves: 1 from the interrupt key on.
const std::atomic<std::uint32_t>* InterruptFlag();

}  // namespace quorvan::cli
