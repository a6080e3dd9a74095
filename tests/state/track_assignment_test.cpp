#include "state/track_assignment.h"

#include <gtest/gtest.h>

#include <string>

#include "state/window_state_info.h"
#include "support/temp_folder.h"
#include "support/wav_builder.h"

namespace quorvan {
namespace {

class TrackAssignment : public ::testing::Test {
 protected:
  TrackAssignment() {
    state_.mxf.audio.sampleRate = 48000;
    state_.mxf.audio.quantizationBits = 24;
    state_.mxf.audio.blockAlign = 3;
    UseTracks(8);
    app_.libraryView = 1;
  }

  void UseTracks(std::uint8_t count) {
    state_.mxf.audio.trackCount = count;
    for (std::uint8_t t = 0; t < kMaxTracks; ++t)
      state_.tracks.rewrapSwitch[t] = t < count ? kSwitchOff : kNoSuchTrack;
  }

  WAV_FILE_INFO* Add(std::uint16_t channels) {
    const test::WavSpec spec{.channels = channels, .sampleFrames = 1};
    const std::string name = std::to_string(state_.wavHead.entryCount);
    const std::u16string path = folder_.Write(name, test::BuildWav(spec).bytes);
    EXPECT_EQ(AddWavFile(path.c_str(), &state_.wavHead, state_.mxf.base), kWavOk);
    app_.wavIndex = BuildWavIndex(&state_.wavHead, std::move(app_.wavIndex));
    return state_.wavHead.prev;
  }

  // A letter a track: its file's number, '-' for none; behind it marks and groups must agree.
  std::string Tracks() const {
    std::string text;
    for (std::uint32_t t = 0; t < UsableTracks(state_.mxf.audio); ++t) {
      const WAV_FILE_INFO* file = state_.tracks.wav[t];
      text += file == nullptr ? '-' : static_cast<char>('0' + file->listIndex);
      const bool grouped = file != nullptr && file->channels > 1;
      EXPECT_EQ(state_.tracks.wavGroup[t] != 0, grouped) << t;
      EXPECT_EQ(app_.window->trackChannelMark[t], grouped ? state_.tracks.wavChannel[t] + 1 : 0)
          << t;
      if (grouped) {
        EXPECT_EQ(state_.tracks.wavGroup[t] + state_.tracks.wavChannel[t], t + kWavGroupBase);
      }
    }
    return text;
  }

