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

using platform::Language;
using platform::Text;

constexpr std::size_t kResultColumns = 34;

// The texts of a stage's failures, by result minus process code. kFillerText stands in for an empty
// text.
using FailureRow = std::array<Text, kResultColumns>;

constexpr Text kFillerText = {u"エラーコード未定です。", u"There is no text for this error code."};
constexpr Text kGeneralStageText = {u"Loading MXF file...", u"Loading MXF file..."};

constexpr std::size_t kOwnColumns = 15;  // the columns from 15 on mean the same for every engine

// Texts of failures that the stages of an analysis and the engines share.
constexpr Text kUnreadableText = {
    u"MXFファイルの読込み中にエラーが発生しました。\n接続デバイスを確認して下さい。",
    u"The MXF file could not be read.\nCheck the connected device."};
constexpr Text kNoMemoryText = {
    u"メモリが確保できません。\n他のアプリを終了してからもう一度お試し下さい。",
    u"Out of memory.\nClose other programs and try again."};

// `row` with the texts of the failures that all stages of an analysis have.
constexpr FailureRow OfStage(FailureRow row) {
  row[kStageUnreadable] = kUnreadableText;
  row[kStageNoMemory] = kNoMemoryText;
  return row;
}

// Each text stands on one line, unbroken, so that it can be searched for.
// clang-format off

// The texts of the failures that all engines have, by JobFault, from kNothingOn on.
constexpr Text kEngineFailures[kResultColumns - kOwnColumns] = {
    {u"トラックスイッチが全てOFFになっています。",
     u"No track is switched ON."},
    {u"MXFファイルのタイムコード情報(開始・ベース・長さ)が読取れないため、処理できません。\n情報の表示のみ可能です。",
     u"The timecode of the MXF file (start, base or length) cannot be read, so no job takes the file.\nIt can only be looked at."},
    {u"MXFファイルのサンプルレートまたはサンプルビット数が読取れないか、オーディオエレメントと合わないため、処理できません。",
     u"The sampling rate or the sample width of the MXF file cannot be read or does not fit its audio elements, so no job takes the file."},
    {u"オーディオエレメントのサンプル数が、5フレームのサンプルパターンと一致しないフレームがあります。",
     u"In a frame, an audio element does not hold the number of samples that the 5-frame sample pattern gives."},
    {u"インデックステーブルの位置にオーディオエレメントが見つからないフレームがあります。",
     u"In a frame, there is no audio element at the place that the index table gives."},
    {u"ロードした後でMXFファイルが変更されています。\nもう一度ロードして下さい。",
     u"The MXF file has changed since it was loaded.\nLoad it again."},
    {u"追加した後でBWFファイルが変更されています。\nもう一度追加して下さい。",
     u"A BWF file has changed since it was added.\nAdd it again."},
    {u"BWFファイルに、ヘッダーに記録された長さの音声がありません。\nファイルを確認してください。",
     u"A BWF file holds less audio than its header says.\nCheck the file."},
    {u"BWFファイルのサンプル形式が対応していません。\n16bitまたは24bitのリニアPCMをお使い下さい。",
     u"The samples of a BWF file are not supported.\nUse linear PCM of 16 or 24 bits."},
    {u"MXFファイルの読み書き中にエラーが発生しました。\n接続デバイスを確認して下さい。",
     u"The MXF file could not be read or written.\nCheck the connected device."},
    {u"BWFファイルの読込み中にエラーが発生したか、処理中にファイルが変更されました。\n接続デバイスとファイルを確認して下さい。",
     u"A BWF file could not be read, or has changed during the job.\nCheck the connected device and the file."},
    {u"ストレージへの書込みを完了できませんでした。\n空き容量と接続デバイスを確認して下さい。",
     u"The written data may not be on the medium.\nCheck the free space and the connected device."},
    {u"音声は書込みましたが、UMIDの書込みを完了できませんでした。\n空き容量と接続デバイスを確認して下さい。",
     u"The audio is written, but the UMIDs may not be on the medium.\nCheck the free space and the connected device."},
    kNoMemoryText,
    {u"処理用のスレッドを開始できません。\n他のアプリを終了してからもう一度お試し下さい。",
     u"A thread for the job cannot be started.\nClose other programs and try again."},
    {u"BWFファイルを書込めません。\n空き容量と接続デバイスを確認して下さい。",
     u"A BWF file cannot be written.\nCheck the free space and the connected device."},
    {u"インデックステーブルが、範囲の全てのフレームを順に示していません。",
     u"The index table does not count all frames of the range in their order."},
    {u"ヘッダーメタデータの中に、パッケージのUMIDを確認できません。\nMXFファイルの構造に問題があります。",
     u"The UMIDs of the packages cannot be found in the header metadata.\nThe structure of the MXF file is wrong."},
    {u"5フレーム１セットのサンプルパターンがクリップの先頭から始まっていないため、処理ができません。",
     u"The 5-frame sample pattern does not start with the clip, so no job takes the clip."},
};
constexpr Text kNoExportOnText = {
    u"書出しトラックのON/OFFスイッチが全てOFFになっています。",
    u"No track is switched ON for the export."};
