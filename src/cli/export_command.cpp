#include <iterator>
#include <vector>

#include "cli/clip_session.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/job_runner.h"
#include "cli/job_setup.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quorvan::cli {
namespace {

using platform::Language;

// Stores the folder and the prefix of the new files in the records. kWrongUsage when one of them
// does not fit its record, or when the prefix, which is part of a file name, has a folder in it.
int SetTarget(const ExportArguments& arguments, ClipSession* session) {
  const APP_STATE_INFO* app = &session->app.info;
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  const std::u16string folder = platform::AbsolutePath(platform::ToUtf16(arguments.folder));
  const std::u16string prefix =
      arguments.prefix ? platform::ToUtf16(*arguments.prefix) : app->defaultExportPrefix;
  if (folder.size() >= std::size(tracks.exportFolder) ||
      prefix.size() >= std::size(tracks.exportName) || platform::LastComponent(prefix) != prefix) {
    PrintError(session->language,
               {"{}、{}: 長すぎるか、--prefix にフォルダーが含まれています。",
                "{}, {}: too long, or a prefix with a folder in it"},
               arguments.folder, platform::ToUtf8(prefix));
    return kWrongUsage;
  }
  platform::CopyText(tracks.exportFolder, std::size(tracks.exportFolder), folder);
  platform::CopyText(tracks.exportName, std::size(tracks.exportName), prefix);
  return kDone;
}

}  // namespace

int RunExport(const ExportArguments& arguments, Language language) {
  WatchForInterrupts();
  ClipSession session(language);
  if (const int status = LoadClipOrSay(arguments.file, arguments.load, &session)) {
    return status;
  }
  APP_STATE_INFO& app = session.app.info;
  if (const int status = CheckClipOrSay(kExportJob, &session)) return status;
  std::vector<std::uint32_t> tracks;
  if (const int status = ReadTrackList(arguments.tracks, session, &tracks)) return status;
  if (const int status = SetTarget(arguments, &session)) return status;
  if (const int status = SetRange(arguments.range, kExportRange, &session)) return status;
  for (const std::uint32_t t : tracks)
    app.tracks->exportSwitch[t] = kSwitchOn;
  if (const int status = PrepareOrSay(kExportJob, &session)) return status;
  app.tracks->noFlush = arguments.noFlush ? 1 : 0;
  const JobOutcome outcome = RunJob(language, &app);
  return ReportJob(language, outcome.result, outcome.text.In(language));
}

}  // namespace quorvan::cli
