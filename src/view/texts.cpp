#include "view/texts.h"

#include <fmt/format.h>

#include <iterator>

#include "mxf/sample_pattern.h"
#include "platform/path.h"
#include "platform/text.h"
#include "state/clip_text.h"
#include "state/window_state_info.h"
#include "timecode/timecode.h"
#include "wav/wav_library.h"

namespace quorvan {
namespace {

using platform::ToUtf16;
using platform::ToUtf8;

constexpr std::u16string_view kUnknown = u"Unknown";
constexpr std::u16string_view kDropHint =
    u"MXFファイルをウィンドウにドラッグ＆ドロップしてください";
constexpr std::u16string_view kNoPathText = u"パス情報はありません。";
constexpr COLOR kOffNameColor = {0, 130, 140};
constexpr std::int32_t kNarrowTip = 200;
constexpr std::int32_t kWideTip = 600;
constexpr std::size_t kMostStatusChars = 259;

constexpr std::array<std::string_view, kRateCount> kFpsLabels = {"24", "25",     "30",    "50",
                                                                 "60", "23.976", "29.97", "59.94"};

std::string RateText(const MXF_TIMECODE_INFO& timecode) {
  if (timecode.rateIndex >= kRateCount) return "Unknown";
  return fmt::format("{} {}", RateLabel(timecode), timecode.dropFrame != 0 ? "DF" : "NDF");
}

std::string FpsText(const MXF_BASE_INFO& mxf) {
  const std::uint32_t rate = mxf.timecode->rateIndex;
  if (rate >= kRateCount) return "Unknown?";
  const std::uint8_t layout = mxf.video->frameLayout;
  const std::string_view scan = layout == 0 ? "p" : layout <= 2 ? "i" : "";
  return fmt::format("{}{}", kFpsLabels[rate], scan);
}

std::u16string LoadedText(const APP_STATE_INFO& app, ControlId id) {
  const MXF_BASE_INFO& mxf = *app.mxf;
  const MXF_TIMECODE_INFO& timecode = *mxf.timecode;
  switch (id) {
    case kFileNameText:
      return std::u16string(platform::LastComponent(app.mxfPath));
    case kRateText:
      return ToUtf16(RateText(timecode));
    case kHeadText:
      return ToUtf16(TimecodeText(timecode, timecode.startFrames));
    case kTailText:
      return ToUtf16(TimecodeText(timecode, timecode.lastFrames));
    case kDurText:
      return ToUtf16(TimecodeText(timecode, LengthInFrames(timecode)));
    case kFormatText:
      return u"AES3/LPCM";
    case kCodecText:
      return mxf.video->codecName;
    case kBitRateText:
      return ToUtf16(fmt::format("{:.1f}Mbps", mxf.video->bitRate / 1e6));
    case kFpsText:
      return ToUtf16(FpsText(mxf));
    case kSizeText:
      return ToUtf16(fmt::format("{} x {}", mxf.video->width, mxf.video->height));
    default:
      return {};
  }
}

std::u16string UnloadedText(ControlId id) {
  switch (id) {
    case kFileNameText:
      return std::u16string(kDropHint);
    case kHeadText:
    case kTailText:
    case kDurText:
      return std::u16string(kNoTimecode);
    case kBitRateText:
      return u"0.0Mbps";
    case kRateText:
    case kFormatText:
    case kCodecText:
    case kFpsText:
    case kSizeText:
      return std::u16string(kUnknown);
    default:
      return {};
  }
}

}  // namespace

std::u16string InfoText(const APP_STATE_INFO& app, ControlId id) {
  const MXF_AUDIO_INFO& audio = *app.mxf->audio;
  switch (id) {
    case kTracksText:
      return ToUtf16(fmt::format("{}", audio.trackCount));
    case kBitsText:
      return ToUtf16(fmt::format("{}bit", audio.quantizationBits));
    case kFsRateText:
      return ToUtf16(fmt::format("{}kHz", audio.sampleRate / 1000));
    default:
      return app.mxfLoaded == 1 ? LoadedText(app, id) : UnloadedText(id);
  }
}

RangeTexts TextsOfRange(const APP_STATE_INFO& app, const RangeFields& fields,
                        const PointSet& pointSet) {
  const std::u16string none(kNoTimecode);
  RangeTexts texts{none, none, none};
  if (app.mxfLoaded != 1) return texts;
  const MXF_TIMECODE_INFO& timecode = *app.mxf->timecode;
  const FramePoint& in = app.tracks->*fields.in;
  const FramePoint& out = app.tracks->*fields.out;
  const std::size_t slot = CountedSlot(timecode);
  if (pointSet[0] == 1) texts.in = ToUtf16(TimecodeText(timecode, in[0]));
  if (pointSet[1] == 1) texts.out = ToUtf16(TimecodeText(timecode, out[0]));
  if (pointSet[0] == 1 && pointSet[1] == 1) {
    texts.duration = ToUtf16(TimecodeText(timecode, out[slot] - in[slot] + 1));
  }
  return texts;
}

std::u16string TimecodeDigits(const MXF_TIMECODE_INFO& timecode, std::int32_t frames) {
  char16_t text[16] = {};
  FormatTimecode(text, std::size(text), timecode.fpsIndex, timecode.dropFrame,
                 static_cast<std::uint32_t>(frames), kEightDigits);
  return text;
}

ToolTip FileToolTip(const APP_STATE_INFO& app) {
  if (app.mxfLoaded != 1) return {u"情報はありません。", kNarrowTip};
  const MXF_BASE_INFO& mxf = *app.mxf;
  return {ToUtf16(fmt::format("{}\n{}\n{}\n\n作成日: {}\n更新日: {}\n\n製品名: {} Version: {}\n"
                              "OS: {}\n会社名: {}",
                              ToUtf8(platform::LastComponent(app.mxfPath)),
                              ToUtf8(platform::FolderOf(app.mxfPath)), FileSizeText(mxf.fileSize),
                              ToUtf8(mxf.creationDateText), ToUtf8(mxf.modifiedDateText),
                              ToUtf8(mxf.productName), ToUtf8(mxf.productVersion),
                              ToUtf8(mxf.platform), ToUtf8(mxf.companyName))),
          kWideTip};
}

ToolTip TrackToolTip(const APP_STATE_INFO& app, std::int32_t track) {
  const auto t = static_cast<std::size_t>(track);
  const WAV_FILE_INFO* file = app.tracks->wav[t];
  if (file == nullptr) return {u"ファイルが割当てられていません。", kNarrowTip};
  return {ToUtf16(fmt::format(
              "トラック: {:2}\n\n{}\n{}\n{}\n\nビット数: {:2}  チャンネル: {:2}/{:2}\n\n"
              "開始: {}  {:15} samples\n終了: {}  {:15} samples\n長さ: {}  {:15} samples",
              track + 1, ToUtf8(file->fileName), ToUtf8(platform::FolderOf(file->filePath)),
              FileSizeText(file->findData.size), file->bitsPerSample, app.tracks->wavChannel[t] + 1,
              file->channels, ToUtf8(file->columnText[kStartColumn]), file->samplePosition[0],
              ToUtf8(file->columnText[kEndColumn]), file->samplePosition[1],
              ToUtf8(file->columnText[kDurationColumn]),
              file->samplePosition[1] - file->samplePosition[0])),
          kWideTip};
}

std::u16string PathStatus(const APP_STATE_INFO& app, std::int32_t focusRow) {
  if (app.wavIndex == nullptr || focusRow < 0 || focusRow >= app.wavList->entryCount) {
    return std::u16string(kNoPathText);
  }
  char16_t text[kMostStatusChars + 1];
  platform::CopyText(text, std::size(text),
                     app.wavIndex[static_cast<std::size_t>(focusRow)]->filePath);
  return text;
}

std::u16string CounterStatus(const APP_STATE_INFO& app) {
  if (app.libraryView == 1) {
    return ToUtf16(fmt::format("WAV/BWFファイル : {:2}個   {:2}個を選択中", app.wavList->entryCount,
                               app.selectedWavCount));
  }
  const std::uint32_t tracks = app.mxfLoaded == 1 ? app.mxf->audio->trackCount : 0;
  return ToUtf16(fmt::format("MXFファイル : {:2} トラック / {:2}トラックを選択中", tracks,
                             app.selectedTracks));
}

TrackRowText TextOfTrack(const APP_STATE_INFO& app, std::int32_t track) {
  const auto t = static_cast<std::size_t>(track);
  const std::uint8_t state = app.tracks->rewrapSwitch[t];
  const WAV_FILE_INFO* file = app.tracks->wav[t];
  TrackRowText row{{}, {}, kWhite, 0};
  if (file == nullptr) {
    row.state = kTrackStateText[state];
    return row;
  }
  row.name = file->fileName;
  if (state == kSwitchOff) {
    row.nameColor = kOffNameColor;
    row.state = kTrackStateText[kSwitchOff];
  }
  const std::uint8_t mark = app.window->trackChannelMark[t];
  if (file->channels == 2 && mark >= 1 && mark <= 2) row.channelMark = mark == 1 ? u'L' : u'R';
  return row;
}

}  // namespace quorvan