constexpr Text kSampleBitsText = {
    u"サンプルビット数が対応していません。このアプリは24bit または 16bitに対応しています。 ",
    u"The sample width is not supported. This program takes 24 or 16 bits."};

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

// Texts that several stages have.
constexpr Text kBadBaseInfoText = {
    u"MXF_BASE_INFOポインタが無効な値になっています。",
    u"The pointer to MXF_BASE_INFO has a value that is not valid."};
constexpr Text kNoHandleText = {
    u"ファイルハンドルが無効になっています。",
    u"The file handle is not valid."};
constexpr Text kNoBaseInfoText = {
    u"MXF_BASE_INFOポインタが無効になっています。",
    u"The pointer to MXF_BASE_INFO is not valid."};
constexpr Text kNoPartitonInfoText = {
    u"MXF_PARTITON_INFOポインタが無効になっています。",
    u"The pointer to MXF_PARTITION_INFO is not valid."};
constexpr Text kOtherVersionText = {
    u"MXFバージョンが 1.2 または 1.3ではないため、このアプリケーションでは読込めません。",
    u"The MXF version is neither 1.2 nor 1.3, so this program cannot read the file."};
constexpr Text kNoPartitionInfoText = {
    u"MXF_PARTITION_INFOポインタが無効になっています。",
    u"The pointer to MXF_PARTITION_INFO is not valid."};
constexpr Text kBadAudioInfoText = {
    u"MXF_AUDIO_INFOポインタが無効な値になっています。",
    u"The pointer to MXF_AUDIO_INFO has a value that is not valid."};
constexpr Text kNoAudioTrackText = {
    u"オーディオトラックがありません。",
    u"There is no audio track."};
constexpr Text kNoAudioInfoText = {
    u"MXF_AUDIO_INFOポインタが無効になっています。",
    u"The pointer to MXF_AUDIO_INFO is not valid."};
constexpr Text kNoTimecodeInfoText = {
    u"MXF_TIMECODE_INFOポインタが無効になっています。",
    u"The pointer to MXF_TIMECODE_INFO is not valid."};
constexpr Text kNoPathText = {
    u"ファイルパスがありません。",
    u"There is no file path."};
constexpr Text kNoRewrapTracksText = {
    u"ラッピングに必要な情報がみつかりませんでした。",
    u"What the rewrite needs to know is missing."};
constexpr Text kNoRecordsText = {
    u"MXFファイルの基本情報が見つかりません。",
    u"What the MXF file holds is not known."};
constexpr Text kUnknownRateText = {
    u"FPS値が対応外のデータになっています。",
    u"The frame rate is not supported."};
constexpr Text kBadRangeText = {
    u"IN / OUT タイムコードが不適切な値になっています。",
    u"The IN or OUT timecode is outside the clip, or IN lies behind OUT."};
constexpr Text kClipNotOpenText = {
    u"MXFファイルを開くことができません。",
    u"The MXF file cannot be opened."};
constexpr Text kClipNotMappedText = {
    u"MXFファイルのメモリマッピングハンドルが取得できませんでした。\nアプリを再起動してみてください。",
    u"The MXF file cannot be mapped into memory.\nTry to restart the program."};
constexpr Text kSourceNotOpenText = {
    u"BWFファイルの中に開けないファイルがあったため中断します。\nファイルを確認してください。",
    u"The job stops, because a BWF file cannot be opened.\nCheck the file."};
constexpr Text kNoSegmentBufferText = {
    u"トラックセグメントバッファが確保できません。\n一度に実行するトラック数を減らしてみてください。",
    u"There is no buffer for the tracks.\nTry with fewer tracks at a time."};
constexpr Text kNoClipViewText = {
    u"MXFファイルのマッピングビューが作成できません。",
    u"A mapped view of the MXF file cannot be made."};
constexpr Text kNoWriteBufferText = {
    u"書込みバッファが確保できません。\nPCの再起動が必要かもしれません。",
    u"There is no buffer for writing.\nThe computer may need a restart."};

constexpr FailureRow kUnenteredFailures = {{
    {},
    {},
    kBadBaseInfoText,
}};

constexpr FailureRow kFileSizeFailures = OfStage({{
    {},
    kNoHandleText,
}});

