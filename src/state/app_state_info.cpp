#include "state/app_state_info.h"

#include "platform/path.h"
#include "platform/text.h"

namespace quorvan {
namespace {
constexpr std::u16string_view kDefaultExportPrefix = u"Track-";
}

void InitializeAppState(APP_STATE_INFO* app) {
  app->trackSelected[0] = 1;
  app->upArrowState = kArrowHidden;
  app->downArrowState = kArrowShown;
  app->topBandHeight = kBandHeight;
  app->bottomBandHeight = kBandHeight;
  app->tracks->rewrapSwitch.fill(kNoSuchTrack);
  app->tracks->exportSwitch.fill(kNoSuchTrack);
  app->tracks->wavBufferIndex = kDefaultWavBufferIndex;
  platform::CopyText(app->defaultExportFolder, kMxfPathChars, platform::DesktopFolder());
  platform::CopyText(app->defaultExportPrefix, kDefaultPrefixChars, kDefaultExportPrefix);
}

AppState::AppState() {
  info.wavList = &wavHead;
  info.mxf = &mxf.base;
  info.tracks = &tracks;
  InitializeAppState(&info);
}

AppState::~AppState() {
  FreeWavList(&wavHead);
}

}  // namespace quorvan
