// What the companion says, and what the operator's interrupt key says to it.

#pragma once

#include <atomic>
#include <cstdint>
#include <string>
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

// Long text for standard output. It goes out in blocks: memory never holds all of it.
class LongOutput {
 public:
  // What the text is appended to.
  std::string& text() { return text_; }

  // To be called now and then: writes what has come together when it makes a block. False when
  // more text is of no use: standard output cannot be written, or the interrupt key was pressed
  // since this began.
  bool Send();

  // Writes the rest and a line end. False when the text is not whole, which is said on standard
  // error unless the interrupt key was pressed.
  bool Finish();

 private:
  bool GivenUp() const { return !wasInterrupted_ && Interrupted(); }

  std::string text_;
  bool written_ = true;
  const bool wasInterrupted_ = Interrupted();  // while the text came about
};

}  // namespace quorvan::cli