constexpr FailureRow kPartitionsFailures = OfStage({{
    {},
    kNoHandleText,
    kNoBaseInfoText,
    kNoPartitonInfoText,
    {u"ランダム・インデックス・テーブルが見つかりません。",
     u"There is no Random Index Pack."},
    {u"ランダム・インデックス・テーブルを格納用のメモリが確保できません。",
     u"There is no memory for the Random Index Pack."},
    {u"パーティション情報格納用のメモリが確保できません。",
     u"There is no memory for the partitions."},
    {u"パーティションステータスがOPEN(未確定状態)になっているため情報が読み取れません。",
     u"The partition is OPEN (not finished), so its contents cannot be read."},
    {u"基本パーティションが足りません。データが壊れている可能性があります。",
     u"A header, body or footer partition is missing. The data may be damaged."},
    kOtherVersionText,
}});

constexpr FailureRow kPrefaceFailures = OfStage({{
    {},
    kNoHandleText,
    kNoBaseInfoText,
    kNoPartitionInfoText,
    {u"Preface Setが見つかりません。",
     u"There is no Preface set."},
    {u"Preface Set用バッファが取得できません。",
     u"There is no buffer for the Preface set."},
    {u"オペレーショナルパターンが op1a ではないため読込めません。",
     u"The operational pattern is not OP1a, so the file cannot be read."},
    {u"フレームラッピングではないため読込めません。",
     u"The file is not frame wrapped, so it cannot be read."},
    kOtherVersionText,
}});

constexpr FailureRow kMaterialPackageFailures = OfStage({{
    {},
    kNoHandleText,
    kBadBaseInfoText,
    {u"MXF_PARTITON_INFOポインタが無効な値になっています。",
     u"The pointer to MXF_PARTITION_INFO has a value that is not valid."},
    kBadAudioInfoText,
    {u"マテリアルパッケージセットが見つかりません。MXFファイルの構造に問題があります。",
     u"There is no material package set. The structure of the MXF file is wrong."},
    {u"タイムライントラックが無いか不足しています。",
     u"Timeline tracks are missing, all or some of them."},
    {u"シーケンスセットが無いか不足しています。",
     u"Sequence sets are missing, all or some of them."},
    {u"タイムコードコンポーネントが見つかりません。",
     u"There is no timecode component."},
    {u"メディアのデュレーションが０になっています。XDCAM書出しにを想定した設定になっていませんか？",
     u"The duration of the media is 0. Was the file written with settings for XDCAM?"},
    kNoAudioTrackText,
}});

constexpr FailureRow kSourcePackageFailures = OfStage({{
    {},
    kNoHandleText,
    kNoBaseInfoText,
    kNoPartitonInfoText,
    kNoAudioInfoText,
    {u"ソースパッケージが見つかりません。MXFファイルの構造に問題があります。",
     u"There is no source package. The structure of the MXF file is wrong."},
    {u"Top level Source Package Setが見つかりません。",
     u"There is no top-level source package set."},
    {u"マルチエッセンス・コンテナ構成になっていません。",
     u"The file has no multiple descriptor for its essence containers."},
    {u"ビデオディスクリプターが見つかりません。",
     u"There is no video descriptor."},
    {u"エッセンスコーデックが見つかりません。",
     u"The coding of the essence is not stated."},
    {u"オーディオディスクリプターが見つかりません。",
     u"There is no audio descriptor."},
    {u"サンプルレートが48kHzになっていません。",
     u"The sampling rate is not 48 kHz."},
}});

constexpr FailureRow kIndexTableFailures = OfStage({{
    {},
    kNoHandleText,
    kNoBaseInfoText,
    kNoPartitonInfoText,
    kNoTimecodeInfoText,
    {u"INDEX_ENTRY_ARRAYポインタが無効になっています。",
     u"The pointer to INDEX_ENTRY_ARRAY is not valid."},
    kBadAudioInfoText,
    {u"デルタエントリー数が想定数26(映像1+TC1+音声24)を越えているため、処理ができません。",
     u"There are more delta entries than 26 (1 picture, 1 timecode, 24 audio), so the file cannot be processed."},
    {u"インデックステーブルがありません。書出しに失敗している可能性があります。",
     u"There is no index table. The export of the file may have failed."},
    {u"SMPTEが定める5フレーム１セットのサンプルパターンが取得できません。",
     u"The SMPTE sample pattern of 5 frames cannot be found."},
}});

constexpr FailureRow kContentStorageFailures = OfStage({{
    {},
    kNoHandleText,
    {u"コンテンツストレージセットが無いありません。op1-aの規格に合致しません。",
     u"There is no content storage set. The file does not follow OP1a."},
    {u"内包パッケージ数が規定を越えているため、op1-aの規格に合致しません。",
     u"There are more packages than allowed. The file does not follow OP1a."},
    {u"必須のタグが見つかりません。",
     u"A required tag is missing."},
    kNoAudioTrackText,
    {u"このファイルのビットレートが16bit または 24bit になっていません。",
     u"The samples of this file have neither 16 nor 24 bits."},
    {u"このファイルのサンプルレートが48kHzになっていません。",
     u"The sampling rate of this file is not 48 kHz."},
    {u"5フレームシーケンスパターンがリストにありません。",
     u"The sample pattern of 5 frames is not a known one."},
}});

