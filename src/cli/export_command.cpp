#include <fmt/format.h>

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

// Stores the folder and the prefix of the new files in the records. kWrongUsage when one of them
// does not fit its record, or when the prefix, which is part of a file name, has a folder in it.
int SetTarget(const ExportArguments& arguments, APP_STATE_INFO* app) {
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  const std::u16string folder = platform::AbsolutePath(platform::ToUtf16(arguments.folder));
  const std::u16string prefix =
      arguments.prefix ? platform::ToUtf16(*arguments.prefix) : app->defaultExportPrefix;
  if (folder.size() >= std::size(tracks.exportFolder) ||
      prefix.size() >= std::size(tracks.exportName) || platform::LastComponent(prefix) != prefix) {
    PrintError(fmt::format("{}, {}: too long, or a prefix with a folder in it", arguments.folder,
                           platform::ToUtf8(prefix)));
    return kWrongUsage;
  }
  platform::CopyText(tracks.exportFolder, std::size(tracks.exportFolder), folder);
  platform::CopyText(tracks.exportName, std::size(tracks.exportName), prefix);
  return kDone;
}

}  // namespace

int RunExport(const ExportArguments& arguments) {
  WatchForInterrupts();
  ClipSession session;
  if (const int status = LoadClipOrSay(arguments.file, arguments.load, &session)) {
    return status;
  }
  APP_STATE_INFO& app = session.app.info;
  if (const int status = CheckClipOrSay(kExportJob, app)) return status;
  std::vector<std::uint32_t> tracks;
  if (const int status = ReadTrackList(arguments.tracks, app, &tracks)) return status;
  if (const int status = SetTarget(arguments, &app)) return status;
  if (const int status = SetRange(arguments.range, kExportRange, &app)) return status;
  for (const std::uint32_t t : tracks)
    app.tracks->exportSwitch[t] = kSwitchOn;
  if (const int status = PrepareOrSay(kExportJob, &app)) return status;
  app.tracks->noFlush = arguments.noFlush ? 1 : 0;
  return ReportJob(RunJob(&app));
}

}  // namespace quorvan::cli
