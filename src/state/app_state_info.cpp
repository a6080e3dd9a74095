#include "state/app_state_info.h"

#include "platform/path.h"
#include "platform/text.h"
#include "state/window_state_info.h"

namespace quorvan {
namespace {
constexpr std::u16string_view kDefaultExportPrefix = u"Track-";
}

void InitializeAppState(APP_STATE_INFO* app) {
  app->trackSelected[0] = 1;
  app->window->upArrowState = kArrowHidden;
  app->window->downArrowState = kArrowShown;
  app->window->topBandHeight = kBandHeight;
  app->window->bottomBandHeight = kBandHeight;
  app->tracks->rewrapSwitch.fill(kNoSuchTrack);
  app->tracks->exportSwitch.fill(kNoSuchTrack);
  app->tracks->wavBufferIndex = kDefaultWavBufferIndex;
  platform::CopyText(app->defaultExportFolder, kMxfPathChars, platform::DesktopFolder());
  platform::CopyText(app->defaultExportPrefix, kDefaultPrefixChars, kDefaultExportPrefix);
}

AppState::AppState() : window_(std::make_unique<WINDOW_STATE_INFO>()) {
  info.wavList = &wavHead;
  info.mxf = &mxf.base;
  info.tracks = &tracks;
  info.window = window_.get();
  InitializeAppState(&info);
}

AppState::~AppState() {
  FreeWavList(&wavHead);
}

}  // namespace quorvan
