#include "job/process_table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <initializer_list>
#include <iterator>

#include "mxf/analysis.h"
#include "mxf/essence/continuity.h"
#include "platform/path.h"
#include "platform/text.h"
#include "state/clip_text.h"
#include "state/job_fault.h"
#include "timecode/timecode.h"

namespace quorvan {
namespace {

constexpr std::size_t kResultColumns = 34;

// The texts of a stage's failures, by result minus process code. kFillerText stands in for an empty
// text.
using FailureRow = std::array<std::u16string_view, kResultColumns>;

constexpr std::u16string_view kFillerText = u"エラーコード未定です。";
constexpr std::u16string_view kGeneralStageText = u"Loading MXF file...";

constexpr std::size_t kOwnColumns = 15;  // the columns from 15 on mean the same for every engine

// Texts of failures that the stages of an analysis and the engines share.
constexpr std::u16string_view kUnreadableText =
    u"MXFファイルの読込み中にエラーが発生しました。\n接続デバイスを確認して下さい。";
constexpr std::u16string_view kNoMemoryText =
    u"メモリが確保できません。\n他のアプリを終了してからもう一度お試し下さい。";

// `row` with the texts of the failures that all stages of an analysis have.
constexpr FailureRow OfStage(FailureRow row) {
  row[kStageUnreadable] = kUnreadableText;
  row[kStageNoMemory] = kNoMemoryText;
  return row;
}

// Each text stands on one line, unbroken, so that it can be searched for.
// clang-format off

// The texts of the failures that all engines have, by JobFault, from kNothingOn on.
constexpr std::u16string_view kEngineFailures[kResultColumns - kOwnColumns] = {
    u"トラックスイッチが全てOFFになっています。",
    u"MXFファイルのタイムコード情報(開始・ベース・長さ)が読取れないため、処理できません。\n情報の表示のみ可能です。",
    u"MXFファイルのサンプルレートまたはサンプルビット数が読取れないか、オーディオエレメントと合わないため、処理できません。",
    u"オーディオエレメントのサンプル数が、5フレームのサンプルパターンと一致しないフレームがあります。",
    u"インデックステーブルの位置にオーディオエレメントが見つからないフレームがあります。",
    u"ロードした後でMXFファイルが変更されています。\nもう一度ロードして下さい。",
    u"追加した後でBWFファイルが変更されています。\nもう一度追加して下さい。",
    u"BWFファイルに、ヘッダーに記録された長さの音声がありません。\nファイルを確認してください。",
    u"BWFファイルのサンプル形式が対応していません。\n16bitまたは24bitのリニアPCMをお使い下さい。",
    u"MXFファイルの読み書き中にエラーが発生しました。\n接続デバイスを確認して下さい。",
    u"BWFファイルの読込み中にエラーが発生したか、処理中にファイルが変更されました。\n接続デバイスとファイルを確認して下さい。",
    u"ストレージへの書込みを完了できませんでした。\n空き容量と接続デバイスを確認して下さい。",
    u"音声は書込みましたが、UMIDの書込みを完了できませんでした。\n空き容量と接続デバイスを確認して下さい。",
    kNoMemoryText,
    u"処理用のスレッドを開始できません。\n他のアプリを終了してからもう一度お試し下さい。",
    u"BWFファイルを書込めません。\n空き容量と接続デバイスを確認して下さい。",
    u"インデックステーブルが、範囲の全てのフレームを順に示していません。",
    u"ヘッダーメタデータの中に、パッケージのUMIDを確認できません。\nMXFファイルの構造に問題があります。",
    u"5フレーム１セットのサンプルパターンがクリップの先頭から始まっていないため、処理ができません。",
};
constexpr std::u16string_view kNoExportOnText = u"書出しトラックのON/OFFスイッチが全てOFFになっています。";
constexpr std::u16string_view kSampleBitsText = u"サンプルビット数が対応していません。このアプリは24bit または 16bitに対応しています。 ";

// `row` with the texts of the failures that all engines have.
constexpr FailureRow OfEngine(FailureRow row) {
  for (std::size_t column = kOwnColumns; column < kResultColumns; ++column)
    row[column] = kEngineFailures[column - kOwnColumns];
  return row;
}

// `row` with the texts of the failures that both export engines have.
constexpr FailureRow OfExport(FailureRow row) {
  row = OfEngine(row);
  row[kNothingOn] = kNoExportOnText;
  return row;
}

constexpr FailureRow kUnenteredFailures = {{
    {},
    {},
    u"MXF_BASE_INFOポインタが無効な値になっています。",
}};

constexpr FailureRow kFileSizeFailures = OfStage({{
    {},
    u"ファイルハンドルが無効になっています。",
}});

constexpr FailureRow kPartitionsFailures = OfStage({{
    {},
    u"ファイルハンドルが無効になっています。",
    u"MXF_BASE_INFOポインタが無効になっています。",
    u"MXF_PARTITON_INFOポインタが無効になっています。",
    u"ランダム・インデックス・テーブルが見つかりません。",
    u"ランダム・インデックス・テーブルを格納用のメモリが確保できません。",
    u"パーティション情報格納用のメモリが確保できません。",
    u"パーティションステータスがOPEN(未確定状態)になっているため情報が読み取れません。",
    u"基本パーティションが足りません。データが壊れている可能性があります。",
    u"MXFバージョンが 1.2 または 1.3ではないため、このアプリケーションでは読込めません。",
}});

constexpr FailureRow kPrefaceFailures = OfStage({{
    {},
    u"ファイルハンドルが無効になっています。",
    u"MXF_BASE_INFOポインタが無効になっています。",
    u"MXF_PARTITION_INFOポインタが無効になっています。",
    u"Preface Setが見つかりません。",
    u"Preface Set用バッファが取得できません。",
    u"オペレーショナルパターンが op1a ではないため読込めません。",
    u"フレームラッピングではないため読込めません。",
    u"MXFバージョンが 1.2 または 1.3ではないため、このアプリケーションでは読込めません。",
}});

constexpr FailureRow kMaterialPackageFailures = OfStage({{
    {},
    u"ファイルハンドルが無効になっています。",
    u"MXF_BASE_INFOポインタが無効な値になっています。",
    u"MXF_PARTITON_INFOポインタが無効な値になっています。",
    u"MXF_AUDIO_INFOポインタが無効な値になっています。",
    u"マテリアルパッケージセットが見つかりません。MXFファイルの構造に問題があります。",
    u"タイムライントラックが無いか不足しています。",
    u"シーケンスセットが無いか不足しています。",
    u"タイムコードコンポーネントが見つかりません。",
    u"メディアのデュレーションが０になっています。XDCAM書出しにを想定した設定になっていませんか？",
    u"オーディオトラックがありません。",
}});

constexpr FailureRow kSourcePackageFailures = OfStage({{
    {},
    u"ファイルハンドルが無効になっています。",
    u"MXF_BASE_INFOポインタが無効になっています。",
    u"MXF_PARTITON_INFOポインタが無効になっています。",
    u"MXF_AUDIO_INFOポインタが無効になっています。",
    u"ソースパッケージが見つかりません。MXFファイルの構造に問題があります。",
    u"Top level Source Package Setが見つかりません。",
    u"マルチエッセンス・コンテナ構成になっていません。",
    u"ビデオディスクリプターが見つかりません。",
    u"エッセンスコーデックが見つかりません。",
    u"オーディオディスクリプターが見つかりません。",
    u"サンプルレートが48kHzになっていません。",
}});

constexpr FailureRow kIndexTableFailures = OfStage({{
    {},
    u"ファイルハンドルが無効になっています。",
    u"MXF_BASE_INFOポインタが無効になっています。",
    u"MXF_PARTITON_INFOポインタが無効になっています。",
    u"MXF_TIMECODE_INFOポインタが無効になっています。",
    u"INDEX_ENTRY_ARRAYポインタが無効になっています。",
    u"MXF_AUDIO_INFOポインタが無効な値になっています。",
    u"デルタエントリー数が想定数26(映像1+TC1+音声24)を越えているため、処理ができません。",
    u"インデックステーブルがありません。書出しに失敗している可能性があります。",
    u"SMPTEが定める5フレーム１セットのサンプルパターンが取得できません。",
}});

constexpr FailureRow kContentStorageFailures = OfStage({{
    {},
    u"ファイルハンドルが無効になっています。",
    u"コンテンツストレージセットが無いありません。op1-aの規格に合致しません。",
    u"内包パッケージ数が規定を越えているため、op1-aの規格に合致しません。",
    u"必須のタグが見つかりません。",
    u"オーディオトラックがありません。",
    u"このファイルのビットレートが16bit または 24bit になっていません。",
    u"このファイルのサンプルレートが48kHzになっていません。",
    u"5フレームシーケンスパターンがリストにありません。",
}});

constexpr FailureRow kEssenceContainerDataFailures = OfStage({{
    {},
    u"ファイルハンドルが無効になっています。",
    u"エッセンスコンテナ・データセットが見つかりません。",
    u"IndexSID数が規格違反です。",
    u"BodySID数が規格違反です。",
    u"重要タグが見つかりません。ファイルの内容に問題があります。",
    u"エッセンス・コーディングラベルが見つからりません。",
    u"映像コーディングがテーブルにないか、対応していません。",
}});

constexpr FailureRow kIdentificationFailures = OfStage({{
    {},
    u"ファイルハンドルが無効になっています。",
    u"MXF_BASE_INFOポインタが無効になっています。",
    u"MXF_PARTITION_INFOポインタが無効になっています。",
}});

constexpr FailureRow kContinuityFailures = {{
    {},
    u"ファイルハンドルが無効になっています。",
    u"MXF_BASE_INFOポインタが無効になっています。",
    u"MXF_TIMECODE_INFOポインタが無効になっています。",
    u"MXF_AUDIO_INFOポインタが無効になっています。",
    u"タイムコードデータを格納するメモリが確保できません。",
    u"マッピングハンドルが取得できません。",
    u"マッピングビューを作成できません。\nアプリを再起動してみてください。",
    u"エラー情報を格納するメモリが確保できません。",
    u"タイムコードエラーが検出されました。\r\nログファイルを作成しますか？",
    kUnreadableText,
}};

constexpr FailureRow kRewrapMappedFailures = OfEngine({{
    {},
    u"ファイルパスがありません。",
    u"ラッピングに必要な情報がみつかりませんでした。",
    u"MXFファイルの基本情報が見つかりません。",
    u"FPS値が対応外のデータになっています。",
    u"IN / OUT タイムコードが不適切な値になっています。",
    u"MXFファイルを開くことができません。",
    u"MXFファイルのメモリマッピングハンドルが取得できませんでした。\nアプリを再起動してみてください。",
    u"BWFファイルの中に開けないファイルがあったため中断します。\nファイルを確認してください。",
    u"BWFファイルのメモリマッピングハンドルが取得できません。",
    u"BWFファイル用の一時バッファが取得できません。",
    u"トラックセグメントバッファが確保できません。\n一度に実行するトラック数を減らしてみてください。",
    u"MXFファイルのマッピングビューが作成できません。",
    u"BWFファイルのマッピングビューが作成できません。",
    u"UMIDのサイズが64バイトになっているため、現行バージョンでの新規生成ができません。",
}});

constexpr FailureRow kRewrapFileIoFailures = OfEngine({{
    {},
    u"ファイルパスがありません。",
    u"ラッピングに必要な情報がみつかりませんでした。",
    u"MXFファイルの基本情報が見つかりません。",
    u"FPS値が対応外のデータになっています。",
    u"IN / OUT タイムコードが不適切な値になっています。",
    u"書込みバッファが確保できません。\nPCの再起動が必要かもしれません。",
    u"MXFファイルを開くことができません。",
    u"BWFファイルの中に開けないファイルがあったため中断します。\nファイルを確認してください。",
    {},
    {},
    u"トラックセグメントバッファが確保できません。\n一度に実行するトラック数を減らしてみてください。",
}});

constexpr FailureRow kExportMappedFailures = OfExport({{
    {},
    u"ファイルパスがありません。",
    u"AUDIOTRACK_IO_INFOのポインタが無効になっています。",
    u"MXF_BASE_INFOポインタが無効になっています。",
    u"FPS値が対応外のデータになっています。",
    u"IN / OUT タイムコードが不適切な値になっています。",
    u"MXFファイルを開くことができません。",
    u"MXFファイルのメモリマッピングハンドルが取得できませんでした。\nアプリを再起動してみてください。",
    u"BWFファイルが作成出来ません。",
    u"MXFファイルのマッピングビューが作成できません。",
}});

constexpr FailureRow kExportFileIoFailures = OfExport({{
    {},
    u"ファイルパスがありません。",
    u"書出しに必要な情報がみつかりませんでした。",
    u"MXFファイルの基本情報が見つかりません。",
    u"FPS値が対応外のデータになっています。",
    u"IN / OUT タイムコードが不適切な値になっています。",
    u"書込みバッファが確保できません。\nPCの再起動が必要かもしれません。",
    u"MXFファイルを開くことができません。",
    u"BWFファイルを作成できません。\nファイルの保存場所・ストレージなどを確認して下さい。",
}});

// The results of a measurement count from 4001 on, as those of the export by memory mapping do.
// 4006 to 4008 have other meanings than in that export.
constexpr FailureRow kMeasurementFailures = OfEngine({{
    {},
    kExportMappedFailures[1],
    kExportMappedFailures[2],
    kExportMappedFailures[3],
    kExportMappedFailures[4],
    kExportMappedFailures[5],
    kExportFileIoFailures[6],
    kExportMappedFailures[6],
    u"MXFファイルが空になっています。",
}});

struct Stage {
  std::uint32_t code;
  std::u16string_view name;
  std::u16string_view text;
  FailureRow failures;
};

constexpr Stage kStages[] = {
    {0, u"N/A", {}, kUnenteredFailures},
    {kStageFileSize, u"Acquire FILESIZE", u"ファイルサイズを取得中...", kFileSizeFailures},
    {kStageRandomIndex, u"Acquire RANDOM-INDEX TALBLE", u"ランダムインデックスとパーティション情報を取得中...", kPartitionsFailures},
    {kStagePreface, u"Acquire PREFACE SET", u"オペレーショナルパターン / ラッピング形式 / アンシラリデータの有無を確認", kPrefaceFailures},
    {kStageMaterialPackage, u"Acquire MATERIAL PACKAGE", u"タイムコード情報を取得...", kMaterialPackageFailures},
    {kStageSourcePackage, u"Acquire SOURCE PACKAGE", u"ファイルパッケージを取得...", kSourcePackageFailures},
    {kStageIndexTable, u"Acquire INDEX TABLE SEGMENT", u"インデックステーブルを取得中...", kIndexTableFailures},
    {kStageContentStorage, u"Acquire CONTENT STORAGE", u"AES3オーディオ基本情報を取得", kContentStorageFailures},
    {kStageEssenceContainerData, u"Acquire ESSENCE CONTAINER DATA SET", u"ビデオ基本情報を取得...", kEssenceContainerDataFailures},
    {kStageIdentification, u"Acquire IDENTIFICATION", u"ID情報を取得中...", kIdentificationFailures},
    {kStageTimecodeContinuity, u"Timecode continuity check", u"インデックステーブルとタイムコードを検証しています...", kContinuityFailures},
    {kStageRewrapMapped, u"Writing audio binary data(M-MAPPING)", {}, kRewrapMappedFailures},
    {kStageRewrapFileIo, u"Writing audio binary data(FILE I/O)", {}, kRewrapFileIoFailures},
    {kStageExportMapped, u"Generate WAV file(M-MAPPING)", {}, kExportMappedFailures},
    {kStageExportFileIo, u"Generate WAV file(FILE I/O)", {}, kExportFileIoFailures},
    {kStageLoudness, {}, {}, kExportFileIoFailures},
};

struct Job {
  std::u16string_view title;
  std::array<std::uint32_t, 2> processCodes;  // by Method
};

constexpr std::array<Job, 4> kJobs = {{
    {u"ラッピング", {kStageRewrapMapped, kStageRewrapFileIo}},
    {u"BWFファイルの書出し", {kStageExportMapped, kStageExportFileIo}},
    {{}, {0, 0}},
    {u"ラウドネス測定", {kStageLoudness, kStageLoudness}},
}};

constexpr std::array<std::u16string_view, 2> kMethodNames = {u"Memory Mapping", u"Generic File I/O"};

// In the forms, each %s stands for the next part of the message.
constexpr std::u16string_view kCannotBeOpenedForm =
    u"%s\n\nMXFファイルを開くことができません。\n"
    u"他のアプリで使用していないか、または接続デバイスを確認して下さい。\nERR: %s";
constexpr std::u16string_view kCannotBeLoadedForm =
    u"%s\n\nMXFファイルをロードできません。\n"
    u"接続デバイス、他のアプリで使用していないか確認して下さい。\nERR: %s";
constexpr std::u16string_view kHiddenTracksForm = u"アプリの設計上 %s から %sトラックは認識されません。";
constexpr std::u16string_view kHiddenTracksUncheckedForm = u"アプリの仕様上 %s から %sトラックは認識されません。\nご了承ください。";
constexpr std::u16string_view kOtherElementsForm =
    u"フレーム内のオーディオエレメント: %s\n認識されたオーディオトラック: %s\n\n"
    u"数が一致しないため、使用できないトラックがあります。";
constexpr std::u16string_view kIndexContradictedText =
    u"インデックステーブルがオーディオエレメントを示していないため、\n処理ができないフレームがあります。";
constexpr std::u16string_view kBackupQuestion =
    u"MXFファイルのバックアップは済んでいますか？\n\n全てのUMID(識別子)を書換えるため、\n"
    u"完了後のファイルは、新規素材として認識されます。\n開始してもよろしいでしょうか？";
constexpr std::u16string_view kLoadFailureForm = u"%s\n\nこのファイルはロードできません。\n\n%s\n\n処理セクション: %s\nERR: %s  process: %s";
constexpr std::u16string_view kContinuityFailureForm = u"%s\n\nこのファイルはロードできません。\n\n%s\n\nsection: %s\nERR: %s";
constexpr std::u16string_view kTimecodeBreaksForm = u"%s\n\nこのファイルはロードできません。\n\nタイムコードエラーが検出されました。\n\nsection: %s\nERR: %s";
constexpr std::u16string_view kPathTooLongForm = u"%s\n\nパスが長すぎるため、MXFファイルを開くことができません。";
constexpr std::u16string_view kLoadStoppedForm = u"%s\n\n解析を中断しました。";
constexpr std::u16string_view kAnalysisStoppedForm = u"%s\n\n解析を中断しました。\nこのままロードしますか？";
constexpr std::u16string_view kKeptBackupQuestion =
    u"MXFファイルのバックアップは済んでいますか？\n\nUMID(識別子)は元のままで、音声だけを書換えます。\n"
    u"開始してもよろしいでしょうか？";
constexpr std::u16string_view kJobRefusalForm = u"%s\n\n%s\n\n\tERR: %s  process: %s";
constexpr std::u16string_view kJobDoneForm = u"%s\n\n%sが完了しました。\n\n\tprocess: %s";
constexpr std::u16string_view kJobCancelledForm = u"MXFファイル\n%s\n\n%sを中断しました。\n\n\tprocess: %s";
constexpr std::u16string_view kJobFailureForm = u"%s\n\n%s中にエラーが発生しました。\n%s\n\n\tERR: %s  process: %s";
constexpr std::u16string_view kJobNoticeForm = u"%s\n\n64バイトのUMIDのため、アプリ仕様上更新ができませんでした。\nラッピングは完了していますので、同時に作成されたログテキストをご覧ください。";

// What follows a message, each text in a paragraph of its own.
constexpr std::u16string_view kFileAtFaultForm = u"\n\nファイル: %s";
constexpr std::u16string_view kFrameAtFaultForm = u"\n\nフレーム: %s (%s)";
constexpr std::u16string_view kNothingWrittenText = u"\n\nMXFファイルには何も書込んでいません。";
constexpr std::u16string_view kWrittenForm = u"\n\n%s から %s までの音声は書換えられている可能性があります。";
constexpr std::u16string_view kLongUmidQuestion = u"\n\n元のUMIDのまま、音声を書換えてもよろしいですか？";

constexpr std::u16string_view kSeeLogText = u"\n同時に作成されたログテキストをご覧ください。";
constexpr std::u16string_view kJobNoticeWithoutLogForm = u"%s\n\n64バイトのUMIDのため、アプリ仕様上更新ができませんでした。\nラッピングは完了しています。";
constexpr std::u16string_view kUmidNoticeForm = u"%s\n\nラッピングは完了していますが、UMIDの更新が正しく行われませんでした。\n%s%s";
// Which UMIDs a rewritten clip holds, by UmidState; kUmidsKept, the last state, has kUmidSizeText.
constexpr std::array<std::u16string_view, 5> kUmidStateTexts = {{
    u"MXFファイルのUMIDは新しいものです。",
    u"MXFファイルのUMIDは元のままです。",
    u"MXFファイルには新しいUMIDと元のUMIDが混在しています。",
    u"MXFファイルのUMIDは新しいものですが、更新日時は元のままです。",
    u"MXFファイルのUMIDを読取って確認することができませんでした。",
}};
// clang-format on

// A rewrite by plain file access that cannot renew the UMIDs ends with kUmidTooLong, a result of
// the rewrite by memory mapping.
constexpr std::u16string_view kUmidSizeText =
    kRewrapMappedFailures[kUmidTooLong - kStageRewrapMapped];
static_assert(!kUmidSizeText.empty());

constexpr std::int32_t kStageSpan = 1000;  // between the process codes of two engines

constexpr std::u16string_view kPlace = u"%s";

std::u16string_view TextOf(const FailureRow& row, std::int64_t column) {
  if (column < 0 || column >= static_cast<std::int64_t>(kResultColumns)) return {};
  return row[static_cast<std::size_t>(column)];
}

const Stage* FindStage(std::uint32_t processCode) {
  const auto* found =
      std::find_if(std::begin(kStages), std::end(kStages),
                   [processCode](const Stage& stage) { return stage.code == processCode; });
  return found == std::end(kStages) ? nullptr : found;
}

const Job* FindJob(JobKind jobKind) {
  return jobKind < kJobs.size() ? &kJobs[jobKind] : nullptr;
}

std::u16string Number(std::int32_t number) {
  return platform::ToUtf16(std::to_string(number));
}

std::u16string Hexadecimal(std::uint32_t number) {
  char text[16];
  std::snprintf(text, sizeof text, "%X", number);
  return platform::ToUtf16(text);
}

// `form` with each %s replaced by the next of `parts`. A %s within a part stays as it is.
std::u16string Fill(std::u16string_view form, std::initializer_list<std::u16string_view> parts) {
  std::u16string message;
  for (const std::u16string_view part : parts) {
    const std::size_t place = form.find(kPlace);
    message.append(form.substr(0, place)).append(part);
    form.remove_prefix(place + kPlace.size());
  }
  return message.append(form);
}

}  // namespace

std::uint32_t JobProcessCode(JobKind jobKind, Method method) {
  const Job* job = FindJob(jobKind);
  return job == nullptr ? 0 : job->processCodes[static_cast<std::size_t>(method)];
}

std::u16string_view JobTitle(JobKind jobKind) {
  const Job* job = FindJob(jobKind);
  return job == nullptr ? std::u16string_view() : job->title;
}

std::u16string_view MethodName(Method method) {
  return kMethodNames[static_cast<std::size_t>(method)];
}

std::u16string_view StageName(std::uint32_t processCode) {
  const Stage* stage = FindStage(processCode);
  return stage == nullptr ? std::u16string_view() : stage->name;
}

std::u16string_view StageText(std::uint32_t processCode) {
  const Stage* stage = FindStage(processCode);
  return stage == nullptr || stage->text.empty() ? kGeneralStageText : stage->text;
}

std::u16string_view FailureText(std::uint32_t processCode, std::int32_t result) {
  if (processCode == kStageRewrapFileIo && result == kUmidTooLong) return kUmidSizeText;
  const Stage* stage = FindStage(processCode);
  if (stage == nullptr) return kFillerText;
  std::u16string_view text = TextOf(stage->failures, std::int64_t{result} - stage->code);
  if (processCode == kStageLoudness && text.empty()) {
    text = TextOf(kMeasurementFailures, std::int64_t{result} - kStageExportMapped);
  }
  return text.empty() ? kFillerText : text;
}

std::u16string ClipCannotBeOpenedMessage(std::u16string_view mxfPath, std::uint32_t code) {
  return Fill(kCannotBeOpenedForm, {platform::LastComponent(mxfPath), Hexadecimal(code)});
}

std::u16string ClipCannotBeLoadedMessage(std::u16string_view mxfPath, std::uint32_t code) {
  return Fill(kCannotBeLoadedForm, {platform::LastComponent(mxfPath), Hexadecimal(code)});
}

std::u16string HiddenTracksMessage(const MXF_AUDIO_INFO& audio, bool checked) {
  if (audio.trackCount <= kMaxTracks) return {};
  const std::int32_t tracks = audio.trackCount;
  return checked ? Fill(kHiddenTracksForm, {Number(kMaxTracks + 1), Number(tracks)})
                 : Fill(kHiddenTracksUncheckedForm, {Number(kMaxTracks), Number(tracks)});
}

std::u16string IndexNoticeMessage(const MXF_BASE_INFO& mxf) {
  if (mxf.indexContradicted != 0) return std::u16string(kIndexContradictedText);
  const MXF_AUDIO_INFO& audio = *mxf.audio;
  if (audio.indexedElements == UsableTracks(audio)) return {};
  return Fill(kOtherElementsForm,
              {Number(static_cast<std::int32_t>(audio.indexedElements)), Number(audio.trackCount)});
}

std::u16string_view BackupQuestion(bool keepsUmids) {
  return keepsUmids ? kKeptBackupQuestion : kBackupQuestion;
}

std::u16string LoadFailureMessage(std::u16string_view mxfPath, std::uint32_t processCode,
                                  std::int32_t result, Method method, bool hasAudioDescriptor) {
  // With a descriptor, the result says that its samples do not have 16 or 24 bits.
  const bool otherWidth = result == kAudioDescriptorUnfit && hasAudioDescriptor;
  return Fill(kLoadFailureForm, {platform::LastComponent(mxfPath),
                                 otherWidth ? kSampleBitsText : FailureText(processCode, result),
                                 StageName(processCode), Number(result), MethodName(method)});
}

std::u16string ContinuityFailureMessage(std::u16string_view mxfPath, std::uint32_t processCode,
                                        std::int32_t result) {
  return Fill(kContinuityFailureForm,
              {platform::LastComponent(mxfPath), FailureText(processCode, result),
               StageName(processCode), Number(result)});
}

std::u16string TimecodeBreaksMessage(std::u16string_view mxfPath) {
  return Fill(kTimecodeBreaksForm,
              {platform::LastComponent(mxfPath), StageName(kStageTimecodeContinuity),
               Number(kContinuityBreaks)});
}

std::u16string ClipPathTooLongMessage(std::u16string_view mxfPath) {
  return Fill(kPathTooLongForm, {platform::LastComponent(mxfPath)});
}

std::u16string LoadStoppedMessage(std::u16string_view mxfPath) {
  return Fill(kLoadStoppedForm, {platform::LastComponent(mxfPath)});
}

std::u16string AnalysisStoppedMessage(std::u16string_view mxfPath) {
  return Fill(kAnalysisStoppedForm, {platform::LastComponent(mxfPath)});
}

std::u16string JobRefusalMessage(std::u16string_view mxfPath, std::int32_t result,
                                 std::u16string_view text, Method method) {
  return Fill(kJobRefusalForm,
              {platform::LastComponent(mxfPath), text, Number(result), MethodName(method)});
}

std::u16string JobDoneMessage(std::u16string_view mxfPath, JobKind jobKind, Method method) {
  return Fill(kJobDoneForm,
              {platform::LastComponent(mxfPath), JobTitle(jobKind), MethodName(method)});
}

std::u16string_view UmidStateText(UmidState state) {
  return state < kUmidStateTexts.size() ? kUmidStateTexts[state] : kUmidSizeText;
}

std::u16string JobNoticeMessage(std::u16string_view mxfPath, UmidState state, bool hasLog) {
  const std::u16string_view name = platform::LastComponent(mxfPath);
  if (state == kUmidsKept) return Fill(hasLog ? kJobNoticeForm : kJobNoticeWithoutLogForm, {name});
  return Fill(kUmidNoticeForm,
              {name, UmidStateText(state), hasLog ? kSeeLogText : std::u16string_view()});
}

std::u16string LongUmidQuestion() {
  return std::u16string(kUmidSizeText) + std::u16string(kLongUmidQuestion);
}

std::u16string JobCancelledMessage(std::u16string_view mxfPath, JobKind jobKind, Method method) {
  return Fill(kJobCancelledForm,
              {platform::LastComponent(mxfPath), JobTitle(jobKind), MethodName(method)});
}

std::u16string JobFailureMessage(std::u16string_view mxfPath, JobKind jobKind,
                                 std::uint32_t processCode, std::int32_t result, Method method) {
  return Fill(kJobFailureForm,
              {platform::LastComponent(mxfPath), JobTitle(jobKind),
               FailureText(processCode, result), Number(result), MethodName(method)});
}

namespace {

// The timecode of the real count `count`. In a clip that passes midnight, `count` may exceed a day;
// the timecode then starts again at 00:00:00:00.
std::u16string WrittenTimecode(const MXF_TIMECODE_INFO& timecode, std::int64_t count) {
  const std::int64_t day = FramesPerDay(timecode.fpsIndex, timecode.dropFrame);
  return platform::ToUtf16(TimecodeText(timecode, day > 0 ? count % day : count));
}

}  // namespace

std::u16string FaultDetails(const JOB_FAULT_INFO& fault, const MXF_TIMECODE_INFO& timecode) {
  std::u16string details;
  if (fault.path[0] != 0) details += Fill(kFileAtFaultForm, {fault.path});
  if (fault.frame != kNoFrame) {
    const std::int64_t count = std::int64_t{timecode.startFrames} + fault.frame;
    details += Fill(kFrameAtFaultForm, {WrittenTimecode(timecode, count),
                                        platform::ToUtf16(std::to_string(fault.frame))});
  }
  return details;
}

std::u16string WrittenFrames(const AUDIOTRACK_IO_INFO& tracks, const MXF_TIMECODE_INFO& timecode,
                             std::int32_t result) {
  const std::uint32_t begun = tracks.fault.framesBegun;
  if (begun == 0) return std::u16string(kNothingWrittenText);
  const std::int64_t in = tracks.inFrame[0];
  std::u16string written = Fill(
      kWrittenForm, {WrittenTimecode(timecode, in), WrittenTimecode(timecode, in + begun - 1)});
  const bool umidsTouched = result % kStageSpan == kUmidsNotFlushed;
  return written.append(u"\n").append(UmidStateText(umidsTouched ? tracks.umidState : kUmidsOld));
}

}  // namespace quorvan
