#include "job/process_table.h"

#include <gtest/gtest.h>

#include <limits>

#include "mxf/analysis.h"

namespace quorvan {
namespace {

constexpr std::u16string_view kFiller = u"エラーコード未定です。";
TEST(FailureText, HasAnswersForEveryResultOfEveryStageAndNoOther) {
  // The last result of a row's own; behind it an engine's row has those from 15 to 32, an
  // analysis's those of a file that cannot be read and of memory that is out.
  const struct {
    std::uint32_t code;
    std::int32_t last;
    std::u16string_view text;
  } kRows[] = {
      {200, 209,
       u"MXFバージョンが 1.2 または 1.3ではないため、このアプリケーションでは読込めません。"},
      {300, 308,
       u"MXFバージョンが 1.2 または 1.3ではないため、このアプリケーションでは読込めません。"},
      {400, 410, u"オーディオトラックがありません。"},
      {500, 511, u"サンプルレートが48kHzになっていません。"},
      {600, 609, u"SMPTEが定める5フレーム１セットのサンプルパターンが取得できません。"},
      {700, 708, u"5フレームシーケンスパターンがリストにありません。"},
      {800, 807, u"映像コーディングがテーブルにないか、対応していません。"},
      {900, 903, u"MXF_PARTITION_INFOポインタが無効になっています。"},
      {2000, 2014,
       u"UMIDのサイズが64バイトになっているため、現行バージョンでの新規生成ができません。"},
      {3000, 3008,
       u"BWFファイルの中に開けないファイルがあったため中断します。\nファイルを確認してください。"},
      {4000, 4009, u"MXFファイルのマッピングビューが作成できません。"},
      {5000, 5008,
       u"BWFファイルを作成できません。\nファイルの保存場所・ストレージなどを確認して下さい。"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(FailureText(row.code, row.last), row.text) << row.code;
    const auto base = static_cast<std::int32_t>(row.code);
    const bool engine = row.code >= 2000;
    for (std::int32_t column = 0; column <= 40; ++column) {
      const std::u16string_view text = FailureText(row.code, base + column);
      EXPECT_LE(text.size(), 255U) << base + column;
      const bool own = column >= 1 && column <= row.last - base;
      const bool shared = engine ? column >= kNothingOn && column <= kHeaderUnfit
                                 : column == kStageUnreadable || column == kStageNoMemory;
      const bool odd = base + column == 3011;
      EXPECT_EQ(text != kFiller, own || shared || odd) << base + column;
    }
  }
  EXPECT_EQ(FailureText(2000, 2000 + kNothingOn), u"トラックスイッチが全てOFFになっています。");
  EXPECT_EQ(FailureText(5000, 5000 + kNothingOn),
            u"書出しトラックのON/OFFスイッチが全てOFFになっています。");
  for (std::int32_t fault = kNothingOn; fault <= kHeaderUnfit; ++fault)
    EXPECT_NE(FailureText(6000, 4000 + fault), kFiller) << fault;
}

TEST(FailureText, FallsBackOutsideTheRows) {
  EXPECT_EQ(FailureText(3000, 2014), FailureText(2000, 2014));
  EXPECT_EQ(FailureText(3000, 2013), kFiller);
  EXPECT_EQ(FailureText(4000, 2014), kFiller);
  EXPECT_EQ(FailureText(6000, 4010), kFiller);
  EXPECT_EQ(FailureText(6000, 4000), kFiller);
  EXPECT_EQ(FailureText(2000, 1999), kFiller);
  EXPECT_EQ(FailureText(150, 151), kFiller);
  EXPECT_EQ(FailureText(100, std::numeric_limits<std::int32_t>::min()), kFiller);
  EXPECT_EQ(FailureText(std::numeric_limits<std::uint32_t>::max(), -1), kFiller);
}

// A measurement that cannot open the clip must not speak of a mapping, nor of a BWF file.
TEST(FailureText, TellsWhyAMeasurementHasFailed) {
  for (const std::int32_t same : {4001, 4002, 4003, 4004, 4005})
    EXPECT_EQ(FailureText(6000, same), FailureText(4000, same)) << same;
  EXPECT_EQ(FailureText(6000, 4006), FailureText(5000, 5006));
  EXPECT_EQ(FailureText(6000, 4007), FailureText(4000, 4006));
  EXPECT_EQ(FailureText(6000, 4009), kFiller);
  EXPECT_EQ(FailureText(6000, 6007), FailureText(5000, 5007));
}

TEST(Stages, ShowAGeneralTextWhereTheyHaveNone) {
  EXPECT_EQ(StageText(1000), u"インデックステーブルとタイムコードを検証しています...");
  for (const std::uint32_t code : {0U, 2000U, 6000U, 1234U}) {
    EXPECT_EQ(StageText(code), u"Loading MXF file...") << code;
  }
  EXPECT_EQ(StageName(900), u"Acquire IDENTIFICATION");
  EXPECT_EQ(StageName(6000), u"");
  EXPECT_EQ(StageName(1234), u"");
}

TEST(Messages, NameTheClipTheReasonAndTheMethod) {
  EXPECT_EQ(LoadFailureMessage(u"/clips/A%s.mxf", 900, 901, Method::kMemoryMapping),
            u"A%s.mxf\n\nこのファイルはロードできません。\n\nファイルハンドルが無効になっています。"
            u"\n\n処理セクション: Acquire IDENTIFICATION\nERR: 901  process: Memory Mapping");
  EXPECT_EQ(ContinuityFailureMessage(u"A.mxf", 1000, 1012),
            u"A.mxf\n\nこのファイルはロードできません。\n\nエラーコード未定です。"
            u"\n\nsection: Timecode continuity check\nERR: 1012");
  EXPECT_NE(LoadFailureMessage(u"/A.mxf", 500, 510, Method::kMemoryMapping, true)
                .find(u"サンプルビット数が対応していません"),
            std::u16string::npos);
  EXPECT_EQ(AnalysisStoppedMessage(u"/A.mxf"),
            u"A.mxf\n\n解析を中断しました。\nこのままロードしますか？");
  EXPECT_EQ(JobDoneMessage(u"/A.mxf", kExportJob, Method::kGenericFileIo),
            u"A.mxf\n\nBWFファイルの書出しが完了しました。\n\n\tprocess: Generic File I/O");
  EXPECT_EQ(JobCancelledMessage(u"/A.mxf", kLoudnessJob, Method::kMemoryMapping),
            u"MXFファイル\nA.mxf\n\nラウドネス測定を中断しました。\n\n\tprocess: Memory Mapping");
  EXPECT_EQ(
      JobFailureMessage(u"/A.mxf", kRewriteJob, JobProcessCode(kRewriteJob, Method::kGenericFileIo),
                        3005, Method::kGenericFileIo),
      u"A.mxf\n\nラッピング中にエラーが発生しました。\nIN / OUT "
      u"タイムコードが不適切な値になっています。\n\n\tERR: 3005  process: Generic File I/O");
}

// How much of the clip has changed, and which frame and file are at fault.
TEST(Messages, SayWhatWasWritten) {
  AUDIOTRACK_IO_INFO tracks{};
  MXF_TIMECODE_INFO timecode{};
  timecode.fpsIndex = 1;
  timecode.startFrames = 90000;
  tracks.inFrame = {90010, 90010};
  EXPECT_EQ(WrittenFrames(tracks, timecode, 2018), u"\n\nMXFファイルには何も書込んでいません。");
  tracks.fault.framesBegun = 5;
  const std::u16string written =
      u"\n\n01:00:00:10 から 01:00:00:14 までの音声は書換えられている可能性があります。";
  EXPECT_EQ(WrittenFrames(tracks, timecode, 2024),
            written + u"\nMXFファイルのUMIDは元のままです。");
  EXPECT_EQ(WrittenFrames(tracks, timecode, 3027),
            written + u"\nMXFファイルのUMIDは新しいものです。");
  EXPECT_EQ(FaultDetails(tracks.fault, timecode), u"");
  tracks.fault.frame = 3;
  std::u16string(u"/a/b.wav").copy(tracks.fault.path, 9);
  EXPECT_EQ(FaultDetails(tracks.fault, timecode),
            u"\n\nファイル: /a/b.wav\n\nフレーム: 01:00:00:03 (3)");
}

TEST(Messages, TellWhichUmidsTheClipHolds) {
  EXPECT_EQ(
      JobNoticeMessage(u"/A.mxf", kUmidsKept, true),
      u"A.mxf\n\n64バイトのUMIDのため、アプリ仕様上更新ができませんでした。\nラッピングは完了し"
      u"ていますので、同時に作成されたログテキストをご覧ください。");
  for (const UmidState state : {kUmidsOld, kUmidsMixed, kUmidsUndated, kUmidsUnknown}) {
    const std::u16string text = JobNoticeMessage(u"/A.mxf", state, true);
    EXPECT_NE(text.find(UmidStateText(state)), std::u16string::npos);
  }
  for (const UmidState state : {kUmidsKept, kUmidsOld})
    EXPECT_EQ(JobNoticeMessage(u"/A.mxf", state, false).find(u"ログ"), std::u16string::npos);
  EXPECT_NE(BackupQuestion(false).find(u"全てのUMID"), std::u16string_view::npos);
  EXPECT_EQ(BackupQuestion(true).find(u"全てのUMID"), std::u16string_view::npos);
}

}  // namespace
}  // namespace quorvan
