#include "cli/job_setup.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "cli/arguments.h"
#include "cli/console.h"
#include "job/job_steps.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "platform/path.h"
#include "platform/text.h"
#include "state/clip_state.h"
#include "state/track_assignment.h"
#include "wav/wav_library.h"

namespace quorvan::cli {
namespace {

using platform::Language;

// Flags by track (from 0), true for a track that an argument has named. No track may be given
// twice.
using TakenTracks = std::array<bool, kMaxTracks>;

// Marks `count` tracks from `first` on as named. False, with a message on standard error, when one
// of them was named before.
bool Take(Language language, std::uint32_t first, std::uint32_t count, TakenTracks* taken) {
  for (std::uint32_t t = first; t < std::min(first + count, kMaxTracks); ++t) {
    if ((*taken)[t]) {
      PrintError(language, {"トラック {} が2回指定されています。", "track {} is given twice"},
                 t + 1);
      return false;
    }
    (*taken)[t] = true;
  }
  return true;
}

// The library entry of the file at `path`, added when the library does not hold it yet. Null, with
// a message on standard error, when the file is refused.
WAV_FILE_INFO* AddToLibrary(const std::string& path, ClipSession* session) {
  APP_STATE_INFO* app = &session->app.info;
  const std::u16string fullPath = platform::AbsolutePath(platform::ToUtf16(path));
  if (WAV_FILE_INFO* known = FindWavFile(*app->wavList, fullPath)) return known;
  const WavResult refused = AddWavFile(fullPath.c_str(), app->wavList, *app->mxf, InterruptFlag());
  if (refused != kWavOk) {
    PrintError(WavFailureText(refused, fullPath, session->language));
    return nullptr;
  }
  return app->wavList->prev;
}

int PlaceFile(const TrackArgument& argument, ClipSession* session, TakenTracks* taken) {
  APP_STATE_INFO* app = &session->app.info;
  WAV_FILE_INFO* entry = AddToLibrary(argument.path, session);
  if (entry == nullptr) return Interrupted() ? kInterrupted : kFailed;
  if (!Take(session->language, argument.track, entry->channels, taken)) return kWrongUsage;
  const AssignResult assigned =
      AssignWavFile(app, entry, static_cast<std::int32_t>(argument.track));
  if (assigned != AssignResult::kAssigned) {
    PrintError(platform::ToUtf16(argument.path + "\n") +
               std::u16string(AssignRefusal(assigned, session->language).text));
    return kFailed;
  }
  for (std::uint32_t c = 0; c < entry->channels; ++c) {
    app->tracks->rewrapSwitch[argument.track + c] = kSwitchOn;
  }
  return kDone;
}

int PlaceSilence(const std::string& text, ClipSession* session, TakenTracks* taken) {
  APP_STATE_INFO* app = &session->app.info;
  const std::uint32_t tracks = UsableTracks(*app->mxf->audio);
  const auto track = ParseTrackNumber(text);
  if (!track || *track >= tracks) {
    PrintError(session->language,
               {"--silence {}: クリップのトラックは 1 から {} までです。",
                "--silence {}: the clip has tracks 1 to {}"},
               text, tracks);
    return kWrongUsage;
  }
  if (!Take(session->language, *track, 1, taken)) return kWrongUsage;
  app->tracks->rewrapSwitch[*track] = kSwitchOn;
  return kDone;
}

bool ReadTracks(const PlacementArguments& arguments, Language language,
                std::vector<TrackArgument>* files) {
  for (const std::string& text : arguments.tracks) {
    const auto file = ParseTrackArgument(text);
    if (!file) {
      PrintError(language,
                 {"--track {}: N=WAV の形で指定して下さい。N は 1 から {} までです。",
                  "--track {}: expected N=WAV with N from 1 to {}"},
                 text, kMaxTracks);
      return false;
    }
    files->push_back(*file);
  }
  if (!files->empty() || !arguments.silence.empty()) return true;
  PrintError(language, {"トラックが指定されていません。--track または --silence を指定して下さい。",
                        "no track is named: give --track or --silence"});
  return false;
}

}  // namespace

int PlaceAll(const PlacementArguments& arguments, ClipSession* session) {
  std::vector<TrackArgument> files;
  if (!ReadTracks(arguments, session->language, &files)) return kWrongUsage;
  TakenTracks taken{};
  for (const TrackArgument& file : files) {
    if (const int status = PlaceFile(file, session, &taken)) return status;
  }
  for (const std::string& text : arguments.silence) {
    if (const int status = PlaceSilence(text, session, &taken)) return status;
  }
  return kDone;
}

namespace {

bool SetPoint(const std::optional<std::string>& text, const FramePoint& absent,
              const ClipSession& session, FramePoint* point) {
  const MXF_TIMECODE_INFO& timecode = session.app.mxf.timecode;
  *point = absent;
  if (!text) return true;
  const auto frames = ParseTimecode(*text, timecode);
  if (!frames) {
    PrintError(session.language,
               {"\"{}\" はこのクリップのタイムコードではありません。",
                "\"{}\" is no timecode of this clip"},
               *text);
    return false;
  }
  *point = MakeFramePoint(timecode, *frames);
  return true;
}

}  // namespace

int SetRange(const RangeArguments& arguments, const RangeFields& fields, ClipSession* session) {
  const MXF_TIMECODE_INFO& timecode = session->app.mxf.timecode;
  AUDIOTRACK_IO_INFO& tracks = session->app.tracks;
  if (!SetPoint(arguments.in, FirstFramePoint(timecode), *session, &(tracks.*fields.in)) ||
      !SetPoint(arguments.out, LastFramePoint(timecode), *session, &(tracks.*fields.out))) {
    return kWrongUsage;
  }
  return kDone;
}

namespace {

int SayRefusal(JobKind kind, std::int32_t result, ClipSession* session) {
  if (result == kSuccess) return kDone;
  const APP_STATE_INFO& app = session->app.info;
  const std::uint32_t stage = JobProcessCode(kind, app.useFileIo);
  session->result = result;
  session->message = platform::ComposeInBoth([&](Language language) {
    return JobRefusalMessage(app.mxfPath, result, FailureText(stage, result, language),
                             app.useFileIo);
  });
  PrintError(session->message.In(session->language));
  return kFailed;
}

}  // namespace

int CheckClipOrSay(JobKind kind, ClipSession* session) {
  return SayRefusal(kind, CheckClipFor(kind, session->app.info).result, session);
}

int PrepareOrSay(JobKind kind, ClipSession* session) {
  return SayRefusal(kind, PrepareJob(kind, &session->app.info).result, session);
}

int ReadTrackList(const std::string& text, const ClipSession& session,
                  std::vector<std::uint32_t>* tracks) {
  const std::uint32_t usable = UsableTracks(session.app.mxf.audio);
  const auto parsed = ParseTrackList(text);
  if (!parsed || parsed->back() >= usable) {
    PrintError(
        session.language,
        {"--tracks {}: クリップのトラックは 1 から {} までです。1,3-5 のように指定して下さい。",
         "--tracks {}: the clip has tracks 1 to {}; give them as in 1,3-5"},
        text, usable);
    return kWrongUsage;
  }
  *tracks = *parsed;
  return kDone;
}

}  // namespace quorvan::cli
