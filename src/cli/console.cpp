#include "cli/console.h"

#include <string>

#include "platform/console.h"
#include "platform/text.h"

namespace quorvan::cli {
namespace {

using platform::Language;
using platform::StandardStream;
using platform::WriteText;

constexpr std::size_t kBlockBytes = 65536;

std::atomic<std::uint32_t> interrupted = 0;

void SayNotWritten(Language language) {
  PrintError(language, {"標準出力に書込めません。", "standard output cannot be written"});
}

}  // namespace

bool PrintLine(Language language, std::string_view text) {
  const bool written = WriteText(StandardStream::kOutput, std::string(text) + "\n");
  if (!written) SayNotWritten(language);
  return written;
}

bool PrintLine(Language language, std::u16string_view text) {
  return PrintLine(language, platform::ToUtf8(text));
}

bool LongOutput::Send() {
  if (text_.size() >= kBlockBytes) {
    written_ = written_ && WriteText(StandardStream::kOutput, text_);
    text_.clear();
  }
  return written_ && !GivenUp();
}

bool LongOutput::Finish() {
  if (GivenUp()) return false;
  text_ += '\n';
  written_ = written_ && WriteText(StandardStream::kOutput, text_);
  if (!written_) SayNotWritten(language_);
  return written_;
}

void PrintError(std::u16string_view message) {
  PrintRaw(platform::ToUtf8(message) + "\n");
}

void PrintErrorLine(std::string_view line) {
  for (const std::string_view part : {std::string_view("mxf-quorvan-cli: "), line, {"\n"}})
    PrintRaw(part);
}

void PrintRaw(std::string_view text) {
  WriteText(StandardStream::kError, text);
}

void WatchForInterrupts() {
  platform::SetFlagOnInterrupt(&interrupted);
}

bool Interrupted() {
  return interrupted == 1;
}

const std::atomic<std::uint32_t>* InterruptFlag() {
  return &interrupted;
}

}  // namespace quorvan::cli