constexpr FailureRow kEssenceContainerDataFailures = OfStage({{
    {},
    kNoHandleText,
    {u"エッセンスコンテナ・データセットが見つかりません。",
     u"There is no essence container data set."},
    {u"IndexSID数が規格違反です。",
     u"The number of IndexSIDs breaks the standard."},
    {u"BodySID数が規格違反です。",
     u"The number of BodySIDs breaks the standard."},
    {u"重要タグが見つかりません。ファイルの内容に問題があります。",
     u"An important tag is missing. The contents of the file are wrong."},
    {u"エッセンス・コーディングラベルが見つからりません。",
     u"There is no label for the coding of the essence."},
    {u"映像コーディングがテーブルにないか、対応していません。",
     u"The coding of the picture is unknown or not supported."},
}});

constexpr FailureRow kIdentificationFailures = OfStage({{
    {},
    kNoHandleText,
    kNoBaseInfoText,
    kNoPartitionInfoText,
}});

constexpr FailureRow kContinuityFailures = {{
    {},
    kNoHandleText,
    kNoBaseInfoText,
    kNoTimecodeInfoText,
    kNoAudioInfoText,
    {u"タイムコードデータを格納するメモリが確保できません。",
     u"There is no memory for the timecodes."},
    {u"マッピングハンドルが取得できません。",
     u"There is no mapping handle."},
    {u"マッピングビューを作成できません。\nアプリを再起動してみてください。",
     u"A mapped view cannot be made.\nTry to restart the program."},
    {u"エラー情報を格納するメモリが確保できません。",
     u"There is no memory for the list of breaks."},
    {u"タイムコードエラーが検出されました。\r\nログファイルを作成しますか？",
     u"The timecode breaks.\r\nDo you want to write a log file?"},
    kUnreadableText,
}};

constexpr FailureRow kRewrapMappedFailures = OfEngine({{
    {},
    kNoPathText,
    kNoRewrapTracksText,
    kNoRecordsText,
    kUnknownRateText,
    kBadRangeText,
    kClipNotOpenText,
    kClipNotMappedText,
    kSourceNotOpenText,
    {u"BWFファイルのメモリマッピングハンドルが取得できません。",
     u"A BWF file cannot be mapped into memory."},
    {u"BWFファイル用の一時バッファが取得できません。",
     u"There is no buffer for the BWF files."},
    kNoSegmentBufferText,
    kNoClipViewText,
    {u"BWFファイルのマッピングビューが作成できません。",
     u"A mapped view of a BWF file cannot be made."},
    {u"UMIDのサイズが64バイトになっているため、現行バージョンでの新規生成ができません。",
     u"The UMIDs have 64 bytes; this version cannot make new ones."},
}});

constexpr FailureRow kRewrapFileIoFailures = OfEngine({{
    {},
    kNoPathText,
    kNoRewrapTracksText,
    kNoRecordsText,
    kUnknownRateText,
    kBadRangeText,
    kNoWriteBufferText,
    kClipNotOpenText,
    kSourceNotOpenText,
    {},
    {},
    kNoSegmentBufferText,
}});

constexpr FailureRow kExportMappedFailures = OfExport({{
    {},
    kNoPathText,
    {u"AUDIOTRACK_IO_INFOのポインタが無効になっています。",
     u"The pointer to AUDIOTRACK_IO_INFO is not valid."},
    kNoBaseInfoText,
    kUnknownRateText,
    kBadRangeText,
    kClipNotOpenText,
    kClipNotMappedText,
    {u"BWFファイルが作成出来ません。",
     u"A BWF file cannot be created."},
    kNoClipViewText,
}});

constexpr FailureRow kExportFileIoFailures = OfExport({{
    {},
    kNoPathText,
    {u"書出しに必要な情報がみつかりませんでした。",
     u"What the export needs to know is missing."},
    kNoRecordsText,
    kUnknownRateText,
    kBadRangeText,
    kNoWriteBufferText,
    kClipNotOpenText,
    {u"BWFファイルを作成できません。\nファイルの保存場所・ストレージなどを確認して下さい。",
     u"A BWF file cannot be created.\nCheck the target folder and its storage."},
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
    {u"MXFファイルが空になっています。",
     u"The MXF file is empty."},
}});

struct Stage {
  std::uint32_t code;
  std::u16string_view name;  // the same in both languages
  Text text;
  FailureRow failures;
};

