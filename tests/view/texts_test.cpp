#include "view/texts.h"

#include <gtest/gtest.h>

#include "state/track_assignment.h"
#include "support/loaded_clip.h"
#include "support/wav_builder.h"
#include "view/file_drop.h"
#include "view/timecode_entry.h"

namespace quorvan {
namespace {

using namespace test;

TEST(Texts, TellOfTheClipOrThatThereIsNone) {
  ClipSpec spec;
  spec.rate = Rate::k23_98;
  spec.bits = 16;
  LoadedClip clip(spec);
  APP_STATE_INFO& app = clip.app.info;
  const std::pair<ControlId, const char16_t*> loaded[] = {
      {kFileNameText, u"clip.mxf"}, {kRateText, u"23.98 NDF"},  {kHeadText, u"10:00:00:00"},
      {kTailText, u"10:00:00:09"},  {kDurText, u"00:00:00:10"}, {kFormatText, u"AES3/LPCM"},
      {kTracksText, u"4"},          {kBitsText, u"16bit"},      {kFsRateText, u"48kHz"},
      {kBitRateText, u"50.0Mbps"},  {kFpsText, u"23.976i"},     {kSizeText, u"1920 x 1080"}};
  for (const auto& [id, text] : loaded)
    EXPECT_EQ(InfoText(app, id), text) << id;
  ClearMxfState(&app);
  const std::pair<ControlId, const char16_t*> unloaded[] = {
      {kFileNameText, u"MXFファイルをウィンドウにドラッグ＆ドロップしてください"},
      {kRateText, u"Unknown"},
      {kHeadText, u"--:--:--:--"},
      {kTracksText, u"0"},
      {kBitsText, u"0bit"},
      {kFsRateText, u"0kHz"},
      {kBitRateText, u"0.0Mbps"},
      {kFpsText, u"Unknown"},
      {kFormatText, u"Unknown"}};
  for (const auto& [id, text] : unloaded)
    EXPECT_EQ(InfoText(app, id), text) << id;
  EXPECT_EQ(FileToolTip(app).text, u"情報はありません。");
  EXPECT_EQ(CounterStatus(app), u"MXFファイル :  0 トラック /  0トラックを選択中");
}

TEST(Texts, TellWhatARowWillDo) {
  LoadedClip clip{ClipSpec()};
  APP_STATE_INFO& app = clip.app.info;
  WavSpec stereo;
  stereo.channels = 2;
  const std::u16string path = clip.folder.Write("st.wav", BuildWav(stereo).bytes);
  ASSERT_EQ(AddWavFile(path.c_str(), app.wavList, *app.mxf), kWavOk);
  app.wavIndex = BuildWavIndex(app.wavList, nullptr);
  ASSERT_EQ(AssignWavFile(&app, app.wavList->prev, 2), AssignResult::kAssigned);
  EXPECT_EQ(TextOfTrack(app, 0).state, u"書換えは実行されません");
  clip.app.tracks.rewrapSwitch[0] = kSwitchOn;
  EXPECT_EQ(TextOfTrack(app, 0).state, u"このトラックには無音が書込まれます。");
  EXPECT_EQ(TextOfTrack(app, 20).state, u"トラックがありません");
  const TrackRowText off = TextOfTrack(app, 3);
  EXPECT_EQ(off.name, u"st.wav");
  EXPECT_EQ(off.channelMark, u'R');
  EXPECT_EQ(off.state, u"書換えは実行されません");
  EXPECT_EQ(off.nameColor.green, 130);
  clip.app.tracks.rewrapSwitch[3] = kSwitchOn;
  EXPECT_EQ(TextOfTrack(app, 3).state, u"");
  EXPECT_EQ(TextOfTrack(app, 3).nameColor.green, 255);
  EXPECT_EQ(TrackToolTip(app, 0).text, u"ファイルが割当てられていません。");
  const std::u16string tip = TrackToolTip(app, 3).text;
  EXPECT_EQ(tip.find(u"トラック:  4\n\nst.wav\n"), 0u);
  EXPECT_NE(tip.find(u"ビット数: 24  チャンネル:  2/ 2\n\n開始: 00:00:00:00 *0000                "
                     u"0 samples\n"),
            std::u16string::npos);
  EXPECT_EQ(PathStatus(app, 0), path);
  EXPECT_EQ(PathStatus(app, 1), u"パス情報はありません。");
  app.libraryView = 1;
  app.selectedWavCount = 1;
  EXPECT_EQ(CounterStatus(app), u"WAV/BWFファイル :  1個    1個を選択中");
}

// The points of a clip of ten frames from `start` on, entered one after the other.
TEST(TimecodeEntry, KeepsTheRangeWithinTheClip) {
  LoadedClip clip{ClipSpec()};
  APP_STATE_INFO& app = clip.app.info;
  const auto enter = [&](TimecodeTarget target, const char16_t* text) {
    return ApplyTimecodeEntry(&app, target, kRewrapRange, &app.rewrapPointSet, text);
  };
  const auto range = [&] { return TextsOfRange(app, kRewrapRange, app.rewrapPointSet); };
  EXPECT_EQ(range().in, kNoTimecode);
  EXPECT_EQ(enter(kOutTarget, u"10:00:00:03"), EntryResult::kBeforeStart) << "nine characters";
  EXPECT_EQ(enter(kOutTarget, u"10000003"), EntryResult::kAccepted);
  EXPECT_EQ(enter(kInTarget, u"10000000"), EntryResult::kAccepted);
  EXPECT_EQ(range().duration, u"00:00:00:04");
  EXPECT_EQ(enter(kInTarget, u"10000005"), EntryResult::kAccepted);
  EXPECT_EQ(range().out, u"10:00:00:05") << "OUT moves up to IN";
  EXPECT_EQ(range().duration, u"00:00:00:01");
  EXPECT_EQ(enter(kOutTarget, u"10000002"), EntryResult::kAccepted);
  EXPECT_EQ(range().in, u"10:00:00:02");
  EXPECT_EQ(enter(kOutTarget, u"10000025"), EntryResult::kFieldTooLarge);
  EXPECT_EQ(enter(kOutTarget, u"99999999"), EntryResult::kFieldTooLarge);
  EXPECT_EQ(range().out, u"10:00:00:02");
  EXPECT_EQ(enter(kOutTarget, u"10000009"), EntryResult::kAccepted);
  EXPECT_EQ(enter(kOutTarget, u"10000010"), EntryResult::kBehindEnd);
  EXPECT_EQ(app.rewrapPointSet, (PointSet{1, 0}));
  EXPECT_EQ(range().duration, kNoTimecode);
  EXPECT_EQ(enter(kInTarget, u"12"), EntryResult::kBeforeStart);
  EXPECT_EQ(app.rewrapPointSet, (PointSet{0, 0}));
  EXPECT_EQ(enter(kNoTarget, u"10000005"), EntryResult::kMissing);
  EXPECT_EQ(EntryRefusal(EntryResult::kBehindEnd), u"メディアの終了タイムを越えています。");
}

TEST(TimecodeEntry, HoldsWhatATimecodeIsWrittenWith) {
  EXPECT_EQ(PlainTimecodeText(u"１０：０0.０５；０0 "), u"10:00.05;00 ");
  for (const char16_t* foreign : {u"1a", u"12\n", u"１２ｆ", u"−5", u"٢", u"十"})
    EXPECT_FALSE(PlainTimecodeText(foreign));
}

TEST(TimecodeEntry, ComparesAcrossMidnight) {
  ClipSpec spec;
  spec.start = {23, 59, 59, 20};
  LoadedClip clip(spec);
  APP_STATE_INFO& app = clip.app.info;
  const auto enter = [&](TimecodeTarget target, const char16_t* text) {
    return ApplyTimecodeEntry(&app, target, kExportRange, &app.exportPointSet, text);
  };
  EXPECT_EQ(enter(kInTarget, u"23595922"), EntryResult::kAccepted);
  EXPECT_EQ(enter(kOutTarget, u"00000003"), EntryResult::kAccepted);
  const RangeTexts texts = TextsOfRange(app, kExportRange, app.exportPointSet);
  EXPECT_EQ(texts.in + u" " + texts.out + u" " + texts.duration,
            u"23:59:59:22 00:00:00:03 00:00:00:07");
  EXPECT_EQ(enter(kOutTarget, u"00000005"), EntryResult::kBehindEnd);
  EXPECT_EQ(enter(kInTarget, u"23595919"), EntryResult::kBeforeStart);
  EXPECT_EQ(app.rewrapPointSet, PointSet{});
}

TEST(FileDrop, TakesWhatItCanUse) {
  using Paths = std::vector<std::u16string>;
  const auto load = [](const Paths& paths) { return DecideDrop(paths, false).load; };
  EXPECT_EQ(load({u"/a.MXF"}), u"/a.MXF");
  EXPECT_EQ(load({u"/a.wav", u"/b.mxf"}), u"/b.mxf");
  EXPECT_EQ(load({u"/b.mxf", u"/a.wav"}), std::nullopt);
  EXPECT_EQ(load({u"/b.mxf", u"/a.mxf"}), std::nullopt);
  EXPECT_EQ(load({u"/b.mxf", u"/a.wave"}), u"/b.mxf");
  EXPECT_EQ(load({}), std::nullopt);
  const Paths mixed = {u"/1.wav", u"/2.BWF", u"/3.mxf", u"/4.txt", u"/5.wave"};
  const DropDecision loaded = DecideDrop(mixed, true);
  EXPECT_EQ(loaded.wavFiles, (Paths{u"/1.wav", u"/2.BWF"}));
  EXPECT_TRUE(loaded.refuseMxf);
  EXPECT_EQ(loaded.load, std::nullopt);
}

}  // namespace
}  // namespace quorvan
