#include "state/clip_state.h"

#include "mxf/essence/continuity.h"
#include "state/window_state_info.h"
#include "timecode/timecode.h"

namespace quorvan {

void EnterLoadedState(APP_STATE_INFO* app) {
  const std::uint32_t tracks = UsableTracks(*app->mxf->audio);
  for (std::uint32_t t = 0; t < kMaxTracks; ++t) {
    const std::uint8_t state = t < tracks ? kSwitchOff : kNoSuchTrack;
    app->tracks->rewrapSwitch[t] = state;
    app->tracks->exportSwitch[t] = state;
    app->trackSelected[t] = t == 0 ? 1 : 0;
  }
  app->focusTrack = 0;
  app->analysisOk = 1;
  app->mxfLoaded = 1;
}

void ClearMxfState(APP_STATE_INFO* app) {
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  FreeWavList(app->wavList);
  app->wavIndex.reset();
  app->rewrapPointSet = {};
  app->exportPointSet = {};
  app->window->upArrowState = kArrowHidden;
  app->window->downArrowState = kArrowShown;
  app->mxfPath[0] = 0;
  app->mxfLoaded = 0;
  app->libraryView = 0;
  app->useFileIo = Method::kMemoryMapping;
  app->analysisOk = 0;
  app->selectedWavCount = 0;
  app->currentWavItem = 0;
  app->window->scrollTop = 0;
  tracks.wav.fill(nullptr);
  tracks.wavGroup.fill(0);
  tracks.wavChannel.fill(0);
  tracks.rewrapSwitch.fill(kNoSuchTrack);
  tracks.exportSwitch.fill(kNoSuchTrack);
  app->trackSelected.fill(0);
  app->window->trackChannelMark.fill(0);
  app->trackSelected[0] = 1;
  app->focusTrack = 0;
  app->window->rowRemainder = 0;
  app->window->visibleRows = 0;
  app->window->rowAlign = kWholeRows;
  tracks.inFrame = {};
  tracks.outFrame = {};
  UnloadMxf(app->mxf);
  FreeTimecodeErrors(app->mxf->timecode);
}

FramePoint MakeFramePoint(const MXF_TIMECODE_INFO& timecode, std::int32_t frames) {
  if (CountedSlot(timecode) == 0) return {frames, frames};
  const std::int32_t shifted =
      ShiftHours(timecode.fpsIndex, timecode.dropFrame, static_cast<std::uint32_t>(frames), 1, '+');
  return {frames, shifted};
}

bool IsRangeSet(const PointSet& points) {
  return points[0] == 1 && points[1] == 1;
}

bool TakeRewrapRange(APP_STATE_INFO* app, const RangeFields& fields, PointSet* points) {
  if (!IsRangeSet(app->rewrapPointSet)) return false;
  app->tracks->*fields.in = app->tracks->inFrame;
  app->tracks->*fields.out = app->tracks->outFrame;
  *points = {1, 1};
  return true;
}

FramePoint FirstFramePoint(const MXF_TIMECODE_INFO& timecode) {
  return MakeFramePoint(timecode, static_cast<std::int32_t>(timecode.startFrames));
}

FramePoint LastFramePoint(const MXF_TIMECODE_INFO& timecode) {
  return MakeFramePoint(timecode, static_cast<std::int32_t>(timecode.lastFrames));
}

}  // namespace quorvan
