#include <fmt/format.h>

#include <new>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/json_writer.h"
#include "cli/progress_bar.h"
#include "conform/conform.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quorvan::cli {
namespace {

// The analysis' own words for a clip that has no copy; empty when it accepts the clip.
std::u16string AnalysisMessage(const std::u16string& clip, const ConformResult& result) {
  if (result.analysisCode == kSuccess) return {};
  return LoadFailureMessage(clip, result.processCode, result.analysisCode, Method::kGenericFileIo,
                            result.hasAudioDescriptor);
}

std::string ResultJson(const ConformArguments& arguments, const std::u16string& message,
                       const ConformResult& result) {
  std::string text;
  JsonWriter json(&text);
  json.Object({}, [&] {
    json.Field("done", result.IsDone() ? 1 : 0);
    json.Field("check", arguments.check ? 1 : 0);
    json.Field("frames", result.frames);
    json.Array("mended", [&] {
      for (const MendNote& note : result.mended) {
        json.Object({}, [&] {
          json.Field("name", MendName(note.mend));
          json.Field("count", note.count);
          json.Field("text", MendText(note));
        });
      }
    });
    if (result.IsDone()) return;
    json.Field("reason", result.reason);
    json.Field("result", result.analysisCode);
    json.Field("message", platform::ToUtf8(message));
  });
  return text;
}

std::string ResultText(const ConformArguments& arguments, const ConformResult& result) {
  std::string text = result.mended.empty() ? "nothing to mend"
                     : arguments.check     ? "a copy would mend:"
                                           : "the copy mends:";
  for (const MendNote& note : result.mended)
    text += fmt::format("\n  {}", MendText(note));
  return text;
}

// Tells why there is no copy, and what the copy mends. False when standard output cannot be
// written.
bool Report(const ConformArguments& arguments, const std::u16string& clip,
            const ConformResult& result) {
  const std::u16string message = AnalysisMessage(clip, result);
  if (!result.IsDone()) {
    const bool stopped = result.fault == ConformFault::kStopped;
    PrintError(fmt::format("{}: {}", arguments.in,
                           stopped ? "cancelled, no copy was left" : result.reason));
    if (!message.empty()) PrintError(message);
  }
  if (arguments.json) return PrintLine(ResultJson(arguments, message, result));
  return !result.IsDone() || PrintLine(ResultText(arguments, result));
}

}  // namespace

int RunConform(const ConformArguments& arguments) {
  if (arguments.out.empty() && !arguments.check) {
    PrintError("OUT is required, or --check");
    return kWrongUsage;
  }
  const ConformRequest request{.in = platform::AbsolutePath(platform::ToUtf16(arguments.in)),
                               .out = platform::AbsolutePath(platform::ToUtf16(arguments.out)),
                               .checkOnly = arguments.check};
  WatchForInterrupts();
  JobProgress progress;
  ConformResult result;
  if (!RunWithProgress([&] { result = ConformClip(request, &progress); }, "bytes", &progress)) {
    result.fault = ConformFault::kNoMemory;
    result.reason = "no thread for the copy";
  }
  bool printed = false;
  try {
    printed = Report(arguments, request.in, result);
  } catch (const std::bad_alloc&) {
    if (!result.IsDone()) throw;
    PrintRaw("mxf-quorvan-cli: the copy is made; no memory to tell what it mends\n");
    return kDone;
  }
  if (!result.IsDone()) return result.fault == ConformFault::kStopped ? kInterrupted : kFailed;
  return printed ? kDone : kFailed;
}

}  // namespace quorvan::cli
