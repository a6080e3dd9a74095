#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/progress_bar.h"
#include "conform/conform.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quorvan::cli {

int RunConform(const ConformArguments& arguments) {
  const std::u16string in = platform::AbsolutePath(platform::ToUtf16(arguments.in));
  const std::u16string out = platform::AbsolutePath(platform::ToUtf16(arguments.out));
  WatchForInterrupts();
  JobProgress progress;
  ConformResult result;
  const bool ran = RunWithProgress([&] { result = ConformClip({.in = in, .out = out}, &progress); },
                                   "bytes", &progress);
  if (!ran) {
    result.fault = ConformFault::kNoMemory;
    result.reason = "no thread for the copy";
  }

  if (result.IsDone()) return kDone;
  if (result.fault == ConformFault::kCancelled) {
    PrintError(fmt::format("{}: cancelled, no copy was left", arguments.in));
    return kInterrupted;
  }
  PrintError(fmt::format("{}: {}", arguments.in, result.reason));
  if (result.analysisCode != kSuccess) {
    PrintError(LoadFailureMessage(in, result.processCode, result.analysisCode,
                                  Method::kMemoryMapping, result.hasAudioDescriptor));
  }
  return kFailed;
}

}  // namespace quorvan::cli
