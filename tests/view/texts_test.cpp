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
  struct Row {
    ControlId id;
    const char16_t* loaded;
    const char16_t* unloaded;
  };
  const Row rows[] = {
      {kFileNameText, u"clip.mxf", u"MXFファイルをウィンドウにドラッグ＆ドロップしてください"},
      {kRateText, u"23.98 NDF", u"Unknown"},
      {kHeadText, u"10:00:00:00", kNoTimecode.data()},
      {kTailText, u"10:00:00:09", kNoTimecode.data()},
      {kDurText, u"00:00:00:10", kNoTimecode.data()},
      {kFormatText, u"AES3/LPCM", u"Unknown"},
      {kTracksText, u"4", u"0"},
      {kBitsText, u"16bit", u"0bit"},
      {kFsRateText, u"48kHz", u"0kHz"},
      {kCodecText, u"MPEG2 i HD422P@HL", u"Unknown"},
      {kBitRateText, u"50.0Mbps", u"0.0Mbps"},
      {kFpsText, u"23.976i", u"Unknown"},
      {kSizeText, u"1920 x 1080", u"Unknown"}};
  const std::u16string folder = clip.path.substr(0, clip.path.rfind(u'/'));
  for (const Row& row : rows)
    EXPECT_EQ(InfoText(app, row.id), row.loaded) << row.id;
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
  for (const Row& row : rows)
    EXPECT_EQ(InfoText(app, row.id), row.unloaded) << row.id;
  EXPECT_EQ(FileToolTip(app).text, u"情報はありません。");
  EXPECT_EQ(FileToolTip(app).width, 200);
  app.selectedTracks = 0;
  EXPECT_EQ(CounterStatus(app), u"MXFファイル :  0 トラック /  0トラックを選択中");
}

