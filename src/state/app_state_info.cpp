#include "state/app_state_info.h"

namespace quorvan {

void InitializeAppState(APP_STATE_INFO* app) {
  app->trackSelected[0] = 1;
  app->tracks->rewrapSwitch.fill(kNoSuchTrack);
  app->tracks->exportSwitch.fill(kNoSuchTrack);
  app->tracks->wavBufferIndex = kDefaultWavBufferIndex;
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
