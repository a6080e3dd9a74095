#include "job/process_table.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>

#include "mxf/analysis.h"

namespace quorvan {
namespace {

constexpr std::u16string_view kFiller = u"エラーコード未定です。";

// Each text with all results that show it under the stage of their own.
struct FailureRow {
  std::u16string_view text;
  std::vector<std::int32_t> results;
};

// clang-format off
const FailureRow kStageFailures[] = {
    {u"MXF_BASE_INFOポインタが無効な値になっています。", {2, 402}},
    {u"ファイルハンドルが無効になっています。", {101, 201, 301, 401, 501, 601, 701, 801, 901, 1001}},
    {u"MXF_BASE_INFOポインタが無効になっています。", {202, 302, 502, 602, 902, 1002, 4003}},
    {u"MXF_PARTITON_INFOポインタが無効になっています。", {203, 503, 603}},
    {u"ランダム・インデックス・テーブルが見つかりません。", {204}},
    {u"ランダム・インデックス・テーブルを格納用のメモリが確保できません。", {205}},
    {u"パーティション情報格納用のメモリが確保できません。", {206}},
    {u"パーティションステータスがOPEN(未確定状態)になっているため情報が読み取れません。", {207}},
    {u"基本パーティションが足りません。データが壊れている可能性があります。", {208}},
    {u"MXFバージョンが 1.2 または 1.3ではないため、このアプリケーションでは読込めません。", {209, 308}},
    {u"MXF_PARTITION_INFOポインタが無効になっています。", {303, 903}},
    {u"Preface Setが見つかりません。", {304}},
    {u"Preface Set用バッファが取得できません。", {305}},
    {u"オペレーショナルパターンが op1a ではないため読込めません。", {306}},
    {u"フレームラッピングではないため読込めません。", {307}},
    {u"MXF_PARTITON_INFOポインタが無効な値になっています。", {403}},
    {u"MXF_AUDIO_INFOポインタが無効な値になっています。", {404, 606}},
    {u"マテリアルパッケージセットが見つかりません。MXFファイルの構造に問題があります。", {405}},
    {u"タイムライントラックが無いか不足しています。", {406}},
    {u"シーケンスセットが無いか不足しています。", {407}},
    {u"タイムコードコンポーネントが見つかりません。", {408}},
    {u"メディアのデュレーションが０になっています。XDCAM書出しにを想定した設定になっていませんか？", {409}},
    {u"オーディオトラックがありません。", {410, 705}},
    {u"MXF_AUDIO_INFOポインタが無効になっています。", {504, 1004}},
    {u"ソースパッケージが見つかりません。MXFファイルの構造に問題があります。", {505}},
    {u"Top level Source Package Setが見つかりません。", {506}},
    {u"マルチエッセンス・コンテナ構成になっていません。", {507}},
    {u"ビデオディスクリプターが見つかりません。", {508}},
    {u"エッセンスコーデックが見つかりません。", {509}},
    {u"オーディオディスクリプターが見つかりません。", {510}},
    {u"サンプルレートが48kHzになっていません。", {511}},
    {u"MXF_TIMECODE_INFOポインタが無効になっています。", {604, 1003}},
    {u"INDEX_ENTRY_ARRAYポインタが無効になっています。", {605}},
    {u"デルタエントリー数が想定数26(映像1+TC1+音声24)を越えているため、処理ができません。", {607}},
    {u"インデックステーブルがありません。書出しに失敗している可能性があります。", {608}},
    {u"SMPTEが定める5フレーム１セットのサンプルパターンが取得できません。", {609}},
    {u"コンテンツストレージセットが無いありません。op1-aの規格に合致しません。", {702}},
    {u"内包パッケージ数が規定を越えているため、op1-aの規格に合致しません。", {703}},
    {u"必須のタグが見つかりません。", {704}},
    {u"このファイルのビットレートが16bit または 24bit になっていません。", {706}},
    {u"このファイルのサンプルレートが48kHzになっていません。", {707}},
    {u"5フレームシーケンスパターンがリストにありません。", {708}},
    {u"エッセンスコンテナ・データセットが見つかりません。", {802}},
    {u"IndexSID数が規格違反です。", {803}},
    {u"BodySID数が規格違反です。", {804}},
    {u"重要タグが見つかりません。ファイルの内容に問題があります。", {805}},
    {u"エッセンス・コーディングラベルが見つからりません。", {806}},
    {u"映像コーディングがテーブルにないか、対応していません。", {807}},
    {u"タイムコードデータを格納するメモリが確保できません。", {1005}},
    {u"マッピングハンドルが取得できません。", {1006}},
    {u"マッピングビューを作成できません。\nアプリを再起動してみてください。", {1007}},
    {u"エラー情報を格納するメモリが確保できません。", {1008}},
    {u"タイムコードエラーが検出されました。\r\nログファイルを作成しますか？", {1009}},
    {u"ファイルパスがありません。", {2001, 3001, 4001, 5001}},
    {u"ラッピングに必要な情報がみつかりませんでした。", {2002, 3002}},
    {u"AUDIOTRACK_IO_INFOのポインタが無効になっています。", {4002}},
    {u"書出しに必要な情報がみつかりませんでした。", {5002}},
    {u"MXFファイルの基本情報が見つかりません。", {2003, 3003, 5003}},
    {u"FPS値が対応外のデータになっています。", {2004, 3004, 4004, 5004}},
    {u"IN / OUT タイムコードが不適切な値になっています。", {2005, 3005, 4005, 5005}},
    {u"MXFファイルを開くことができません。", {2006, 3007, 4006, 5007}},
    {u"MXFファイルのメモリマッピングハンドルが取得できませんでした。\nアプリを再起動してみてください。", {2007, 4007}},
    {u"BWFファイルの中に開けないファイルがあったため中断します。\nファイルを確認してください。", {2008, 3008}},
    {u"BWFファイルのメモリマッピングハンドルが取得できません。", {2009}},
    {u"BWFファイル用の一時バッファが取得できません。", {2010}},
    {u"書込みバッファが確保できません。\nPCの再起動が必要かもしれません。", {3006, 5006}},
    {u"トラックセグメントバッファが確保できません。\n一度に実行するトラック数を減らしてみてください。", {2011, 3011}},
    {u"MXFファイルのマッピングビューが作成できません。", {2012, 4009}},
    {u"BWFファイルのマッピングビューが作成できません。", {2013}},
    {u"UMIDのサイズが64バイトになっているため、現行バージョンでの新規生成ができません。", {2014}},
    {u"BWFファイルが作成出来ません。", {4008}},
    {u"BWFファイルを作成できません。\nファイルの保存場所・ストレージなどを確認して下さい。", {5008}},
    {u"トラックスイッチが全てOFFになっています。", {2000 + kNothingOn, 3000 + kNothingOn}},
    {u"書出しトラックのON/OFFスイッチが全てOFFになっています。", {4000 + kNothingOn, 5000 + kNothingOn}},
};

// What every engine shows for a fault that they share, by how the text begins.
const std::pair<JobFault, std::u16string_view> kEngineFailures[] = {
    {kNoRange, u"MXFファイルのタイムコード情報(開始・ベース・長さ)が読取れない"},
    {kNoSampleFormat, u"MXFファイルのサンプルレートまたはサンプルビット数が読取れない"},
    {kUnfitFrame, u"オーディオエレメントのサンプル数が、5フレームのサンプルパターンと一致しない"},
    {kMisplacedFrame, u"インデックステーブルの位置にオーディオエレメントが見つからない"},
    {kClipChanged, u"ロードした後でMXFファイルが変更されています。"},
    {kSourceChanged, u"追加した後でBWFファイルが変更されています。"},
    {kSourceCutShort, u"BWFファイルに、ヘッダーに記録された長さの音声がありません。"},
    {kSourceNotPcm, u"BWFファイルのサンプル形式が対応していません。"},
    {kClipFault, u"MXFファイルの読み書き中にエラーが発生しました。"},
    {kSourceFault, u"BWFファイルの読込み中にエラーが発生した"},
    {kNotFlushed, u"ストレージへの書込みを完了できませんでした。"},
    {kUmidsNotFlushed, u"音声は書込みましたが、UMIDの書込みを完了できませんでした。"},
    {kOutOfMemory, u"メモリが確保できません。"},
    {kNoThread, u"処理用のスレッドを開始できません。"},
    {kTargetFault, u"BWFファイルを書込めません。"},
    {kIndexUnfit, u"インデックステーブルが、範囲の全てのフレームを順に示していません。"},
    {kHeaderUnfit, u"ヘッダーメタデータの中に、パッケージのUMIDを確認できません。"},
};

struct StageRow {
  std::uint32_t code;
  std::u16string_view name;
  std::u16string_view text;
};

constexpr std::u16string_view kGeneral = u"Loading MXF file...";

const StageRow kStages[] = {
    {0, u"N/A", kGeneral},
    {100, u"Acquire FILESIZE", u"ファイルサイズを取得中..."},
    {200, u"Acquire RANDOM-INDEX TALBLE", u"ランダムインデックスとパーティション情報を取得中..."},
    {300, u"Acquire PREFACE SET", u"オペレーショナルパターン / ラッピング形式 / アンシラリデータの有無を確認"},
    {400, u"Acquire MATERIAL PACKAGE", u"タイムコード情報を取得..."},
    {500, u"Acquire SOURCE PACKAGE", u"ファイルパッケージを取得..."},
    {600, u"Acquire INDEX TABLE SEGMENT", u"インデックステーブルを取得中..."},
    {700, u"Acquire CONTENT STORAGE", u"AES3オーディオ基本情報を取得"},
    {800, u"Acquire ESSENCE CONTAINER DATA SET", u"ビデオ基本情報を取得..."},
    {900, u"Acquire IDENTIFICATION", u"ID情報を取得中..."},
    {1000, u"Timecode continuity check", u"インデックステーブルとタイムコードを検証しています..."},
    {2000, u"Writing audio binary data(M-MAPPING)", kGeneral},
    {3000, u"Writing audio binary data(FILE I/O)", kGeneral},
    {4000, u"Generate WAV file(M-MAPPING)", kGeneral},
    {5000, u"Generate WAV file(FILE I/O)", kGeneral},
    {6000, u"", kGeneral},
    {1234, u"", kGeneral},  // none
};
// clang-format on

constexpr std::u16string_view kUnreadable = u"MXFファイルの読込み中にエラーが発生しました。";
constexpr std::u16string_view kNoMemory = u"メモリが確保できません。";

// How the text of every result begins that has one.
std::map<std::int32_t, std::u16string_view> AllFailures() {
  std::map<std::int32_t, std::u16string_view> texts = {{1000 + 10, kUnreadable}};
  for (const FailureRow& row : kStageFailures) {
    for (const std::int32_t result : row.results)
      texts[result] = row.text;
  }
  for (std::int32_t stage = 100; stage < 1000; stage += 100) {
    texts[stage + kStageUnreadable] = kUnreadable;
    texts[stage + kStageNoMemory] = kNoMemory;
  }
  for (std::int32_t stage = 2000; stage < 6000; stage += 1000) {
    for (const auto& [fault, text] : kEngineFailures)
      texts[stage + fault] = text;
  }
  return texts;
}

TEST(FailureText, IsTheOneOfItsResultInEveryStage) {
  const auto texts = AllFailures();
  for (const StageRow& stage : kStages) {
    if (stage.code == 6000) continue;
    for (std::int32_t column = -1; column <= 40; ++column) {
      const std::int32_t result = static_cast<std::int32_t>(stage.code) + column;
      const std::u16string_view text = FailureText(stage.code, result);
      const auto known = texts.find(result);
      EXPECT_EQ(text.find(known == texts.end() || column < 0 ? kFiller : known->second), 0U)
          << result;
      EXPECT_LE(text.size(), 255U) << result;
    }
  }
  EXPECT_EQ(FailureText(3000, 2014), FailureText(2000, 2014));
  const std::pair<std::uint32_t, std::int32_t> others[] = {
      {3000, 2013},
      {4000, 2014},
      {150, 151},
      {100, std::numeric_limits<std::int32_t>::min()},
      {std::numeric_limits<std::uint32_t>::max(), -1}};
  for (const auto& [stage, result] : others)
    EXPECT_EQ(FailureText(stage, result), kFiller) << result;
}

// A measurement that cannot open the clip must not speak of a mapping, nor of a BWF file.
TEST(FailureText, TellsWhyAMeasurementHasFailed) {
  const std::pair<std::int32_t, std::int32_t> same[] = {{4001, 4001}, {4002, 4002}, {4003, 4003},
                                                        {4004, 4004}, {4005, 4005}, {4006, 5006},
                                                        {4007, 5007}, {6007, 5007}};
  for (const auto& [result, like] : same)
    EXPECT_EQ(FailureText(6000, result), FailureText(like < 5000 ? 4000 : 5000, like)) << result;
  EXPECT_EQ(FailureText(6000, 4008), u"MXFファイルが空になっています。");
  for (const std::int32_t none : {4000, 4009, 4010})
    EXPECT_EQ(FailureText(6000, none), kFiller) << none;
  for (const auto& [fault, text] : kEngineFailures)
    EXPECT_EQ(FailureText(6000, 4000 + fault).find(text), 0U) << fault;
}

TEST(Stages, HaveNamesAndTexts) {
  for (const StageRow& stage : kStages) {
    EXPECT_EQ(StageName(stage.code), stage.name);
    EXPECT_EQ(StageText(stage.code), stage.text);
  }
}

TEST(Messages, TakeTheClipsNameAsItIs) {
  EXPECT_EQ(LoadFailureMessage(u"/clips/A%s.mxf", 900, 901, Method::kGenericFileIo),
            u"A%s.mxf\n\nこのファイルはロードできません。\n\nファイルハンドルが無効になっていま"
            u"す。\n\n処理セクション: Acquire IDENTIFICATION\nERR: 901  process: Generic File I/O");
  // One number for a descriptor that is missing and for one of another width.
  EXPECT_NE(LoadFailureMessage(u"/A.mxf", 500, 510, Method::kMemoryMapping, true)
                .find(u"サンプルビット数が対応していません"),
            std::u16string::npos);
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
  tracks.inFrame = {2159998, 2159998};  // up to midnight and behind it
  EXPECT_EQ(WrittenFrames(tracks, timecode, 2024).find(u"\n\n23:59:59:23 から 00:00:00:02 まで"),
            0U);
  EXPECT_EQ(FaultDetails(tracks.fault, timecode), u"");
  tracks.fault.frame = 3;
  std::u16string(u"/a/b.wav").copy(tracks.fault.path, 9);
  EXPECT_EQ(FaultDetails(tracks.fault, timecode),
            u"\n\nファイル: /a/b.wav\n\nフレーム: 01:00:00:03 (3)");
}

TEST(Messages, TellWhichUmidsTheClipHolds) {
  const std::pair<UmidState, std::u16string_view> states[] = {
      {kUmidsKept, u"64バイトのUMIDのため、アプリ仕様上更新ができませんでした。"},
      {kUmidsOld, u"MXFファイルのUMIDは元のままです。"},
      {kUmidsMixed, u"MXFファイルには新しいUMIDと元のUMIDが混在しています。"},
      {kUmidsUndated, u"MXFファイルのUMIDは新しいものですが、更新日時は元のままです。"},
      {kUmidsUnknown, u"MXFファイルのUMIDを読取って確認することができませんでした。"}};
  for (const auto& [state, text] : states) {
    for (const bool hasLog : {false, true}) {
      const std::u16string message = JobNoticeMessage(u"/A.mxf", state, hasLog);
      EXPECT_EQ(message.find(u"A.mxf\n\n"), 0U);
      EXPECT_NE(message.find(text), std::u16string::npos);
      EXPECT_EQ(message.find(u"ログテキスト") != std::u16string::npos, hasLog);
    }
  }
  EXPECT_NE(BackupQuestion(false).find(u"全てのUMID"), std::u16string_view::npos);
  EXPECT_EQ(BackupQuestion(true).find(u"全てのUMID"), std::u16string_view::npos);
}

}  // namespace
}  // namespace quorvan
