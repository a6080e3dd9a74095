#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "cli/arguments.h"
#include "cli/clip_session.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/progress_bar.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "platform/console.h"
#include "platform/path.h"
#include "platform/text.h"
#include "rewrite/rewrap_mapped.h"
#include "rewrite/rewrap_plan.h"
#include "state/clip_state.h"
#include "state/track_assignment.h"

namespace quorvan::cli {
namespace {

// Tracks that the arguments have spoken for, so that none is given twice.
using TakenTracks = std::array<bool, kMaxTracks>;

bool Take(std::uint32_t first, std::uint32_t count, TakenTracks* taken) {
  for (std::uint32_t t = first; t < std::min(first + count, kMaxTracks); ++t) {
    if ((*taken)[t]) {
      PrintError(fmt::format("track {} is given twice", t + 1));
      return false;
    }
    (*taken)[t] = true;
  }
  return true;
}

WAV_FILE_INFO* FindInLibrary(const APP_STATE_INFO& app, std::u16string_view path) {
  for (WAV_FILE_INFO* entry = app.wavList->next; entry != nullptr; entry = entry->next) {
    if (path == entry->filePath) return entry;
  }
  return nullptr;
}

// The library entry of the file, added when it is not there yet; null when it is refused.
WAV_FILE_INFO* AddToLibrary(const std::string& path, APP_STATE_INFO* app) {
  const std::u16string fullPath = platform::AbsolutePath(platform::ToUtf16(path));
  if (WAV_FILE_INFO* known = FindInLibrary(*app, fullPath)) return known;
  const int refused = AddWavFile(fullPath.c_str(), app->wavList, *app->mxf);
  if (refused != kWavOk) {
    PrintError(WavFailureText(refused, fullPath));
    return nullptr;
  }
  return app->wavList->prev;
}

int PlaceFile(const TrackArgument& argument, APP_STATE_INFO* app, TakenTracks* taken) {
  WAV_FILE_INFO* entry = AddToLibrary(argument.path, app);
  if (entry == nullptr) return kFailed;
  if (!Take(argument.track, entry->channels, taken)) return kWrongUsage;
  const AssignResult assigned =
      AssignWavFile(app, entry, static_cast<std::int32_t>(argument.track));
  if (assigned != AssignResult::kAssigned) {
    PrintError(platform::ToUtf16(argument.path + "\n") +
               std::u16string(AssignRefusal(assigned).text));
    return kFailed;
  }
  for (std::uint32_t c = 0; c < entry->channels; ++c) {
    app->tracks->rewrapSwitch[argument.track + c] = kSwitchOn;
  }
  return kDone;
}

int PlaceSilence(const std::string& text, APP_STATE_INFO* app, TakenTracks* taken) {
  const std::uint32_t tracks = UsableTracks(*app->mxf->audio);
  const auto track = ParseTrackNumber(text);
  if (!track || *track >= tracks) {
    PrintError(fmt::format("--silence {}: the clip has tracks 1 to {}", text, tracks));
    return kWrongUsage;
  }
  if (!Take(*track, 1, taken)) return kWrongUsage;
  app->tracks->rewrapSwitch[*track] = kSwitchOn;
  return kDone;
}

int PlaceAll(const std::vector<TrackArgument>& files, const std::vector<std::string>& silence,
             APP_STATE_INFO* app) {
  TakenTracks taken{};
  for (const TrackArgument& file : files) {
    if (const int status = PlaceFile(file, app, &taken)) return status;
  }
  for (const std::string& text : silence) {
    if (const int status = PlaceSilence(text, app, &taken)) return status;
  }
  return kDone;
}

bool SetPoint(const std::optional<std::string>& text, const FramePoint& absent,
              const MXF_TIMECODE_INFO& timecode, FramePoint* point) {
  *point = absent;
  if (!text) return true;
  const auto frames = ParseTimecode(*text, timecode);
  if (!frames) {
    PrintError(fmt::format("\"{}\" is no timecode of this clip", *text));
    return false;
  }
  *point = MakeFramePoint(timecode, *frames);
  return true;
}

int SetRange(const RewrapArguments& arguments, APP_STATE_INFO* app) {
  const MXF_TIMECODE_INFO& timecode = *app->mxf->timecode;
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  if (!SetPoint(arguments.in, FirstFramePoint(timecode), timecode, &tracks.inFrame) ||
      !SetPoint(arguments.out, LastFramePoint(timecode), timecode, &tracks.outFrame)) {
    return kWrongUsage;
  }
  RewrapPlan plan{};
  // No frame at all is what the engine allows and no operator means.
  if (PlanRewrap(&tracks, app->mxf, &plan) != PlanResult::kReady || plan.total == 0) {
    PrintError(JobFailureMessage(app->mxfPath, kRewriteJob, kStageRewrapMapped, kRewrapBadRange,
                                 app->useFileIo));
    return kFailed;
  }
  return kDone;
}

bool IsYes(std::string_view answer) {
  return answer == "y" || answer == "Y" || answer == "yes" || answer == "YES";
}

int ConfirmBackup(bool yes) {
  if (yes) return kDone;
  if (!platform::InputIsTerminal() || !platform::ErrorIsTerminal()) {
    PrintError("without a terminal to ask for a backup, --yes is needed; nothing was written");
    return kFailed;
  }
  PrintRaw(platform::ToUtf8(BackupQuestion()) + " [y/N] ");
  std::string answer;
  if (platform::ReadLine(&answer) && IsYes(answer)) return kDone;
  PrintError("not confirmed; nothing was written");
  return kInterrupted;
}

std::int32_t Rewrite(APP_STATE_INFO* app) {
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  app->jobKind = kRewriteJob;
  app->mxf->processCode = kStageRewrapMapped;
  const JobProgress progress{[&] { return std::uint64_t{tracks.currentFrame}; },
                             [&] { return std::uint64_t{tracks.totalFrames}; },
                             [&] { tracks.cancel = 1; }, "frames"};
  return RunWithProgress([&] { return RewrapMapped(app->mxfPath, &tracks, app->mxf); }, progress);
}

int Report(const APP_STATE_INFO& app, std::int32_t result) {
  if (result == kSuccess) {
    PrintLine(platform::ToUtf8(JobDoneMessage(app.mxfPath, kRewriteJob, app.useFileIo)));
    return kDone;
  }
  if (result == kCancelled) {
    PrintError(JobCancelledMessage(app.mxfPath, kRewriteJob, app.useFileIo));
    return kInterrupted;
  }
  PrintError(
      JobFailureMessage(app.mxfPath, kRewriteJob, app.mxf->processCode, result, app.useFileIo));
  return kFailed;
}

}  // namespace

int RunRewrap(const RewrapArguments& arguments) {
  std::vector<TrackArgument> files;
  for (const std::string& text : arguments.tracks) {
    const auto file = ParseTrackArgument(text);
    if (!file) {
      PrintError(fmt::format("--track {}: expected N=WAV with N from 1 to {}", text, kMaxTracks));
      return kWrongUsage;
    }
    files.push_back(*file);
  }
  if (files.empty() && arguments.silence.empty()) {
    PrintError("nothing to write: give --track or --silence");
    return kWrongUsage;
  }

  WatchForInterrupts();
  ClipSession session;
  if (!LoadClip(arguments.file, false, &session)) {
    PrintError(session.message);
    return kFailed;
  }
  APP_STATE_INFO& app = session.app.info;
  if (const int status = PlaceAll(files, arguments.silence, &app)) return status;
  if (const int status = SetRange(arguments, &app)) return status;
  if (const int status = ConfirmBackup(arguments.yes)) return status;
  if (Interrupted()) {
    PrintError("cancelled; nothing was written");
    return kInterrupted;
  }
  return Report(app, Rewrite(&app));
}

}  // namespace quorvan::cli