constexpr Stage kStages[] = {
    {0, u"N/A", {}, kUnenteredFailures},
    {kStageFileSize, u"Acquire FILESIZE",
     {u"ファイルサイズを取得中...",
      u"Reading the file size..."},
     kFileSizeFailures},
    {kStageRandomIndex, u"Acquire RANDOM-INDEX TALBLE",
     {u"ランダムインデックスとパーティション情報を取得中...",
      u"Reading the random index and the partitions..."},
     kPartitionsFailures},
    {kStagePreface, u"Acquire PREFACE SET",
     {u"オペレーショナルパターン / ラッピング形式 / アンシラリデータの有無を確認",
      u"Checking operational pattern, wrapping and ancillary data..."},
     kPrefaceFailures},
    {kStageMaterialPackage, u"Acquire MATERIAL PACKAGE",
     {u"タイムコード情報を取得...",
      u"Reading the timecode..."},
     kMaterialPackageFailures},
    {kStageSourcePackage, u"Acquire SOURCE PACKAGE",
     {u"ファイルパッケージを取得...",
      u"Reading the file package..."},
     kSourcePackageFailures},
    {kStageIndexTable, u"Acquire INDEX TABLE SEGMENT",
     {u"インデックステーブルを取得中...",
      u"Reading the index table..."},
     kIndexTableFailures},
    {kStageContentStorage, u"Acquire CONTENT STORAGE",
     {u"AES3オーディオ基本情報を取得",
      u"Reading the AES3 audio..."},
     kContentStorageFailures},
    {kStageEssenceContainerData, u"Acquire ESSENCE CONTAINER DATA SET",
     {u"ビデオ基本情報を取得...",
      u"Reading the video..."},
     kEssenceContainerDataFailures},
    {kStageIdentification, u"Acquire IDENTIFICATION",
     {u"ID情報を取得中...",
      u"Reading the identification..."},
     kIdentificationFailures},
    {kStageTimecodeContinuity, u"Timecode continuity check",
     {u"インデックステーブルとタイムコードを検証しています...",
      u"Checking the index table and the timecode..."},
     kContinuityFailures},
    {kStageRewrapMapped, u"Writing audio binary data(M-MAPPING)", {}, kRewrapMappedFailures},
    {kStageRewrapFileIo, u"Writing audio binary data(FILE I/O)", {}, kRewrapFileIoFailures},
    {kStageExportMapped, u"Generate WAV file(M-MAPPING)", {}, kExportMappedFailures},
    {kStageExportFileIo, u"Generate WAV file(FILE I/O)", {}, kExportFileIoFailures},
    {kStageLoudness, {}, {}, kExportFileIoFailures},
};

struct Job {
  Text title;
  std::array<std::uint32_t, 2> processCodes;  // by Method
};

constexpr std::array<Job, 4> kJobs = {{
    {{u"ラッピング", u"rewrite"}, {kStageRewrapMapped, kStageRewrapFileIo}},
    {{u"BWFファイルの書出し", u"export of BWF files"}, {kStageExportMapped, kStageExportFileIo}},
    {{}, {0, 0}},
    {{u"ラウドネス測定", u"loudness measurement"}, {kStageLoudness, kStageLoudness}},
}};

constexpr std::array<std::u16string_view, 2> kMethodNames = {u"Memory Mapping", u"Generic File I/O"};

// In the forms, each %s stands for the next part of the message.
constexpr Text kCannotBeOpenedForm = {
    u"%s\n\nMXFファイルを開くことができません。\n他のアプリで使用していないか、または接続デバイスを確認して下さい。\nERR: %s",
    u"%s\n\nThe MXF file cannot be opened.\nCheck that no other program uses it, and check the connected device.\nERR: %s"};
constexpr std::u16string_view kCannotBeLoadedForm =
    u"%s\n\nMXFファイルをロードできません。\n"
    u"接続デバイス、他のアプリで使用していないか確認して下さい。\nERR: %s";
constexpr std::u16string_view kHiddenTracksForm = u"アプリの設計上 %s から %sトラックは認識されません。";
constexpr std::u16string_view kHiddenTracksUncheckedForm = u"アプリの仕様上 %s から %sトラックは認識されません。\nご了承ください。";
constexpr std::u16string_view kOtherElementsForm =
    u"フレーム内のオーディオエレメント: %s\n認識されたオーディオトラック: %s\n\n"
    u"数が一致しないため、使用できないトラックがあります。";
constexpr std::u16string_view kIndexContradictedText =
    u"インデックステーブルがオーディオエレメントを示していないフレームがあります。\n"
    u"このフレームを含む範囲は処理ができません。";