  test::TempFolder folder_;
  AppState state_;
  APP_STATE_INFO& app_ = state_.info;
};

TEST_F(TrackAssignment, SpreadsChannelsAndTheFirstSwitchOverTheTracks) {
  WAV_FILE_INFO* const stereo = Add(2);
  state_.tracks.rewrapSwitch[2] = kSwitchOn;
  EXPECT_EQ(AssignWavFile(&app_, stereo, 2), AssignResult::kAssigned);
  EXPECT_EQ(Tracks(), "--00----");
  EXPECT_EQ(state_.tracks.wavGroup[3], 102u);
  EXPECT_EQ(state_.tracks.rewrapSwitch[3], kSwitchOn);
  EXPECT_EQ(state_.tracks.rewrapSwitch[4], kSwitchOff);
  EXPECT_EQ(stereo->assigned, 1u);
  EXPECT_EQ(app_.libraryView, 0);
}

TEST_F(TrackAssignment, RefusesAndChangesNothing) {
  WAV_FILE_INFO* const mono = Add(1);
  WAV_FILE_INFO* const stereo = Add(2);
  WAV_FILE_INFO* const eight = Add(8);
  ASSERT_EQ(AssignWavFile(&app_, mono, 1), AssignResult::kAssigned);
  app_.libraryView = 1;
  const std::tuple<WAV_FILE_INFO*, std::int32_t, AssignResult> rows[] = {
      {stereo, 1, AssignResult::kUnevenTrack},
      {stereo, -1, AssignResult::kUnevenTrack},
      {stereo, -2, AssignResult::kBehindLastTrack},
      {eight, 2, AssignResult::kBehindLastTrack},
      {mono, 8, AssignResult::kBehindLastTrack},
      {mono, 0x7FFFFFFF, AssignResult::kBehindLastTrack},
      {nullptr, 0, AssignResult::kNoEntry},
  };
  for (const auto& [entry, track, result] : rows) {
    EXPECT_EQ(AssignWavFile(&app_, entry, track), result) << track;
    EXPECT_EQ(Tracks(), "-0------");
    EXPECT_EQ(app_.libraryView, 1);
  }
  state_.mxf.audio.quantizationBits = 16;
  EXPECT_EQ(AssignWavFile(&app_, mono, 0), AssignResult::kTooManyBits);
  EXPECT_EQ(AssignRefusal(AssignResult::kTooManyBits).title, u"トラックへのアサイン");
  EXPECT_TRUE(AssignRefusal(AssignResult::kUnevenTrack).text.starts_with(u"マルチチャンネル"));
  EXPECT_TRUE(AssignRefusal(AssignResult::kBehindLastTrack).text.starts_with(u"指定された"));
  EXPECT_TRUE(AssignRefusal(AssignResult::kAssigned).text.empty());
}

TEST_F(TrackAssignment, StopsAtTheArraysWhenTheFileHasMoreTracks) {
  UseTracks(200);
  WAV_FILE_INFO* const eight = Add(8);
  EXPECT_EQ(AssignWavFile(&app_, eight, 22), AssignResult::kBehindLastTrack);
  EXPECT_EQ(AssignWavFile(&app_, eight, 16), AssignResult::kAssigned);
  EXPECT_EQ(AssignWavFile(&app_, Add(1), 24), AssignResult::kBehindLastTrack);
}

TEST_F(TrackAssignment, AGroupLeavesAllItsTracksWhenOneIsTaken) {
  WAV_FILE_INFO* const mono = Add(1);
  WAV_FILE_INFO* const stereo = Add(2);
  WAV_FILE_INFO* const four = Add(4);
  AssignWavFile(&app_, stereo, 0);
  AssignWavFile(&app_, stereo, 4);
  AssignWavFile(&app_, mono, 1);
  EXPECT_EQ(Tracks(), "-0--11--");
  EXPECT_EQ(stereo->assigned, 1u);
  AssignWavFile(&app_, mono, 3);
  AssignWavFile(&app_, four, 2);
  EXPECT_EQ(Tracks(), "-02222--");
  EXPECT_EQ(stereo->assigned, 0u);
  EXPECT_EQ(mono->assigned, 1u);
  AssignWavFile(&app_, four, 4);
  EXPECT_EQ(Tracks(), "-0--2222");
}

TEST_F(TrackAssignment, TakesSelectedTracksFilesOffWithTheirGroup) {
  WAV_FILE_INFO* const mono = Add(1);
  WAV_FILE_INFO* const stereo = Add(2);
  AssignWavFile(&app_, mono, 0);
  AssignWavFile(&app_, stereo, 2);
  AssignWavFile(&app_, mono, 5);
  app_.trackSelected.fill(0);
  for (const std::size_t t : {3u, 5u, 6u})
    app_.trackSelected[t] = 1;
  app_.focusTrack = 2;
  EXPECT_EQ(TakeOffSelectedTracks(&app_), 3u);
  EXPECT_EQ(Tracks(), "0-------");
  EXPECT_EQ(stereo->assigned, 0u);
  EXPECT_EQ(mono->assigned, 1u);
  EXPECT_EQ(app_.trackSelected[2], 1);  // focus
  EXPECT_EQ(app_.trackSelected[3], 0);
  EXPECT_EQ(app_.trackSelected[6], 1);  // had no file
  EXPECT_EQ(TakeOffTrack(&app_, 24), 0u);
  EXPECT_EQ(TakeOffTrack(&app_, -1), 0u);
}

TEST_F(TrackAssignment, RemovalAsksForAssignedEntriesOnlyAndGoesOnAfterANo) {
  WAV_FILE_INFO* const loose = Add(1);
  WAV_FILE_INFO* const kept = Add(1);
  WAV_FILE_INFO* const assigned = Add(2);
  WAV_FILE_INFO* const unselected = Add(1);
  AssignWavFile(&app_, kept, 0);
  AssignWavFile(&app_, assigned, 4);
  for (WAV_FILE_INFO* entry : {kept, assigned, loose})
    entry->selected = 1;
  int questions = 0;
  EXPECT_TRUE(RemoveSelectedEntries(&app_, [&](const WAV_FILE_INFO& entry) {
    ++questions;
    EXPECT_EQ(app_.wavIndex[0], kept) << "the loose one is gone";
    EXPECT_TRUE(RemovalQuestion(entry).starts_with(entry.filePath));
    unselected->selected = 1;  // as a table that is refreshed behind the question may have it
    return &entry != kept;
  }));
  EXPECT_EQ(questions, 2);
  EXPECT_EQ(state_.wavHead.entryCount, 2);
  EXPECT_EQ(Tracks(), "0-------");
  EXPECT_EQ(app_.wavIndex[0], kept);
  EXPECT_EQ(app_.wavIndex[1], unselected);
  EXPECT_EQ(app_.wavIndex[11], nullptr);
  app_.currentWavItem = 1;
  EXPECT_EQ(CurrentWavEntry(app_), unselected);
  app_.currentWavItem = 2;
  EXPECT_EQ(CurrentWavEntry(app_), nullptr);

  EXPECT_EQ(kept->selected + unselected->selected, 0U);
  kept->selected = unselected->selected = 1;
  EXPECT_TRUE(RemoveSelectedEntries(&app_, [](const WAV_FILE_INFO&) { return true; }));
  EXPECT_EQ(app_.wavIndex, nullptr);
  EXPECT_EQ(Tracks(), "--------");
}

}  // namespace
}  // namespace quorvan
