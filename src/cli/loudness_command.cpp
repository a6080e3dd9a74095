#include <fmt/format.h>

#include <vector>

#include "cli/clip_session.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/job_runner.h"
#include "cli/job_setup.h"
#include "cli/json_writer.h"
#include "mxf/analysis.h"
#include "platform/text.h"

namespace quorvan::cli {
namespace {

using platform::Language;

constexpr std::size_t kMostTracks = 2;  // left and right

std::string ResultText(const MXF_AUDIO_INFO& audio) {
  return fmt::format(
      "Integrated Loudness  {:6.1f} LKFS\n"
      "True Peak            {:6.1f} dBTP\n"
      "Loudness Range(LRA)  {:6.1f} LU",
      audio.integratedLoudness, audio.truePeak, audio.loudnessRange);
}

// The results as JSON; the loudness of silence, which is not finite, becomes null.
std::string ResultJson(const MXF_AUDIO_INFO& audio) {
  std::string text;
  JsonWriter json(&text);
  json.Object({}, [&] {
    json.Field("integratedLoudness", audio.integratedLoudness);
    json.Field("truePeak", audio.truePeak);
    json.Field("loudnessRange", audio.loudnessRange);
  });
  return text;
}

std::string FailureJson(const ClipSession& session) {
  const platform::InBoth<std::string> message = {platform::ToUtf8(session.message.ja),
                                                 platform::ToUtf8(session.message.en)};
  std::string text;
  JsonWriter json(&text);
  json.Object({}, [&] {
    json.Field("result", session.result);
    json.Field("message", message.ja);
    json.InBoth("messages", message);
  });
  return text;
}

int Measure(const LoudnessArguments& arguments, ClipSession* session) {
  const Language language = session->language;
  if (const int status = LoadClipOrSay(arguments.file, arguments.load, session)) return status;
  APP_STATE_INFO& app = session->app.info;
  if (const int status = CheckClipOrSay(kLoudnessJob, session)) return status;
  std::vector<std::uint32_t> tracks;
  if (const int status = ReadTrackList(arguments.tracks, *session, &tracks)) return status;
  if (tracks.size() > kMostTracks) {
    PrintError(language,
               {"--tracks {}: 測定できるのは1つまたは2つのトラックです。",
                "--tracks {}: one or two tracks are measured"},
               arguments.tracks);
    return kWrongUsage;
  }
  if (const int status = SetRange(arguments.range, kLoudnessRange, session)) return status;
  if (const int status = PrepareOrSay(kLoudnessJob, session)) return status;
  app.trackSelected.fill(0);
  for (const std::uint32_t t : tracks)
    app.trackSelected[t] = 1;

  const JobOutcome outcome = RunJob(language, &app);
  if (outcome.result != kSuccess) {
    session->result = outcome.result;
    session->message = outcome.text;
    return ReportJob(language, outcome.result, outcome.text.In(language));
  }
  const MXF_AUDIO_INFO& audio = *app.mxf->audio;
  return PrintLine(language, arguments.json ? ResultJson(audio) : ResultText(audio)) ? kDone
                                                                                     : kFailed;
}

}  // namespace

int RunLoudness(const LoudnessArguments& arguments, Language language) {
  WatchForInterrupts();
  ClipSession session(language);
  const int status = Measure(arguments, &session);
  if (arguments.json && session.result != kSuccess) PrintLine(language, FailureJson(session));
  return status;
}

}  // namespace quorvan::cli