constexpr Text kBackupQuestion = {
    u"MXFファイルのバックアップは済んでいますか？\n\n全てのUMID(識別子)を書換えるため、\n完了後のファイルは、新規素材として認識されます。\n開始してもよろしいでしょうか？",
    u"Is there a backup of the MXF file?\n\nAll UMIDs (identifiers) will be renewed,\nso that the finished file counts as new material.\nDo you want to start?"};
constexpr Text kLoadFailureForm = {
    u"%s\n\nこのファイルはロードできません。\n\n%s\n\n処理セクション: %s\nERR: %s  process: %s",
    u"%s\n\nThis file cannot be loaded.\n\n%s\n\nsection: %s\nERR: %s  process: %s"};
constexpr Text kContinuityFailureForm = {
    u"%s\n\nこのファイルはロードできません。\n\n%s\n\nsection: %s\nERR: %s",
    u"%s\n\nThis file cannot be loaded.\n\n%s\n\nsection: %s\nERR: %s"};
constexpr Text kTimecodeBreaksForm = {
    u"%s\n\nこのファイルはロードできません。\n\nタイムコードエラーが検出されました。\n\nsection: %s\nERR: %s",
    u"%s\n\nThis file cannot be loaded.\n\nThe timecode breaks.\n\nsection: %s\nERR: %s"};
constexpr Text kPathTooLongForm = {
    u"%s\n\nパスが長すぎるため、MXFファイルを開くことができません。",
    u"%s\n\nThe path is too long, so the MXF file cannot be opened."};
constexpr Text kLoadStoppedForm = {
    u"%s\n\n解析を中断しました。",
    u"%s\n\nThe analysis was stopped."};
constexpr Text kAnalysisStoppedForm = {
    u"%s\n\n解析を中断しました。\nこのままロードしますか？",
    u"%s\n\nThe analysis was stopped.\nDo you want to load the file all the same?"};
constexpr Text kKeptBackupQuestion = {
    u"MXFファイルのバックアップは済んでいますか？\n\nUMID(識別子)は元のままで、音声だけを書換えます。\n開始してもよろしいでしょうか？",
    u"Is there a backup of the MXF file?\n\nOnly the audio will be rewritten; the UMIDs (identifiers) stay as they are.\nDo you want to start?"};
constexpr std::u16string_view kJobRefusalForm = u"%s\n\n%s\n\n\tERR: %s  process: %s";
constexpr Text kJobDoneForm = {
    u"%s\n\n%sが完了しました。\n\n\tprocess: %s",
    u"%s\n\nThe %s is done.\n\n\tprocess: %s"};
constexpr Text kJobCancelledForm = {
    u"MXFファイル\n%s\n\n%sを中断しました。\n\n\tprocess: %s",
    u"MXF file\n%s\n\nThe %s was stopped.\n\n\tprocess: %s"};
constexpr Text kJobFailureForm = {
    u"%s\n\n%s中にエラーが発生しました。\n%s\n\n\tERR: %s  process: %s",
    u"%s\n\nThe %s has failed.\n%s\n\n\tERR: %s  process: %s"};
constexpr Text kJobNoticeForm = {
    u"%s\n\n64バイトのUMIDのため、アプリ仕様上更新ができませんでした。\nラッピングは完了していますので、同時に作成されたログテキストをご覧ください。",
    u"%s\n\nThe UMIDs have 64 bytes, so this program could not renew them.\nThe rewrite is done; please read the log that was written with it."};

// What follows a message, each text in a paragraph of its own.
constexpr Text kFileAtFaultForm = {
    u"\n\nファイル: %s",
    u"\n\nFile: %s"};
constexpr Text kFrameAtFaultForm = {
    u"\n\nフレーム: %s (%s)",
    u"\n\nFrame: %s (%s)"};
constexpr Text kNothingWrittenText = {
    u"\n\nMXFファイルには何も書込んでいません。",
    u"\n\nNothing was written to the MXF file."};
constexpr Text kNothingExportedText = {
    u"\n\nBWFファイルは作成していません。",
    u"\n\nNo BWF file was created."};
constexpr Text kWrittenForm = {
    u"\n\n%s から %s までの音声は書換えられている可能性があります。",
    u"\n\nThe audio from %s to %s may have been rewritten."};
constexpr std::u16string_view kLongUmidQuestion = u"\n\n元のUMIDのまま、音声を書換えてもよろしいですか？";

constexpr Text kSeeLogText = {
    u"\n同時に作成されたログテキストをご覧ください。",
    u"\nPlease read the log that was written with it."};
constexpr Text kJobNoticeWithoutLogForm = {
    u"%s\n\n64バイトのUMIDのため、アプリ仕様上更新ができませんでした。\nラッピングは完了しています。",
    u"%s\n\nThe UMIDs have 64 bytes, so this program could not renew them.\nThe rewrite is done."};
