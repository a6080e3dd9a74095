#include "view/texts.h"

#include <gtest/gtest.h>

#include "platform/path.h"
#include "state/track_assignment.h"
#include "support/golden.h"
#include "support/loaded_clip.h"
#include "support/wav_builder.h"
#include "view/file_drop.h"
#include "view/timecode_entry.h"

namespace quorvan {
namespace {

using namespace test;

TEST(Texts, TellOfTheClipOrThatThereIsNone) {
  ClipSpec spec{.rate = Rate::k23_98, .bits = 16};
  LoadedClip clip(spec);
  APP_STATE_INFO& app = clip.app.info;
  const std::u16string folder(platform::FolderOf(clip.path));
  const auto expectFigures = [&](std::size_t column) {
    auto id = std::uint32_t{kFileNameText};
    for (const auto& row : GoldenRows("view/golden/figures.txt"))
      EXPECT_EQ(InfoText(app, static_cast<ControlId>(id++)), row.at(column));
    EXPECT_EQ(id, kSizeText + 1u);
  };
  expectFigures(1);
  EXPECT_EQ(FileToolTip(app).text,
            u"clip.mxf\n" + folder +
                u"\n182.57 KB\n\n作成日: 2024/03/05  14:07:09\n更新日: 2024/03/06  08:30:00\n\n"
                u"製品名: Bench Writer Version: 1.2.3\nOS: Bench\n会社名: Northlight");
  EXPECT_EQ(FileToolTip(app).width, 600);
  app.selectedTracks = 2;
  EXPECT_EQ(CounterStatus(app), u"MXFファイル :  4 トラック /  2トラックを選択中");
  EXPECT_EQ(TimecodeDigits(clip.app.mxf.timecode, 864009), u"10000009");

  const char16_t* rates[] = {u"24 DF 24p",       u"25 DF 25i",      u"30 DF 30i",
                             u"50 DF 50",        u"60 DF 60p",      u"23.98 DF 23.976i",
                             u"29.97 DF 29.97i", u"59.94 DF 59.94", u"Unknown Unknown?"};
  clip.app.mxf.timecode.dropFrame = 1;
  for (std::uint8_t rate = 0; rate < std::size(rates); ++rate) {
    clip.app.mxf.timecode.rateIndex = rate;
    clip.app.mxf.video.frameLayout = rate % 4;
    EXPECT_EQ(InfoText(app, kRateText) + u" " + InfoText(app, kFpsText), rates[rate]);
  }

  ClearMxfState(&app);
  expectFigures(2);
  EXPECT_EQ(FileToolTip(app).text, u"情報はありません。");
  EXPECT_EQ(FileToolTip(app).width, 200);
  app.selectedTracks = 0;
  EXPECT_EQ(CounterStatus(app), u"MXFファイル :  0 トラック /  0トラックを選択中");
}

TEST(Texts, TellWhatARowWillDo) {
  LoadedClip clip{ClipSpec()};
  APP_STATE_INFO& app = clip.app.info;
  WavSpec stereo{.channels = 2, .timeReference = 36000 * 48000ull + 960};
  const std::u16string path = clip.folder.Write("st.wav", BuildWav(stereo).bytes);
  ASSERT_EQ(AddWavFile(path.c_str(), app.wavList, *app.mxf), kWavOk);
  app.wavIndex = BuildWavIndex(app.wavList, nullptr);
  ASSERT_EQ(AssignWavFile(&app, app.wavList->prev, 2), AssignResult::kAssigned);
  clip.app.tracks.rewrapSwitch[1] = clip.app.tracks.rewrapSwitch[3] = kSwitchOn;
  const std::pair<std::int32_t, std::u16string_view> rows[] = {
      {0, u"|書換えは実行されません"},
      {1, u"|このトラックには無音が書込まれます。"},
      {2, u"L st.wav pale|書換えは実行されません"},
      {3, u"R st.wav|"},
      {20, u"|トラックがありません"}};
  for (const auto& [track, wanted] : rows) {
    const TrackRowText row = TextOfTrack(app, track);
    std::u16string text = row.name + (row.nameColor.green == 130 ? u" pale|" : u"|");
    text += row.state;
    if (row.channelMark != 0) text.insert(0, {row.channelMark, u' '});
    EXPECT_EQ(text, wanted);
  }
  EXPECT_EQ(TrackToolTip(app, 0).text, u"ファイルが割当てられていません。");
  EXPECT_EQ(TrackToolTip(app, 0).width, 200);
  EXPECT_EQ(TrackToolTip(app, 3).width, 600);
  EXPECT_EQ(TrackToolTip(app, 3).text, u"トラック:  4\n\nst.wav\n" +
                                           std::u16string(platform::FolderOf(path)) +
                                           u"\n281.89 KB\n\nビット数: 24  チャンネル:  2/ 2\n\n"
                                           u"開始: 10:00:00:00 *0960       1728000960 samples\n"
                                           u"終了: 10:00:01:00 *0960       1728048960 samples\n"
                                           u"長さ: 00:00:01:00 *0000            48000 samples");
  EXPECT_EQ(PathStatus(app, 0), path);
  for (const std::int32_t row : {-1, 1})
    EXPECT_EQ(PathStatus(app, row), u"パス情報はありません。");
  std::fill_n(app.wavIndex[0]->filePath, 300, u'x');
  EXPECT_EQ(PathStatus(app, 0), std::u16string(259, u'x'));
  app.libraryView = 1;
  app.selectedWavCount = 1;
  EXPECT_EQ(CounterStatus(app), u"WAV/BWFファイル :  1個    1個を選択中");
}

EntryResult Enter(LoadedClip* clip, TimecodeTarget target, std::u16string_view text) {
  APP_STATE_INFO& app = clip->app.info;
  return ApplyTimecodeEntry(&app, target, kExportRange, &app.exportPointSet, text);
}

// One entry after the other in two clips of ten frames, with its refusal and the range behind it.
TEST(TimecodeEntry, KeepsTheRangeWithinTheClip) {
  ClipSpec late{.start = {23, 59, 59, 20}};
  LoadedClip day{ClipSpec()};
  LoadedClip midnight{late};
  const auto rows = GoldenRows("view/golden/entries.txt");
  EXPECT_EQ(rows.size(), 13u);
  for (const auto& row : rows) {
    LoadedClip& clip = row.at(0) == u"day" ? day : midnight;
    const TimecodeTarget target = row.at(1) == u"IN" ? kInTarget : kOutTarget;
    EXPECT_EQ(EntryRefusal(Enter(&clip, target, row.at(2))), row.at(3));
    const APP_STATE_INFO& app = clip.app.info;
    const RangeTexts texts = TextsOfRange(app, kExportRange, app.exportPointSet);
    EXPECT_EQ(texts.in + u" " + texts.out + u" " + texts.duration, row.at(4));
  }
  EXPECT_EQ(NextTarget(kInTarget), kOutTarget);
  EXPECT_EQ(NextTarget(kOutTarget), kNoTarget);
}

TEST(TimecodeEntry, RefusesFieldsThatAreTooLargeForTheirBase) {
  LoadedClip clip{ClipSpec()};
  const char16_t* largest[] = {u"23595923", u"23595924", u"23595929", u"47595949", u"23595959"};
  for (std::uint32_t base = 0; base < std::size(largest); ++base) {
    clip.app.mxf.timecode.fpsIndex = base;
    EXPECT_NE(Enter(&clip, kInTarget, largest[base]), EntryResult::kFieldTooLarge) << base;
    for (const std::size_t lastDigit : {1u, 3u, 5u, 7u}) {
      std::u16string text = largest[base];
      if (++text[lastDigit] > u'9') {
        text[lastDigit] = u'0';
        ++text[lastDigit - 1];
      }
      EXPECT_EQ(Enter(&clip, kInTarget, text), EntryResult::kFieldTooLarge) << base << lastDigit;
    }
  }
}

TEST(TimecodeEntry, HoldsTheDigitsOfATimecode) {
  EXPECT_EQ(DigitsIn(u"TC １０：0０.0５；０9 /\n−٢ｆ十"), u"10000509");
}

TEST(FileDrop, TakesWhatItCanUse) {
  using Paths = std::vector<std::u16string>;
  const std::pair<Paths, std::optional<std::u16string>> drops[] = {
      {{u"/a.MXF"}, u"/a.MXF"},
      {{u"/a.wav", u"/b.mxf"}, u"/b.mxf"},
      {{u"/b.mxf", u"/a.wav"}, {}},
      {{u"/b.mxf", u"/a.mxf"}, {}},
      {{u"/b.mxf", u"/a.wave"}, u"/b.mxf"},
      {{}, {}}};
  for (const auto& [paths, load] : drops)
    EXPECT_EQ(DecideDrop(paths, false).load, load);
  const Paths mixed = {u"/1.wav", u"/2.BWF", u"/3.mxf", u"/4.txt", u"/5.wave"};
  const DropDecision loaded = DecideDrop(mixed, true);
  EXPECT_EQ(loaded.wavFiles, (Paths{u"/1.wav", u"/2.BWF"}));
  EXPECT_TRUE(loaded.refuseMxf);
  EXPECT_EQ(loaded.load, std::nullopt);
}

}  // namespace
}  // namespace quorvan
