#include "cli/clip_session.h"

#include <utility>

#include "job/process_table.h"
#include "mxf/analysis.h"
#include "platform/file.h"
#include "platform/path.h"
#include "platform/text.h"
#include "state/clip_state.h"

namespace quorvan::cli {
namespace {

void Refuse(std::int32_t result, std::u16string message, ClipSession* session) {
  session->result = result;
  session->message = std::move(message);
}

}  // namespace

bool LoadClip(const std::string& path, bool fileIo, ClipSession* session) {
  APP_STATE_INFO& app = session->app.info;
  const std::u16string fullPath = platform::AbsolutePath(platform::ToUtf16(path));
  if (fullPath.size() >= kMxfPathChars) {
    Refuse(kNoFileHandle, ClipCannotBeOpenedMessage(fullPath, kNoFileHandle), session);
    return false;
  }
  platform::CopyText(app.mxfPath, kMxfPathChars, fullPath);
  app.jobKind = kAnalysisJob;
  app.useFileIo = fileIo ? 1 : 0;
  app.mxf->timecode->useFileIo = app.useFileIo;

  platform::File file = platform::File::Open(fullPath, platform::OpenMode::kReadAlone);
  if (!file.IsOpen()) {
    Refuse(kNoFileHandle, ClipCannotBeOpenedMessage(fullPath, kNoFileHandle), session);
    return false;
  }
  const std::int32_t result = AnalyzeMxfFile(&file, app.mxf);
  if (result != kSuccess) {
    Refuse(result, LoadFailureMessage(fullPath, app.mxf->processCode, result, app.useFileIo),
           session);
    return false;
  }
  EnterLoadedState(&app);
  return true;
}

}  // namespace quorvan::cli
