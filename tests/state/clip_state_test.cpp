#include "state/clip_state.h"

#include <gtest/gtest.h>

#include "state/track_assignment.h"
#include "state/wav_buffer.h"
#include "state/window_state_info.h"
#include "support/loaded_clip.h"
#include "support/wav_builder.h"

namespace quorvan {
namespace {

using namespace test;

TEST(AppState, StartsWithoutTracksAndWithTheFirstSelected) {
  const AppState fresh;
  EXPECT_EQ(fresh.info.trackSelected[0], 1);
  EXPECT_EQ(fresh.tracks.rewrapSwitch[23], kNoSuchTrack);
  EXPECT_EQ(fresh.tracks.wavBufferIndex, 4u);
}

TEST(EnterLoadedState, OffersTheTracksOfTheClipAndSelectsTheFirst) {
  AppState app;
  app.mxf.audio.trackCount = 3;
  app.info.trackSelected.fill(1);
  app.info.focusTrack = 5;
  EnterLoadedState(&app.info);
  for (std::uint32_t t = 0; t < kMaxTracks; ++t) {
    EXPECT_EQ(app.tracks.rewrapSwitch[t], t < 3 ? kSwitchOff : kNoSuchTrack);
    EXPECT_EQ(app.tracks.exportSwitch[t], t < 3 ? kSwitchOff : kNoSuchTrack);
    EXPECT_EQ(app.info.trackSelected[t], t == 0 ? 1 : 0);
  }
  EXPECT_EQ(app.info.focusTrack, 0);
  EXPECT_EQ(app.info.mxfLoaded & app.info.analysisOk, 1);
}

TEST(ClearMxfState, LeavesOnlyWhatOutlivesAClip) {
  LoadedClip clip{ClipSpec()};
  APP_STATE_INFO& app = clip.app.info;
  AUDIOTRACK_IO_INFO& tracks = clip.app.tracks;
  const std::u16string wav = clip.folder.Write("a.wav", BuildWav({.channels = 2}).bytes);
  ASSERT_EQ(AddWavFile(wav.c_str(), app.wavList, *app.mxf), kWavOk);
  app.wavIndex = BuildWavIndex(app.wavList, nullptr);
  ASSERT_EQ(AssignWavFile(&app, app.wavList->prev, 2), AssignResult::kAssigned);
  app.trackSelected.fill(1);
  app.rewrapPointSet = app.exportPointSet = app.loudnessPointSet = {1, 1};
  app.libraryView = app.noAutoTrackSwitch = 1;
  app.useFileIo = Method::kGenericFileIo;
  app.selectedWavCount = app.currentWavItem = 7;
  app.window->upArrowState = app.window->downArrowState = kArrowPressed;
  app.window->scrollTop = 3;
  app.focusTrack = app.window->visibleRows = 3;
  app.window->rowRemainder = 9;
  app.window->rowAlign = kFlushTop;
  tracks.wavBufferIndex = 9;
  clip.app.mxf.audio.truePeak = -3.0;
  clip.app.mxf.timecode.errorCount = 1;
  const FramePoint exportIn = tracks.exportIn;
  const FramePoint loudnessOut = tracks.loudnessOut;

  ClearMxfState(&app);

  EXPECT_EQ(app.wavList->entryCount, 0);
  EXPECT_EQ(app.wavIndex, nullptr);
  for (std::uint32_t t = 0; t < kMaxTracks; ++t) {
    EXPECT_EQ(tracks.wav[t], nullptr);
    EXPECT_EQ(tracks.wavGroup[t] + tracks.wavChannel[t] + app.window->trackChannelMark[t], 0u);
    EXPECT_EQ(tracks.rewrapSwitch[t], kNoSuchTrack);
    EXPECT_EQ(tracks.exportSwitch[t], kNoSuchTrack);
    EXPECT_EQ(app.trackSelected[t], t == 0 ? 1 : 0);
  }
  EXPECT_EQ(app.rewrapPointSet, PointSet{});
  EXPECT_EQ(app.exportPointSet, PointSet{});
  EXPECT_EQ(app.mxfPath[0], 0);
  EXPECT_EQ(app.mxfLoaded + app.libraryView + app.analysisOk, 0);
  EXPECT_EQ(app.useFileIo, Method::kMemoryMapping);
  EXPECT_EQ(
      app.selectedWavCount + app.currentWavItem + app.window->scrollTop + app.window->rowRemainder,
      0u);
  EXPECT_EQ(app.focusTrack + app.window->visibleRows + app.window->rowAlign, 0);
  EXPECT_EQ(app.window->upArrowState, kArrowHidden);
  EXPECT_EQ(app.window->downArrowState, kArrowShown);
  EXPECT_EQ(tracks.inFrame, FramePoint{});
  EXPECT_EQ(tracks.outFrame, FramePoint{});
  EXPECT_EQ(*app.mxf->indexEntries, nullptr);
  EXPECT_EQ(app.mxf->audio->truePeak, 0.0);
  EXPECT_EQ(app.mxf->timecode->errorCount, 0u);

  EXPECT_EQ(app.noAutoTrackSwitch, 1);
  EXPECT_EQ(tracks.wavBufferIndex, 9u);
  EXPECT_EQ(app.loudnessPointSet, (PointSet{1, 1}));
  EXPECT_EQ(tracks.exportIn, exportIn);
  EXPECT_EQ(tracks.loudnessOut, loudnessOut);
}

TEST(FramePoint, CountsOneHourOnWhereTheClipStartsInTheLastHour) {
  MXF_TIMECODE_INFO timecode{};
  timecode.fpsIndex = 2;
  timecode.dropFrame = 1;
  EXPECT_EQ(MakeFramePoint(timecode, 107892), (FramePoint{107892, 107892}));
  timecode.startHour23 = 1;
  EXPECT_EQ(MakeFramePoint(timecode, 23 * 107892 + 9), (FramePoint{23 * 107892 + 9, 9}));
}

TEST(WavBuffer, HoldsTheDurationOfItsRow) {
  MXF_TIMECODE_INFO timecode{};
  timecode.fpsIndex = 1;
  const std::uint32_t minutes[] = {1, 2, 3, 4, 6, 8, 10, 12, 16, 20, 22, 24, 30, 40};
  for (std::uint32_t row = 0; row < std::size(minutes); ++row)
    EXPECT_EQ(BlockFrames(row, timecode), minutes[row] * 60 * 25) << row;
  EXPECT_EQ(BlockFrames(14, timecode), 0u);
  timecode.fpsIndex = 4;
  timecode.dropFrame = 1;
  EXPECT_EQ(BlockFrames(6, timecode), 35964u);

  EXPECT_EQ(FramesInMemory(1500, 1000), 1500u);
  EXPECT_EQ(FramesInMemory(1500, std::uint64_t{1} << 20), 64u);
  EXPECT_EQ(FramesInMemory(1500, std::uint64_t{1} << 40), 1u);
  EXPECT_EQ(FramesInMemory(1500, 0), 1500u);
  EXPECT_TRUE(FitsBlock(65535, 65537));
  EXPECT_FALSE(FitsBlock(65536, 65536));
  EXPECT_FALSE(FitsBlock(std::uint64_t{1} << 60, 16));
}

}  // namespace
}  // namespace quorvan
