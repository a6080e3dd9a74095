#include "job/process_table.h"

#include <gtest/gtest.h>

#include <limits>

namespace quorvan {
namespace {

constexpr std::u16string_view kFiller = u"エラーコード未定です。";
constexpr std::uint32_t kStageCodes[] = {0,   100, 200,  300,  400,  500,  600,  700,
                                         800, 900, 1000, 2000, 3000, 4000, 5000, 6000};

TEST(FailureText, EndsEachRowWithItsLastText) {
  const struct {
    std::uint32_t code;
    std::int32_t last;
    std::u16string_view text;
  } kRows[] = {
      {0, 2, u"MXF_BASE_INFOポインタが無効な値になっています。"},
      {100, 101, u"ファイルハンドルが無効になっています。"},
      {200, 207,
       u"パーティションステータスがOPEN(未確定状態)になっているため情報が読み取れません。"},
      {300, 308,
       u"MXFバージョンが 1.2 または 1.3ではないため、このアプリケーションでは読込めません。"},
      {400, 410, u"オーディオトラックがありません。"},
      {500, 510, u"オーディオディスクリプターが見つかりません。"},
      {600, 607,
       u"デルタエントリー数が想定数26(映像1+TC1+音声24)を越えているため、処理ができません。"},
      {700, 708, u"5フレームシーケンスパターンがリストにありません。"},
      {800, 807, u"映像コーディングがテーブルにないか、対応していません。"},
      {900, 903, u"MXF_PARTITION_INFOポインタが無効になっています。"},
      {1000, 1009, u"タイムコードエラーが検出されました。\r\nログファイルを作成しますか？"},
      {2000, 2014,
       u"UMIDのサイズが64バイトになっているため、現行バージョンでの新規生成ができません。"},
      {3000, 3013,
       u"BWFファイルの読込み中にエラーが発生しました。\n接続デバイスを確認してください。"},
      {4000, 4009, u"MXFファイルのマッピングビューが作成できません。"},
      {5000, 5008,
       u"BWFファイルを作成できません。\nファイルの保存場所・ストレージなどを確認して下さい。"},
      {6000, 6008,
       u"BWFファイルを作成できません。\nファイルの保存場所・ストレージなどを確認して下さい。"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(FailureText(row.code, row.last), row.text) << row.code;
    EXPECT_EQ(FailureText(row.code, row.last + 1), kFiller) << row.code;
    EXPECT_EQ(FailureText(row.code, static_cast<std::int32_t>(row.code)), kFiller) << row.code;
  }
}

TEST(FailureText, FitsAMessageBufferAndHasNoGapButTheKnownOnes) {
  for (const std::uint32_t code : kStageCodes) {
    bool ended = false;
    for (std::int32_t column = 1; column <= 14; ++column) {
      const std::int32_t result = static_cast<std::int32_t>(code) + column;
      const std::u16string_view text = FailureText(code, result);
      EXPECT_LE(text.size(), 255U) << result;
      const bool known =
          (code == 0 && column == 2) || (code == 3000 && column >= 11 && column <= 13);
      EXPECT_TRUE(!ended || known || text == kFiller) << result;
      ended = ended || text == kFiller;
    }
  }
}

TEST(FailureText, FallsBackOutsideTheRows) {
  EXPECT_EQ(FailureText(3000, 2014), FailureText(2000, 2014));
  EXPECT_EQ(FailureText(3000, 2013), kFiller);
  EXPECT_EQ(FailureText(4000, 2014), kFiller);
  EXPECT_EQ(FailureText(6000, 4010), kFiller);
  EXPECT_EQ(FailureText(6000, 4000), kFiller);
  EXPECT_EQ(FailureText(2000, 2015), kFiller);
  EXPECT_EQ(FailureText(2000, 1999), kFiller);
  EXPECT_EQ(FailureText(150, 151), kFiller);
  EXPECT_EQ(FailureText(100, std::numeric_limits<std::int32_t>::min()), kFiller);
  EXPECT_EQ(FailureText(std::numeric_limits<std::uint32_t>::max(), -1), kFiller);
}

// A measurement that cannot open the clip must not speak of a mapping, nor of a BWF file.
TEST(FailureText, TellsWhyAMeasurementHasFailed) {
  for (const std::int32_t same : {4001, 4002, 4003, 4004, 4005, 4009})
    EXPECT_EQ(FailureText(6000, same), FailureText(4000, same)) << same;
  EXPECT_EQ(FailureText(6000, 4006), FailureText(5000, 5006));
  EXPECT_EQ(FailureText(6000, 4007), FailureText(4000, 4006));
  EXPECT_EQ(FailureText(6000, 4008), FailureText(4000, 4007));
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
  EXPECT_EQ(LoadFailureMessage(u"/clips/A%s.mxf", 900, 901, 0),
            u"A%s.mxf\n\nこのファイルはロードできません。\n\nファイルハンドルが無効になっています。"
            u"\n\n処理セクション: Acquire IDENTIFICATION\nERR: 901  process: Memory Mapping");
  EXPECT_EQ(ContinuityFailureMessage(u"A.mxf", 1000, 1012),
            u"A.mxf\n\nこのファイルはロードできません。\n\nエラーコード未定です。"
            u"\n\nsection: Timecode continuity check\nERR: 1012");
  EXPECT_EQ(AnalysisStoppedMessage(u"/A.mxf"),
            u"A.mxf\n\n解析を中断しました。\nこのままロードしますか？");
  EXPECT_EQ(JobDoneMessage(u"/A.mxf", kExportJob, 1),
            u"A.mxf\n\nBWFファイルの書出しが完了しました。\n\n\tprocess: Generic File I/O");
  EXPECT_EQ(JobCancelledMessage(u"/A.mxf", kLoudnessJob, 0),
            u"MXFファイル\nA.mxf\n\nラウドネス測定を中断しました。\n\n\tprocess: Memory Mapping");
  EXPECT_EQ(JobFailureMessage(u"/A.mxf", kRewriteJob, JobProcessCode(kRewriteJob, 7), 3005, 7),
            u"A.mxf\n\nラッピング中にエラーが発生しました。\nIN / OUT "
            u"タイムコードが不適切な値になっています。\n\n\tERR: 3005  process: Generic File I/O");
}

}  // namespace
}  // namespace quorvan
