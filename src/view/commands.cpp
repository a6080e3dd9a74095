#include "view/commands.h"

namespace quorvan {
namespace {

constexpr MenuItem kLine = {kNoCommand, {}, {}, {}};

constexpr MenuItem Item(Command command, std::u16string_view text, std::u16string_view keys = {}) {
  return {command, text, keys, {}};
}

// clang-format off
constexpr MenuItem kSortMenu[] = {
    Item(kSortByName, u"ファイル名(&1)"),
    Item(kSortByChannels, u"チャンネル数(&2)"),
    Item(kSortByBits, u"ビットレート(&3)"),
    Item(kSortBySampleRate, u"サンプルレート(&4)"),
    Item(kSortByStart, u"開始タイムコード(&5)"),
    Item(kSortByDuration, u"デュレーション(&6)"),
    Item(kSortByCreated, u"作成日時(&7)"),
    Item(kSortByUpdated, u"更新日時(&8)"),
    Item(kSortBySize, u"サイズ(&9)"),
};
constexpr MenuItem kSortSubmenu = {kNoCommand, u"WAVファイルのソート", {}, kSortMenu};

constexpr MenuItem kFileMenu[] = {
    Item(kLoadMxf, u"MXFファイルをロード(&M)", u"Ctrl+O"),
    Item(kUnloadMxf, u"MXFファイルをアンロード(U)", u"Ctrl+U"),
    kLine,
    Item(kMeasureLoudness, u"ラウドネス値を測定する(&L)", u"Ctrl+L"),
    kLine,
    Item(kAddWav, u"BWF(WAV)ファイルを追加(&B)", u"Ctrl+Shift+O"),
    Item(kExportBwf, u"BWF(WAV)ファイルを生成(&C)", u"Ctrl+B"),
    kLine,
    Item(kRewriteAudio, u"ラッピングを実行(&W)", u"Ctrl+R"),
    kLine,
    Item(kQuit, u"終了(&X)"),
};

constexpr MenuItem kOperationMenu[] = {
    Item(kSelectAll, u"全てを選択(&A)", u"Ctrl+A"),
    Item(kToggleAllTracks, u"全トラックON/OFF(&B)", u"Ctrl+Shift+A"),
    Item(kToggleSelectedTracks, u"選択されているトラックのON/OFF(&G)", u"Ctrl+G"),
    Item(kDelete, u"削除(&D)", u"DEL"),
    Item(kSwitchView, u"トラック / WAVライブラリ表示切替(&T)", u"Ctrl+T"),
    Item(kAssignWav, u"選択されたWAVをトラックに割当てる(&C)", u"Ctrl+C"),
    Item(kResetColumnWidths, u"WAVリストの項目幅をリセット(&R)", u"Shift+C"),
    kSortSubmenu,
    Item(kOpenLocation, u"現在のMXFファイルの場所を開く(&L)", u"Ctrl+P"),
    Item(kSetIn, u"IN点を設定(&I)", u"I"),
    Item(kSetOut, u"OUT点を設定(&O)", u"O"),
};

constexpr MenuItem kSettingsMenu[] = {
    Item(kSettings, u"アプリケーション設定(&F)", u"Ctrl + E"),
    Item(kMetaInformation, u"MXFメタ情報を表示 (&M)", u"Ctrl +M"),
};

constexpr MenuItem kHelpMenu[] = {
    Item(kAbout, u"バージョン情報(&A)", u"Ctrl + H"),
};

constexpr MenuItem kMainMenu[] = {
    {kNoCommand, u"ファイル(&F)", {}, kFileMenu},
    {kNoCommand, u"操作(&M)", {}, kOperationMenu},
    {kNoCommand, u"設定(&P)", {}, kSettingsMenu},
    {kNoCommand, u"ヘルプ(&H)", {}, kHelpMenu},
};

constexpr MenuItem kTrackPopup[] = {
    Item(kSelectAll, u"全て選択(&A)"),
    Item(kToggleAllTracks, u"全トラックON/OFF(&B)"),
    Item(kToggleSelectedTracks, u"選択されているトラックのON/OFF(&G)"),
    Item(kDelete, u"削除(&D)"),
    Item(kSwitchView, u"トラック / WAVファイルライブラリ表示切替(&T)"),
    kLine,
    Item(kAddWav, u"WAVファイルを追加(&J)"),
    Item(kMetaInformation, u"MXFメタ情報を表示 (&M)"),
    kLine,
    Item(kMeasureLoudness, u"ラウドネス値を測定する(&L)"),
    kLine,
    Item(kLoadMxf, u"MXFファイルをロード(&M)"),
    Item(kUnloadMxf, u"MXFファイルをアンロード(U)"),
};

constexpr MenuItem kLibraryPopup[] = {
    Item(kSelectAll, u"全て選択(&A)"),
    Item(kDelete, u"削除(&D)"),
    Item(kSwitchView, u"トラック / WAVファイルライブラリ表示切替(&T)"),
    kSortSubmenu,
    kLine,
    Item(kAssignWav, u"このファイルをトラックに割当てる(&D)"),
    Item(kMetaInformation, u"MXFメタ情報を表示 (&M)"),
    Item(kResetColumnWidths, u"WAVリストの項目幅をリセット(&R)"),
    kLine,
    Item(kMeasureLoudness, u"ラウドネス値を測定する(&L)"),
    kLine,
    Item(kAddWav, u"WAVファイルを追加(&J)"),
    Item(kLoadMxf, u"MXFファイルをロード(&M)"),
    Item(kUnloadMxf, u"MXFファイルをアンロード(U)"),
};

constexpr Accelerator kAccelerators[] = {
    {"Ctrl+O", kLoadMxf},          {"Ctrl+U", kUnloadMxf},
    {"Ctrl+Shift+O", kAddWav},     {"Ctrl+B", kExportBwf},
    {"Ctrl+R", kRewriteAudio},     {"Ctrl+L", kMeasureLoudness},
    {"Ctrl+A", kSelectAll},        {"Ctrl+Shift+A", kToggleAllTracks},
    {"Ctrl+G", kToggleSelectedTracks}, {"Del", kDelete},
    {"Ctrl+T", kSwitchView},       {"Ctrl+C", kAssignWav},
    {"Shift+C", kResetColumnWidths}, {"Ctrl+P", kOpenLocation},
    {"I", kSetIn},                 {"O", kSetOut},
    {"Ctrl+E", kSettings},         {"Ctrl+M", kMetaInformation},
    {"Ctrl+H", kAbout},
};
// clang-format on

}  // namespace

std::span<const MenuItem> MainMenu() {
  return kMainMenu;
}

std::span<const MenuItem> TrackPopup() {
  return kTrackPopup;
}

std::span<const MenuItem> LibraryPopup() {
  return kLibraryPopup;
}

std::span<const Accelerator> Accelerators() {
  return kAccelerators;
}

}  // namespace quorvan
