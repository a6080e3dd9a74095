#include <fmt/format.h>

#include "cli/clip_session.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/job_setup.h"
#include "cli/progress_bar.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "platform/text.h"
#include "rewrite/verify.h"
#include "state/clip_text.h"

namespace quorvan::cli {
namespace {

using platform::Language;

int Report(const ClipSession& session, const VerifyResult& result, std::uint64_t frames,
           const std::string& file) {
  const APP_STATE_INFO& app = session.app.info;
  const Language language = session.language;
  const SampleDifference& d = result.difference;
  const MXF_TIMECODE_INFO& timecode = *app.mxf->timecode;
  switch (result.state) {
    case VerifyState::kSame:
      return PrintLine(language, Worded(language,
                                        {"{}: {} フレームの全てのサンプルがソースと一致しました。",
                                         "{}: the sources' samples in all of {} frames"},
                                        file, frames))
                 ? kDone
                 : kFailed;
    case VerifyState::kDiffers:
      PrintError(language,
                 {"{}: 最初の相違は {}、クリップの {} フレーム目(0から)、トラック "
                  "{}、フレーム内のサンプル {} です。"
                  "クリップの値は {}、ソースの値は {}、ファイル内の位置は {} バイトです。",
                  "{}: differs first at {}, frame {} of the clip from 0, track {}, sample {} of "
                  "the frame: "
                  "{} in the clip, {} in the source, at byte {} of the file"},
                 file, TimecodeText(timecode, std::int64_t{timecode.startFrames} + d.entry),
                 d.entry, d.track + 1, d.sample, d.found, d.wanted, d.fileOffset);
      return kFailed;
    case VerifyState::kStopped:
      PrintError(language, {"{}: 中断しました。", "{}: cancelled"}, file);
      return kInterrupted;
    case VerifyState::kFailed:
      break;
  }
  PrintErrorLine(fmt::format(
      "{}: {} ERR: {}{}", file,
      platform::ToUtf8(FailureText(kStageRewrapFileIo, result.code, language)), result.code,
      platform::ToUtf8(FaultDetails(app.tracks->fault, timecode, language))));
  return kFailed;
}

}  // namespace

int RunVerify(const VerifyArguments& arguments, Language language) {
  WatchForInterrupts();
  ClipSession session(language);
  if (const int status = LoadClipOrSay(arguments.file, arguments.load, &session)) return status;
  APP_STATE_INFO& app = session.app.info;
  if (const int status = CheckClipOrSay(kRewriteJob, &session)) return status;
  if (const int status = PlaceAll(arguments.placement, &session)) return status;
  if (const int status = SetRange(arguments.range, kRewrapRange, &session)) return status;
  if (const int status = PrepareOrSay(kRewriteJob, &session)) return status;
  VerifyResult result{};
  JobProgress progress;
  const bool ran = RunWithProgress(
      language, [&] { result = VerifyRewrap(app.mxfPath, app.tracks, app.mxf, &progress); },
      kFrames, &progress);
  if (!ran) {
    result = {VerifyState::kFailed, {}, static_cast<std::int32_t>(kStageRewrapFileIo) + kNoThread};
  }
  return Report(session, result, progress.total, arguments.file);
}

}  // namespace quorvan::cli
