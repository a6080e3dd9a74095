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

using platform::Language;

constexpr platform::InBoth<std::string_view> kDoneWithoutWords = {
    "コピーは作成しましたが、メモリが確保できないため、詳細を表示できません。",
    "the copy is made; no memory to tell what it mends"};

using Message = platform::InBoth<std::u16string>;

// The analysis' own words for a clip that has no copy; empty when it accepts the clip.
Message AnalysisMessage(const std::u16string& clip, const ConformResult& result) {
  if (result.analysisCode == kSuccess) return {};
  return platform::ComposeInBoth([&](Language language) {
    return LoadFailureMessage(clip, result.processCode, result.analysisCode, Method::kGenericFileIo,
                              result.hasAudioDescriptor, language);
  });
}

std::string ResultJson(const ConformArguments& arguments, const Message& message,
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
          json.Field("text", platform::ToUtf8(MendText(note, Language::kEnglish)));
        });
      }
    });
    if (result.IsDone()) return;
    json.Field("reason", result.reason.en);
    json.InBoth("reasons", result.reason);
    json.Field("result", result.analysisCode);
    json.Field("message", platform::ToUtf8(message.ja));
    json.InBoth("messages", {platform::ToUtf8(message.ja), platform::ToUtf8(message.en)});
  });
  return text;
}

std::string ResultText(const ConformArguments& arguments, Language language,
                       const ConformResult& result) {
  std::string text =
      result.mended.empty() ? Worded(language, {"整える点はありません。", "nothing to mend"})
      : arguments.check
          ? Worded(language, {"コピーを作成した場合の結果:", "a copy would mend:"})
          : Worded(language, {"構造を整えたコピーを作成しました:", "the copy mends:"});
  for (const MendNote& note : result.mended)
    text += "\n  " + platform::ToUtf8(MendText(note, language));
  return text;
}

// Tells why there is no copy, and what the copy mends. False when standard output cannot be
// written.
bool Report(const ConformArguments& arguments, Language language, const std::u16string& clip,
            const ConformResult& result) {
  const Message message = AnalysisMessage(clip, result);
  if (result.fault == ConformFault::kStopped) {
    PrintError(language,
               {"{}: 中断しました。コピーは残していません。", "{}: cancelled, no copy was left"},
               arguments.in);
  } else if (!result.IsDone()) {
    PrintErrorLine(arguments.in + ": " + result.reason.In(language));
  }
  if (!message.ja.empty()) PrintError(message.In(language));
  if (arguments.json) return PrintLine(language, ResultJson(arguments, message, result));
  return !result.IsDone() || PrintLine(language, ResultText(arguments, language, result));
}

}  // namespace

int RunConform(const ConformArguments& arguments, Language language) {
  if (arguments.out.empty() && !arguments.check) {
    PrintError(language, {"OUT または --check を指定して下さい。", "OUT is required, or --check"});
    return kWrongUsage;
  }
  const ConformRequest request{.in = platform::AbsolutePath(platform::ToUtf16(arguments.in)),
                               .out = platform::AbsolutePath(platform::ToUtf16(arguments.out)),
                               .checkOnly = arguments.check};
  WatchForInterrupts();
  JobProgress progress;
  ConformResult result;
  if (!RunWithProgress(
          language, [&] { result = ConformClip(request, &progress); }, kBytes, &progress)) {
    result.fault = ConformFault::kNoMemory;
    result.reason = {"処理用のスレッドを開始できません。", "no thread for the copy"};
  }
  bool printed = false;
  try {
    printed = Report(arguments, language, request.in, result);
  } catch (const std::bad_alloc&) {
    if (!result.IsDone()) throw;
    PrintErrorLine(kDoneWithoutWords.In(language));
    return kDone;
  }
  if (!result.IsDone()) return result.fault == ConformFault::kStopped ? kInterrupted : kFailed;
  return printed ? kDone : kFailed;
}

}  // namespace quorvan::cli
