#include "wav/wav_library.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>

#include "platform/clock.h"
#include "platform/path.h"
#include "platform/text.h"
#include "timecode/timecode.h"
#include "wav/size_text.h"
#include "wav/wav_check.h"

namespace quorvan {
namespace {

// What the operator reads for a result: %s stands for the path, %d for the number of the result.
struct FailureText {
  WavResult code;
  platform::Text text;
};
// Each text stands on one line, unbroken, so that it can be searched for.
// clang-format off
constexpr FailureText kFailureTexts[] = {
    {kWavNoPath,
     {u"ファイルパスが無効です。\nERR: %d",
      u"The file path is not valid.\nERR: %d"}},
    {kWavNoRecord,
     {u"チャンク情報を格納できません。\nERR: %d",
      u"The chunks cannot be stored.\nERR: %d"}},
    {kWavCannotOpen,
     {u"%s\n\n読み取るデータがありません。\nERR: %d",
      u"%s\n\nThere is no data to read.\nERR: %d"}},
    {kWavHeaderIncomplete,
     {u"%s\n\n最低限のヘッダー情報が見つかりません。",
      u"%s\n\nThe header is incomplete."}},
    {kWavNotWave,
     {u"%s\n\nWAVファイルではありません。\nERR: %d",
      u"%s\n\nThis is no WAV file.\nERR: %d"}},
    {kWavOtherSampleRate,
     {u"%s\n\nサンプル周波数が48kHzではありません。\nERR: %d",
      u"%s\n\nThe sampling rate is not 48 kHz.\nERR: %d"}},
    {kWavTooManyBits,
     {u"%s\n\nビットレートが対応していません。\nERR: %d",
      u"%s\n\nThe file has more bits than the clip.\nERR: %d"}},
    {kWavTooManyChannels,
     {u"%s\n\nこのファイルはマルチチャンネル形式のため読込めません。\nERR: %d",
      u"%s\n\nThis file has too many channels to be read.\nERR: %d"}},
    {kWavNotPcm,
     {u"%s\n\nリニアPCM形式ではないため読込めません。\nERR: %d",
      u"%s\n\nThe file is not linear PCM, so it cannot be read.\nERR: %d"}},
    {kWavOtherWidth,
     {u"%s\n\nサンプルビット数が対応していません。16bitまたは24bitのファイルをお使いください。\nERR: %d",
      u"%s\n\nThe sample width is not supported. Use files of 16 or 24 bits.\nERR: %d"}},
    {kWavCutShort,
     {u"%s\n\nヘッダーに記録された長さの音声がありません。書出しに失敗している可能性があります。\nERR: %d",
      u"%s\n\nThe file holds less audio than its header says. Its export may have failed.\nERR: %d"}},
    {kWavChunksDiffer,
     {u"%s\n\nチャンクの構造が正しくないため、音声データの位置を特定できません。\nERR: %d",
      u"%s\n\nThe structure of the chunks is wrong, so the place of the audio is not certain.\nERR: %d"}},
    {kWavUnreadable,
     {u"%s\n\nファイルの読込み中にエラーが発生しました。接続デバイスを確認して下さい。\nERR: %d",
      u"%s\n\nThe file could not be read. Check the connected device.\nERR: %d"}},
    {kWavPathTooLong,
     {u"%s\n\nパスが長すぎるため、ファイルを開くことができません。\nERR: %d",
      u"%s\n\nThe path is too long, so the file cannot be opened.\nERR: %d"}},
    {kWavInUse,
     {u"%s\n\nファイルを開くことができません。\n他のアプリで使用していないか、または接続デバイスを確認して下さい。\nERR: %d",
      u"%s\n\nThe file cannot be opened.\nCheck that no other program uses it, and check the connected device.\nERR: %d"}},
    {kWavStopped,
     {u"%s\n\n読込みを中断しました。\nERR: %d",
      u"%s\n\nThe reading was stopped.\nERR: %d"}},
    {kWavNoLibrary,
     {u"%s\n\nファイルをリンクに追加できません。\nERR: %d",
      u"%s\n\nThe file cannot be added to the list.\nERR: %d"}},
    {kWavAlreadyAdded,
     {u"%s\n\nすでに追加されています。\nERR: %d",
      u"%s\n\nThe file was added before.\nERR: %d"}},
    {kWavNotFound,
     {u"%s\n\nファイルが見つかりません。\nERR: %d",
      u"%s\n\nThe file does not exist.\nERR: %d"}},
    {kWavNoMemory,
     {u"%s\n\nファイルをWAVライブラリに追加できません。\nERR: %d",
      u"%s\n\nThe file cannot be added to the WAV library.\nERR: %d"}},
};
// clang-format on

// Puts `code` in place of %d and `path` in place of %s in `format`. The code goes in first, because
// the path may contain "%d".
std::u16string FillIn(std::u16string_view format, int code, std::u16string_view path) {
  std::u16string text(format);
  const std::size_t number = text.find(u"%d");
  if (number != std::u16string::npos)
    text.replace(number, 2, platform::ToUtf16(fmt::format("{}", code)));
  const std::size_t name = text.find(u"%s");
  if (name != std::u16string::npos) text.replace(name, 2, path);
  return text;
}

WavResult CheckAgainstMxf(const WAV_HEADER_INFO& header, const MXF_AUDIO_INFO& audio) {
  if (header.sampleRate != audio.sampleRate) return kWavOtherSampleRate;
  if (header.bitsPerSample > audio.quantizationBits) return kWavTooManyBits;
  if (header.channels > kMaxWavChannels) return kWavTooManyChannels;
  return kWavOk;
}

void CopyHeader(const WAV_HEADER_INFO& header, WAV_FILE_INFO* entry) {
  entry->formatTag = header.formatTag;
  entry->channels = header.channels;
  entry->sampleRate = header.sampleRate;
  entry->avgBytesPerSec = header.avgBytesPerSec;
  entry->blockAlign = header.blockAlign;
  entry->bytesPerChannelSample =
      header.channels > 1 ? static_cast<std::uint16_t>(header.blockAlign / header.channels)
                          : header.blockAlign;
  entry->bitsPerSample = header.bitsPerSample;
  entry->dataSize = AudioBytes(header);
  entry->dataOffset = header.dataOffset;
  entry->samplePosition = header.samplePosition;
  entry->startFrame = header.startFrame;
  entry->endFrame = header.endFrame;
  entry->durationFrames = header.durationFrames;
  entry->sampleRemainder = header.sampleRemainder;
  entry->isRF64 = header.isRF64;
  entry->hasBext = header.hasBext;
  entry->startsInLastHour = header.startsInLastHour;
}

std::uint64_t SignExtended(std::uint32_t value) {
  return static_cast<std::uint64_t>(static_cast<std::int32_t>(value));
}

void FillSortKeys(WAV_FILE_INFO* entry) {
  std::uint64_t* const key = entry->sortKey;
  key[SortKeyOf(kChannelsColumn)] = entry->channels;
  key[SortKeyOf(kBitsColumn)] = entry->bitsPerSample;
  key[SortKeyOf(kSampleRateColumn)] = entry->sampleRate;
  key[SortKeyOf(kStartColumn)] = SignExtended(entry->startFrame);
  key[SortKeyOf(kEndColumn)] = SignExtended(entry->endFrame);
  key[SortKeyOf(kDurationColumn)] = SignExtended(entry->endFrame - entry->startFrame);
  key[SortKeyOf(kCreatedColumn)] = entry->findData.times.creation;
  key[SortKeyOf(kUpdatedColumn)] = entry->findData.times.lastWrite;
  key[SortKeyOf(kSizeColumn)] = entry->findData.size;
}

void SetColumn(WAV_FILE_INFO* entry, WavColumn column, std::u16string_view text) {
  platform::CopyText(entry->columnText[column], kColumnChars, text);
}

void SetColumn(WAV_FILE_INFO* entry, WavColumn column, const std::string& text) {
  SetColumn(entry, column, platform::ToUtf16(text));
}

void SetTimecodeColumn(WAV_FILE_INFO* entry, WavColumn column, const MXF_TIMECODE_INFO& timecode,
                       std::uint32_t frame, std::uint32_t remainder) {
  char16_t frameText[32] = {};
  FormatTimecode(frameText, std::size(frameText), timecode.fpsIndex, timecode.dropFrame, frame,
                 kSeparated);
  SetColumn(
      entry, column,
      frameText + platform::ToUtf16(fmt::format(" *{:04}", static_cast<std::int32_t>(remainder))));
}

void SetDateColumn(WAV_FILE_INFO* entry, WavColumn column, platform::FileTime time) {
  const platform::CalendarTime local = platform::ToLocalTime(time);
  SetColumn(entry, column,
            fmt::format("{:04}/{:02}/{:02} {:02}:{:02}:{:02}", local.year, local.month, local.day,
                        local.hour, local.minute, local.second));
}

void FillColumns(WAV_FILE_INFO* entry, const MXF_TIMECODE_INFO& timecode) {
  SetColumn(entry, kNameColumn, std::u16string_view(entry->fileName));
  SetColumn(entry, kChannelsColumn, fmt::format("{:2}", entry->channels));
  SetColumn(entry, kBitsColumn, fmt::format("{:2}", entry->bitsPerSample));
  SetColumn(entry, kSampleRateColumn, fmt::format("{:5}", entry->sampleRate));
  SetTimecodeColumn(entry, kStartColumn, timecode, entry->startFrame, entry->sampleRemainder[0]);
  SetTimecodeColumn(entry, kEndColumn, timecode, entry->endFrame, entry->sampleRemainder[1]);
  SetTimecodeColumn(entry, kDurationColumn, timecode, entry->durationFrames,
                    entry->sampleRemainder[1] - entry->sampleRemainder[0]);
  SetDateColumn(entry, kCreatedColumn, entry->findData.times.creation);
  SetDateColumn(entry, kUpdatedColumn, entry->findData.times.lastWrite);
  FormatFileSize(entry->findData.size, entry->columnText[kSizeColumn], kColumnChars);
}

void Append(WAV_FILE_INFO* head, WAV_FILE_INFO* entry) {
  WAV_FILE_INFO* const last = head->next == nullptr ? head : head->prev;
  last->next = entry;
  entry->prev = last;
  entry->listHead = head;
  head->prev = entry;
  ++head->entryCount;
}

// kWavOk when a rewrite would take the file of `entry`, else why it would not. A file that has
// changed since `entry` was filled is kWavChunksDiffer.
WavResult CheckForRewrite(const WAV_FILE_INFO& entry, const MXF_AUDIO_INFO& audio) {
  const platform::File file = platform::File::Open(entry.filePath, platform::OpenMode::kReadShared);
  if (!file.IsOpen()) return kWavInUse;
  switch (CheckSource(file, entry)) {
    case SourceState::kUsable:
      return FitsClip(entry, audio) ? kWavOk : IsPcm(entry) ? kWavOtherWidth : kWavNotPcm;
    case SourceState::kNotPcm:
      return kWavNotPcm;
    case SourceState::kCutShort:
      return kWavCutShort;
    case SourceState::kChanged:
      return kWavChunksDiffer;
    case SourceState::kUnreadable:
      return kWavUnreadable;
  }
  return kWavUnreadable;
}

WavResult AddToLibrary(const char16_t* path, WAV_FILE_INFO* head, const MXF_BASE_INFO& mxf,
                       const std::atomic<std::uint32_t>* stop) {
  // A path that was cut to the length of its field would name another file.
  const std::u16string_view pathText(path);
  if (pathText.size() >= kWavPathChars) return kWavPathTooLong;
  const auto fileInfo = platform::QueryFileInfo(path);
  if (!fileInfo) return platform::IsNameTaken(path) ? kWavInUse : kWavNotFound;
  WAV_HEADER_INFO header{};
  WavResult result = ReadWavHeader(path, &header, stop);
  if (result == kWavCannotOpen) return kWavInUse;
  if (result == kWavOk) result = CheckAgainstMxf(header, *mxf.audio);
  if (result != kWavOk) return result;

  std::unique_ptr<WAV_FILE_INFO> entry(new WAV_FILE_INFO{});
  const MXF_TIMECODE_INFO& timecode = *mxf.timecode;
  ComputeWavPosition(&header, timecode.rateIndex, timecode.fpsIndex, timecode.dropFrame);
  CopyHeader(header, entry.get());
  entry->findData = *fileInfo;
  platform::CopyText(entry->filePath, kWavPathChars, pathText);
  platform::CopyText(entry->fileName, kWavPathChars, platform::NameBehindSeparator(pathText));
  result = CheckForRewrite(*entry, *mxf.audio);
  if (result != kWavOk) return result;
  FillSortKeys(entry.get());
  FillColumns(entry.get(), timecode);
  Append(head, entry.release());
  return kWavOk;
}

}  // namespace

WavResult AddWavFile(const char16_t* path, WAV_FILE_INFO* head, const MXF_BASE_INFO& mxf,
                     const std::atomic<std::uint32_t>* stop) {
  if (head == nullptr || mxf.audio == nullptr || mxf.timecode == nullptr) return kWavNoLibrary;
  if (path == nullptr) return kWavNoPath;
  if (FindWavFile(*head, path) != nullptr) return kWavAlreadyAdded;
  try {
    return AddToLibrary(path, head, mxf, stop);
  } catch (const std::bad_alloc&) {
    return kWavNoMemory;
  }
}

std::u16string WavFailureText(int code, std::u16string_view path, platform::Language language) {
  for (const FailureText& row : kFailureTexts) {
    if (row.code == code) return FillIn(row.text.In(language), code, path);
  }
  return {};
}

WavIndex BuildWavIndex(WAV_FILE_INFO* head, WavIndex old, std::size_t spareSlots) {
  old.reset();
  if (head == nullptr || head->next == nullptr || head->entryCount <= 0) return nullptr;
  const auto count = static_cast<std::uint32_t>(head->entryCount);
  WavIndex index(new (std::nothrow) WAV_FILE_INFO*[count + spareSlots]());
  if (index == nullptr) return nullptr;
  std::uint32_t row = 0;
  for (WAV_FILE_INFO* entry = head->next; entry != nullptr && row < count; entry = entry->next) {
    entry->listIndex = row;
    index[row++] = entry;
  }
  return index;
}

WAV_FILE_INFO* RemoveWavEntry(WAV_FILE_INFO* entry) {
  if (entry == nullptr || entry->listHead == nullptr) return nullptr;
  WAV_FILE_INFO* const head = entry->listHead;
  WAV_FILE_INFO* const next = entry->next;
  entry->prev->next = next;
  if (next != nullptr) {
    next->prev = entry->prev;
  } else {
    head->prev = entry->prev == head ? nullptr : entry->prev;
  }
  --head->entryCount;
  delete entry;
  return next;
}

WAV_FILE_INFO* FindWavFile(const WAV_FILE_INFO& head, std::u16string_view path) {
  for (WAV_FILE_INFO* entry = head.next; entry != nullptr; entry = entry->next) {
    if (path == entry->filePath) return entry;
  }
  return nullptr;
}

void MoveLastWavEntry(WAV_FILE_INFO* from, WAV_FILE_INFO* to) {
  WAV_FILE_INFO* const entry = from->prev;
  if (from->next == nullptr) return;
  if (entry->prev == from) {
    from->next = from->prev = nullptr;
  } else {
    entry->prev->next = nullptr;
    from->prev = entry->prev;
  }
  --from->entryCount;
  entry->next = nullptr;
  Append(to, entry);
}

int FreeWavList(WAV_FILE_INFO* head) {
  if (head == nullptr || head->next == nullptr) return 0;
  for (WAV_FILE_INFO* entry = head->next; entry != nullptr;) {
    WAV_FILE_INFO* const next = entry->next;
    delete entry;
    entry = next;
  }
  head->next = nullptr;
  head->prev = nullptr;
  head->entryCount = 0;
  return 1;
}

}  // namespace quorvan
