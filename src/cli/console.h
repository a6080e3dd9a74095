// Writes the companion's output and messages, and tells whether the operator has pressed the
// interrupt key. A request to terminate and the loss of the terminal count as the interrupt key.
// Functions that take text may throw std::bad_alloc, unless they say otherwise.

#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/language.h"
#include "state/wording.h"

namespace quorvan::cli {

// Writes `text` (UTF-8 or UTF-16) and a line end to standard output. False when not all of it could
// be written; a message on standard error then says so in `language`.
bool PrintLine(platform::Language language, std::string_view text);
bool PrintLine(platform::Language language, std::u16string_view text);

// Writes a message for the operator and a line end to standard error. A failure to write is
// ignored.
void PrintError(std::u16string_view message);

// Writes the name of the program, `line` (UTF-8) and a line end to standard error. A failure to
// write is ignored. Throws nothing.
void PrintErrorLine(std::string_view line);

// Calls PrintErrorLine with `form` in `language` and the values in it.
template <typename... Values>
void PrintError(platform::Language language,
                const std::type_identity_t<WordingForm<Values...>>& form, const Values&... values) {
  PrintErrorLine(Worded(language, form, values...));
}

// Writes `text` (UTF-8) to standard error without a line end. A failure to write is ignored: the
// terminal may be closed while a job runs. Throws nothing.
void PrintRaw(std::string_view text);

// From now on the interrupt key does not end the program but only makes Interrupted true, until the
// end of the program.
void WatchForInterrupts();
// True once the interrupt key was pressed after WatchForInterrupts.
bool Interrupted();

// The flag behind Interrupted, for functions that take a stop flag: 1 from the interrupt key on,
// else 0. It lives as long as the program.
const std::atomic<std::uint32_t>* InterruptFlag();

// A long text for standard output. It is written in blocks, so that memory never holds the whole
// text.
class LongOutput {
 public:
  explicit LongOutput(platform::Language language) : language_(language) {}

  // The text that is not yet written; the caller appends to it.
  std::string& text() { return text_; }

  // Writes the text so far when it fills a block, and clears it; the caller calls it now and then.
  // False when more text is of no use: standard output cannot be written, or the interrupt key was
  // pressed after this object was made.
  bool Send();

  // Writes the rest of the text and a line end. False when not all of the text was written; a
  // message on standard error says so, unless the interrupt key was pressed after this object was
  // made.
  bool Finish();

 private:
  bool GivenUp() const { return !wasInterrupted_ && Interrupted(); }

  const platform::Language language_;
  std::string text_;
  bool written_ = true;
  const bool wasInterrupted_ = Interrupted();  // before the output began
};

}  // namespace quorvan::cli