constexpr Text kUmidNoticeForm = {
    u"%s\n\nラッピングは完了していますが、UMIDの更新が正しく行われませんでした。\n%s%s",
    u"%s\n\nThe rewrite is done, but the UMIDs were not renewed as they should be.\n%s%s"};
// Which UMIDs a rewritten clip holds, by UmidState; kUmidsKept, the last state, has kUmidSizeText.
constexpr std::array<Text, 5> kUmidStateTexts = {{
    {u"MXFファイルのUMIDは新しいものです。",
     u"The UMIDs of the MXF file are the new ones."},
    {u"MXFファイルのUMIDは元のままです。",
     u"The UMIDs of the MXF file are the old ones."},
    {u"MXFファイルには新しいUMIDと元のUMIDが混在しています。",
     u"The MXF file holds both new and old UMIDs."},
    {u"MXFファイルのUMIDは新しいものですが、更新日時は元のままです。",
     u"The UMIDs of the MXF file are the new ones, but the modification dates are the old ones."},
    {u"MXFファイルのUMIDを読取って確認することができませんでした。",
     u"The UMIDs of the MXF file could not be read back."},
}};
// clang-format on

// A rewrite by plain file access that cannot renew the UMIDs ends with kUmidTooLong, a result of
// the rewrite by memory mapping.
constexpr Text kUmidSizeText = kRewrapMappedFailures[kUmidTooLong - kStageRewrapMapped];
static_assert(!kUmidSizeText.ja.empty());

constexpr std::int32_t kStageSpan = 1000;  // between the process codes of two engines

constexpr std::u16string_view kPlace = u"%s";