TEST(Texts, TellWhatARowWillDo) {
  LoadedClip clip{ClipSpec()};
  APP_STATE_INFO& app = clip.app.info;
  WavSpec stereo;
  stereo.channels = 2;
  stereo.timeReference = 36000 * 48000ull + 960;
  const std::u16string path = clip.folder.Write("st.wav", BuildWav(stereo).bytes);
  ASSERT_EQ(AddWavFile(path.c_str(), app.wavList, *app.mxf), kWavOk);
  app.wavIndex = BuildWavIndex(app.wavList, nullptr);
  ASSERT_EQ(AssignWavFile(&app, app.wavList->prev, 2), AssignResult::kAssigned);
  clip.app.tracks.rewrapSwitch[1] = clip.app.tracks.rewrapSwitch[3] = kSwitchOn;
  struct Row {
    std::int32_t track;
    const char16_t* name;
    const char16_t* state;
    std::uint8_t green;
    char16_t mark;
  };
  for (const Row& row : {Row{0, u"", u"書換えは実行されません", 255, 0},
                         {1, u"", u"このトラックには無音が書込まれます。", 255, 0},
                         {2, u"st.wav", u"書換えは実行されません", 130, u'L'},
                         {3, u"st.wav", u"", 255, u'R'},
                         {20, u"", u"トラックがありません", 255, 0}}) {
    const TrackRowText text = TextOfTrack(app, row.track);
    EXPECT_EQ(text.name, row.name) << row.track;
    EXPECT_EQ(text.state, row.state) << row.track;
    EXPECT_EQ(text.nameColor.green, row.green) << row.track;
    EXPECT_EQ(text.channelMark, row.mark) << row.track;
  }
  EXPECT_EQ(TrackToolTip(app, 0).text, u"ファイルが割当てられていません。");
  EXPECT_EQ(TrackToolTip(app, 0).width, 200);
  EXPECT_EQ(TrackToolTip(app, 3).width, 600);
  EXPECT_EQ(TrackToolTip(app, 3).text, u"トラック:  4\n\nst.wav\n" +
                                           path.substr(0, path.rfind(u'/')) +
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

// A loaded clip of ten frames, and what is entered for its range.
struct Entry {
  explicit Entry(const ClipSpec& spec) : clip(spec) {}
  EntryResult In(const char16_t* text) { return Enter(kInTarget, text); }
  EntryResult Out(const char16_t* text) { return Enter(kOutTarget, text); }
  EntryResult Enter(TimecodeTarget target, std::u16string_view text) {
    return ApplyTimecodeEntry(&clip.app.info, target, kExportRange, &points(), text);
  }
  PointSet& points() { return clip.app.info.exportPointSet; }
  std::u16string Range() {
    const RangeTexts texts = TextsOfRange(clip.app.info, kExportRange, points());
    return texts.in + u" " + texts.out + u" " + texts.duration;
  }
  LoadedClip clip;
};

TEST(TimecodeEntry, KeepsTheRangeWithinTheClip) {
  Entry entry{ClipSpec()};
  EXPECT_EQ(entry.Range(), u"--:--:--:-- --:--:--:-- --:--:--:--");
  EXPECT_EQ(entry.Out(u"10:00:00:03"), EntryResult::kBeforeStart) << "nine characters";
  EXPECT_EQ(entry.Out(u"10000003"), EntryResult::kAccepted);
  EXPECT_EQ(entry.Range(), u"--:--:--:-- 10:00:00:03 --:--:--:--");
  EXPECT_EQ(entry.In(u"10000000"), EntryResult::kAccepted);
  EXPECT_EQ(entry.Range(), u"10:00:00:00 10:00:00:03 00:00:00:04");
  EXPECT_EQ(entry.In(u"10000005"), EntryResult::kAccepted);
  EXPECT_EQ(entry.Range(), u"10:00:00:05 10:00:00:05 00:00:00:01") << "OUT moves up to IN";
  EXPECT_EQ(entry.Out(u"10000002"), EntryResult::kAccepted);
  EXPECT_EQ(entry.Out(u"10000025"), EntryResult::kFieldTooLarge);
  EXPECT_EQ(entry.Range(), u"10:00:00:02 10:00:00:02 00:00:00:01");
  EXPECT_EQ(entry.Out(u"10000009"), EntryResult::kAccepted);
  EXPECT_EQ(entry.Out(u"10000010"), EntryResult::kBehindEnd);
  EXPECT_EQ(entry.points(), (PointSet{1, 0}));
  EXPECT_EQ(entry.Range(), u"10:00:00:02 --:--:--:-- --:--:--:--");
  EXPECT_EQ(entry.In(u"12"), EntryResult::kBeforeStart);
  EXPECT_EQ(entry.points(), PointSet{});
  EXPECT_EQ(entry.Enter(kNoTarget, u"10000005"), EntryResult::kMissing);
  EXPECT_EQ(NextTarget(kInTarget), kOutTarget);
  EXPECT_EQ(NextTarget(kOutTarget), kNoTarget);

  const std::pair<EntryResult, std::u16string_view> refusals[] = {
      {EntryResult::kFieldTooLarge, u"不適切な値が入力されています。"},
      {EntryResult::kBeforeStart, u"メディアの開始タイムより前になっています。"},
      {EntryResult::kBehindEnd, u"メディアの終了タイムを越えています。"},
      {EntryResult::kAccepted, u""}};
  for (const auto& [result, text] : refusals)
    EXPECT_EQ(EntryRefusal(result), text);
}

TEST(TimecodeEntry, RefusesFieldsThatAreTooLargeForTheirBase) {
  Entry entry{ClipSpec()};
  const char16_t* largest[] = {u"23595923", u"23595924", u"23595929", u"47595949", u"23595959"};
  for (std::uint32_t base = 0; base < std::size(largest); ++base) {
    entry.clip.app.mxf.timecode.fpsIndex = base;
    EXPECT_NE(entry.In(largest[base]), EntryResult::kFieldTooLarge) << base;
    for (const std::size_t lastDigit : {1u, 3u, 5u, 7u}) {
      std::u16string text = largest[base];
      if (++text[lastDigit] > u'9') {
        text[lastDigit] = u'0';
        ++text[lastDigit - 1];
      }
      EXPECT_EQ(entry.In(text.c_str()), EntryResult::kFieldTooLarge) << base << lastDigit;
    }
  }
}

TEST(TimecodeEntry, ComparesAcrossMidnight) {
  ClipSpec spec;
  spec.start = {23, 59, 59, 20};
  Entry entry(spec);
  EXPECT_EQ(entry.In(u"23595922"), EntryResult::kAccepted);
  EXPECT_EQ(entry.Out(u"00000003"), EntryResult::kAccepted);
  EXPECT_EQ(entry.Range(), u"23:59:59:22 00:00:00:03 00:00:00:07");
  EXPECT_EQ(entry.Out(u"00000005"), EntryResult::kBehindEnd);
  EXPECT_EQ(entry.In(u"23595919"), EntryResult::kBeforeStart);
}

TEST(TimecodeEntry, HoldsWhatATimecodeIsWrittenWith) {
  EXPECT_EQ(PlainTimecodeText(u"１０：0０.0５；０0 "), u"10:00.05;00 ");
  for (const char16_t* foreign : {u"1a", u"12\n", u"１２ｆ", u"−5", u"٢", u"十"})
    EXPECT_FALSE(PlainTimecodeText(foreign));
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
