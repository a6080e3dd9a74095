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

int Report(const APP_STATE_INFO& app, const VerifyResult& result, std::uint64_t frames,
           const std::string& file) {
  const SampleDifference& d = result.difference;
  const MXF_TIMECODE_INFO& timecode = *app.mxf->timecode;
  switch (result.state) {
    case VerifyState::kSame:
      return PrintLine(fmt::format("{}: the sources' samples in all of {} frames", file, frames))
                 ? kDone
                 : kFailed;
    case VerifyState::kDiffers:
      PrintError(fmt::format(
          "{}: differs first at {}, frame {} of the clip from 0, track {}, sample {} of the frame: "
          "{} in the clip, {} in the source, at byte {} of the file",
          file, TimecodeText(timecode, std::int64_t{timecode.startFrames} + d.entry), d.entry,
          d.track + 1, d.sample, d.found, d.wanted, d.fileOffset));
      return kFailed;
    case VerifyState::kStopped:
      PrintError(fmt::format("{}: cancelled", file));
      return kInterrupted;
    case VerifyState::kFailed:
      break;
  }
  PrintError(fmt::format("{}: {} ERR: {}{}", file,
                         platform::ToUtf8(FailureText(kStageRewrapFileIo, result.code)),
                         result.code, platform::ToUtf8(FaultDetails(app.tracks->fault, timecode))));
  return kFailed;
}

}  // namespace

int RunVerify(const VerifyArguments& arguments) {
  WatchForInterrupts();
  ClipSession session;
  if (const int status = LoadClipOrSay(arguments.file, arguments.load, &session)) return status;
  APP_STATE_INFO& app = session.app.info;
  if (const int status = CheckClipOrSay(kRewriteJob, app)) return status;
  if (const int status = PlaceAll(arguments.placement, &app)) return status;
  if (const int status = SetRange(arguments.range, kRewrapRange, &app)) return status;
  if (const int status = PrepareOrSay(kRewriteJob, &app)) return status;
  VerifyResult result{};
  JobProgress progress;
  const bool ran =
      RunWithProgress([&] { result = VerifyRewrap(app.mxfPath, app.tracks, app.mxf, &progress); },
                      "frames", &progress);
  if (!ran) {
    result = {VerifyState::kFailed, {}, static_cast<std::int32_t>(kStageRewrapFileIo) + kNoThread};
  }
  return Report(app, result, progress.total, arguments.file);
}

}  // namespace quorvan::cli