Text TextOf(const FailureRow& row, std::int64_t column) {
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

std::u16string_view JobTitle(JobKind jobKind, Language language) {
  const Job* job = FindJob(jobKind);
  return job == nullptr ? std::u16string_view() : job->title.In(language);
}

std::u16string_view MethodName(Method method) {
  return kMethodNames[static_cast<std::size_t>(method)];
}

std::u16string_view StageName(std::uint32_t processCode) {
  const Stage* stage = FindStage(processCode);
  return stage == nullptr ? std::u16string_view() : stage->name;
}

const Text& StageTexts(std::uint32_t processCode) {
  const Stage* stage = FindStage(processCode);
  return stage == nullptr || stage->text.ja.empty() ? kGeneralStageText : stage->text;
}

std::u16string_view StageText(std::uint32_t processCode) {
  return StageTexts(processCode).In(platform::kWindowLanguage);
}

namespace {

Text FindFailure(std::uint32_t processCode, std::int32_t result) {
  if (processCode == kStageRewrapFileIo && result == kUmidTooLong) return kUmidSizeText;
  const Stage* stage = FindStage(processCode);
  if (stage == nullptr) return kFillerText;
  Text text = TextOf(stage->failures, std::int64_t{result} - stage->code);
  if (processCode == kStageLoudness && text.ja.empty()) {
    text = TextOf(kMeasurementFailures, std::int64_t{result} - kStageExportMapped);
  }
  return text.ja.empty() ? kFillerText : text;
}

}  // namespace

std::u16string_view FailureText(std::uint32_t processCode, std::int32_t result, Language language) {
  return FindFailure(processCode, result).In(language);
}

std::u16string ClipCannotBeOpenedMessage(std::u16string_view mxfPath, std::uint32_t code,
                                         Language language) {
  return Fill(kCannotBeOpenedForm.In(language),
              {platform::LastComponent(mxfPath), Hexadecimal(code)});
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

std::u16string_view BackupQuestion(bool keepsUmids, Language language) {
  return (keepsUmids ? kKeptBackupQuestion : kBackupQuestion).In(language);
}

std::u16string LoadFailureMessage(std::u16string_view mxfPath, std::uint32_t processCode,
                                  std::int32_t result, Method method, bool hasAudioDescriptor,
                                  Language language) {
  // With a descriptor, the result says that its samples do not have 16 or 24 bits.
  const bool otherWidth = result == kAudioDescriptorUnfit && hasAudioDescriptor;
  return Fill(
      kLoadFailureForm.In(language),
      {platform::LastComponent(mxfPath),
       otherWidth ? kSampleBitsText.In(language) : FailureText(processCode, result, language),
       StageName(processCode), Number(result), MethodName(method)});
}

std::u16string ContinuityFailureMessage(std::u16string_view mxfPath, std::uint32_t processCode,
                                        std::int32_t result, Language language) {
  return Fill(kContinuityFailureForm.In(language),
              {platform::LastComponent(mxfPath), FailureText(processCode, result, language),
               StageName(processCode), Number(result)});
}

std::u16string TimecodeBreaksMessage(std::u16string_view mxfPath, Language language) {
  return Fill(kTimecodeBreaksForm.In(language),
              {platform::LastComponent(mxfPath), StageName(kStageTimecodeContinuity),
               Number(kContinuityBreaks)});
}

std::u16string ClipPathTooLongMessage(std::u16string_view mxfPath, Language language) {
  return Fill(kPathTooLongForm.In(language), {platform::LastComponent(mxfPath)});
}

std::u16string LoadStoppedMessage(std::u16string_view mxfPath, Language language) {
  return Fill(kLoadStoppedForm.In(language), {platform::LastComponent(mxfPath)});
}

std::u16string AnalysisStoppedMessage(std::u16string_view mxfPath, Language language) {
  return Fill(kAnalysisStoppedForm.In(language), {platform::LastComponent(mxfPath)});
}

std::u16string JobRefusalMessage(std::u16string_view mxfPath, std::int32_t result,
                                 std::u16string_view text, Method method) {
  return Fill(kJobRefusalForm,
              {platform::LastComponent(mxfPath), text, Number(result), MethodName(method)});
}

std::u16string JobDoneMessage(std::u16string_view mxfPath, JobKind jobKind, Method method,
                              Language language) {
  return Fill(kJobDoneForm.In(language),
              {platform::LastComponent(mxfPath), JobTitle(jobKind, language), MethodName(method)});
}

std::u16string_view UmidStateText(UmidState state, Language language) {
  return (state < kUmidStateTexts.size() ? kUmidStateTexts[state] : kUmidSizeText).In(language);
}

std::u16string JobNoticeMessage(std::u16string_view mxfPath, UmidState state, bool hasLog,
                                Language language) {
  const std::u16string_view name = platform::LastComponent(mxfPath);
  if (state == kUmidsKept) {
    return Fill((hasLog ? kJobNoticeForm : kJobNoticeWithoutLogForm).In(language), {name});
  }
  return Fill(kUmidNoticeForm.In(language),
              {name, UmidStateText(state, language),
               hasLog ? kSeeLogText.In(language) : std::u16string_view()});
}

std::u16string LongUmidQuestion() {
  return std::u16string(kUmidSizeText.ja) + std::u16string(kLongUmidQuestion);
}

std::u16string JobCancelledMessage(std::u16string_view mxfPath, JobKind jobKind, Method method,
                                   Language language) {
  return Fill(kJobCancelledForm.In(language),
              {platform::LastComponent(mxfPath), JobTitle(jobKind, language), MethodName(method)});
}

std::u16string JobFailureMessage(std::u16string_view mxfPath, JobKind jobKind,
                                 std::uint32_t processCode, std::int32_t result, Method method,
                                 Language language) {
  return Fill(kJobFailureForm.In(language),
              {platform::LastComponent(mxfPath), JobTitle(jobKind, language),
               FailureText(processCode, result, language), Number(result), MethodName(method)});
}

namespace {

// The timecode of the real count `count`. In a clip that passes midnight, `count` may exceed a day;
// the timecode then starts again at 00:00:00:00.
std::u16string WrittenTimecode(const MXF_TIMECODE_INFO& timecode, std::int64_t count) {
  const std::int64_t day = FramesPerDay(timecode.fpsIndex, timecode.dropFrame);
  return platform::ToUtf16(TimecodeText(timecode, day > 0 ? count % day : count));
}

}  // namespace

std::u16string FaultDetails(const JOB_FAULT_INFO& fault, const MXF_TIMECODE_INFO& timecode,
                            Language language) {
  std::u16string details;
  if (fault.path[0] != 0) details += Fill(kFileAtFaultForm.In(language), {fault.path});
  if (fault.frame != kNoFrame) {
    const std::int64_t count = std::int64_t{timecode.startFrames} + fault.frame;
    details +=
        Fill(kFrameAtFaultForm.In(language),
             {WrittenTimecode(timecode, count), platform::ToUtf16(std::to_string(fault.frame))});
  }
  return details;
}

std::u16string_view NothingExportedText(Language language) {
  return kNothingExportedText.In(language);
}

std::u16string WrittenFrames(const AUDIOTRACK_IO_INFO& tracks, const MXF_TIMECODE_INFO& timecode,
                             std::int32_t result, Language language) {
  const std::uint32_t begun = tracks.fault.framesBegun;
  if (begun == 0) return std::u16string(kNothingWrittenText.In(language));
  const std::int64_t in = tracks.inFrame[0];
  std::u16string written =
      Fill(kWrittenForm.In(language),
           {WrittenTimecode(timecode, in), WrittenTimecode(timecode, in + begun - 1)});
  const bool umidsTouched = result % kStageSpan == kUmidsNotFlushed;
  return written.append(u"\n").append(
      UmidStateText(umidsTouched ? tracks.umidState : kUmidsOld, language));
}

}  // namespace quorvan
