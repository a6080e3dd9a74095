#include "report/rewrap_log.h"

#include <fmt/format.h>

#include <new>

#include "platform/path.h"
#include "platform/text.h"
#include "report/log_file.h"
#include "report/report_text.h"
#include "state/program_name.h"
#include "state/track_plan.h"
#include "state/wording.h"
#include "wav/wav_library.h"

namespace quorvan {
namespace {

using platform::ToUtf8;

constexpr std::u16string_view kLogSuffix = u"_LOG.txt";

std::string_view WriteMethod(const APP_STATE_INFO& app) {
  return app.useFileIo == Method::kMemoryMapping ? "メモリマッピング" : "標準ファイル入出力";
}

char ScanLetter(const MXF_VIDEO_INFO& video) {
  return video.frameLayout == 1 || video.codecIndex == 5 || video.codecIndex == 6 ? 'i' : 'p';
}

std::string FileBlock(const APP_STATE_INFO& app, const platform::CalendarTime& now) {
  const MXF_BASE_INFO& mxf = *app.mxf;
  return fmt::format(
      "[ 対象ファイル ]\r\n{}\r\n{}\r\n{}\r\n作成日: {}\r\n更新日: {}\r\n\r\n"
      "[ ファイルクリエーター ]\r\n製品名: {} {}\r\n    OS: {}\r\n会社名: {}\r\n\r\n",
      ToUtf8(platform::LastComponent(app.mxfPath)), ToUtf8(app.mxfPath), FileSizeText(mxf.fileSize),
      ToUtf8(mxf.creationDateText), DateTimeText(now, 1), ToUtf8(mxf.productName),
      ToUtf8(mxf.productVersion), ToUtf8(mxf.platform), ToUtf8(mxf.companyName));
}

std::string MetadataBlock(const MXF_BASE_INFO& mxf) {
  const MXF_TIMECODE_INFO& timecode = *mxf.timecode;
  const MXF_AUDIO_INFO& audio = *mxf.audio;
  const double megabits = static_cast<float>(mxf.video->bitRate) / 1000000.0F;
  const std::uint32_t length = LengthInFrames(timecode);
  return fmt::format(
      "[ MXFファイルメタ情報 ]\r\nMXF version\r\n{}.{}\r\nメディア固有UMID\r\n{}\r\n\r\n"
      "素材UMID\r\n{}\r\n\r\nVIDEO\r\n{}\r\n{:.2f}Mb/s\r\n{}{}\r\n\r\n"
      "AUDIO\r\nAES3/BWF LPCM\r\n{}Hz\r\n{}bit\r\n\r\nTRACKS\r\n{}\r\n\r\n"
      "NDE = {}\r\nAudio Element Size = {}\r\nData Element size  = {}\r\n"
      "Segment Max frame  = {}\r\n\r\nタイムコード\r\n{} {}\r\n"
      "開始 = {}  {:7} frames\r\n終了 = {}  {:7} frames\r\n長さ = {}  {:7} frames\r\n\r\n",
      mxf.versionMajor, mxf.versionMinor, UmidText(mxf.materialUmid), UmidText(mxf.sourceUmid),
      ToUtf8(mxf.video->codecName), megabits, RateLabel(timecode), ScanLetter(*mxf.video),
      audio.sampleRate, audio.quantizationBits, audio.trackCount, (*mxf.indexEntries)[0].deltaCount,
      audio.elementSize, mxf.ancillaryElementSize, timecode.maxIndexDuration, RateLabel(timecode),
      DropLabel(timecode), TimecodeText(timecode, timecode.startFrames), timecode.startFrames,
      TimecodeText(timecode, timecode.lastFrames), timecode.lastFrames,
      TimecodeText(timecode, length), length);
}

std::string RangeBlock(const APP_STATE_INFO& app) {
  const MXF_TIMECODE_INFO& timecode = *app.mxf->timecode;
  const AUDIOTRACK_IO_INFO& tracks = *app.tracks;
  const std::size_t slot = CountedSlot(timecode);
  const std::int32_t length = tracks.outFrame[slot] - tracks.inFrame[slot] + 1;
  const auto text = [&](std::int32_t frames) { return TimecodeText(timecode, frames); };
  return fmt::format("[ 処理範囲 ]\r\nIN  {}\r\nOUT {}\r\nDUR {}\r\n\r\n", text(tracks.inFrame[0]),
                     text(tracks.outFrame[0]), text(length));
}

std::string PlaceText(const MXF_TIMECODE_INFO& timecode, std::uint32_t frames,
                      std::int64_t remainder, std::int64_t samples) {
  return fmt::format("{} *{:04}  {:10} samples\r\n", TimecodeText(timecode, frames), remainder,
                     samples);
}

std::string SourceBlock(const WAV_FILE_INFO& file, std::uint32_t channel,
                        const MXF_TIMECODE_INFO& timecode) {
  const auto signedDifference = [](auto end, auto start) {
    return static_cast<std::int64_t>(end) - static_cast<std::int64_t>(start);
  };
  std::string text = fmt::format("\t{}\r\n\t{}\r\n\t{}/{}ch  {}bit  {}Hz\r\n",
                                 ToUtf8(file.fileName), ToUtf8(platform::FolderOf(file.filePath)),
                                 channel + 1, file.channels, file.bitsPerSample, file.sampleRate);
  text += "\t開始 = " + PlaceText(timecode, file.startFrame, file.sampleRemainder[0],
                                  signedDifference(file.samplePosition[0], 0));
  text += "\t終了 = " + PlaceText(timecode, file.endFrame, file.sampleRemainder[1],
                                  signedDifference(file.samplePosition[1], 0));
  text +=
      "\t長さ = " + PlaceText(timecode, file.durationFrames,
                              signedDifference(file.sampleRemainder[1], file.sampleRemainder[0]),
                              signedDifference(file.samplePosition[1], file.samplePosition[0]));
  return text + "\r\n";
}

std::string TrackBlock(const APP_STATE_INFO& app, std::uint32_t track) {
  const std::string head = fmt::format("Track {}\r\n", track + 1);
  const TrackPlan plan = PlanOfTrack(*app.tracks, *app.mxf->audio, track);
  switch (plan.content) {
    case TrackContent::kUntouched:
      return head + "\t未処理\r\n\r\n";
    case TrackContent::kSilence:
      return head + "\t無音を書込みました。\r\n\r\n";
    case TrackContent::kFile:
      break;
  }
  return head + SourceBlock(*plan.wav, plan.channel, *app.mxf->timecode);
}

}  // namespace

std::string RewrapLogText(const APP_STATE_INFO& app, const platform::CalendarTime& now) {
  std::string text = fmt::format("再ラップ処理ログ [{}]\r\n作成日: {}\r\n\r\n",
                                 ToUtf8(kProgramTitle), DateTimeText(now, 4));
  text += fmt::format("[ 書込み方式 ]\r\n{}\r\n\r\n", WriteMethod(app));
  text += FileBlock(app, now) + MetadataBlock(*app.mxf) + RangeBlock(app);
  text += "[ トラック割当てファイル詳細 ]\r\n";
  for (std::uint32_t t = 0; t < UsableTracks(*app.mxf->audio); ++t)
    text += TrackBlock(app, t);
  return text;
}

std::string RewrapLogEnd(const APP_STATE_INFO& app) {
  const platform::CalendarTime& start = app.jobStartTime;
  return fmt::format(
      "\r\n-------------------------------------------------\r\n"
      "処理開始: {:02}:{:02};{:02}\r\n処理終了: {}\r\n",
      start.hour, start.minute, start.second, TimeText(app.jobEndTime));
}

std::u16string RewrapLogPath(std::u16string_view mxfPath) {
  return std::u16string(platform::WithoutExtension(mxfPath)).append(kLogSuffix);
}

bool WriteRewrapLog(APP_STATE_INFO* app, std::u16string_view notice, std::uint32_t* error) {
  *error = 0;
  try {
    LogFile log(RewrapLogPath(app->mxfPath), *app);
    log.Write(RewrapLogText(*app, platform::LocalTimeNow()));
    app->jobEndTime = platform::LocalTimeNow();
    log.Write(RewrapLogEnd(*app));
    if (!notice.empty()) log.Write(fmt::format("\r\n[ UMID ]\r\n{}\r\n", ToUtf8(notice)));
    const bool written = log.Finish();
    *error = log.error();
    return written;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

std::u16string RewrapLogFailureMessage(std::u16string_view mxfPath, std::uint32_t error,
                                       platform::Language language) {
  return platform::ToUtf16(
      Worded(language,
             {"{}\n\nログファイルを作成できません。\n保存場所・接続デバイスを確認して下さい。\n"
              "ERR: {:X}{}",
              "{}\n\nThe log file cannot be written.\nCheck the folder and the connected device.\n"
              "ERR: {:X}{}"},
             ToUtf8(platform::LastComponent(mxfPath)), error, LogRefusal(error, language)));
}

std::u16string NoRewrapLogMessage(std::u16string_view mxfPath, platform::Language language) {
  if (platform::CanBeNamed(RewrapLogPath(mxfPath))) return {};
  return platform::ToUtf16(
      Worded(language,
             {"{}\n\nファイル名が長すぎるため、同じ場所にログファイル(_LOG.txt)を作成できません。\n"
              "ファイル名を短くしてからもう一度お試し下さい。",
              "{}\n\nThe file name is too long for a log file (_LOG.txt) in the same folder.\n"
              "Shorten the file name and try again."},
             ToUtf8(platform::LastComponent(mxfPath))));
}

std::u16string RewrapCompletionMessage(std::u16string_view mxfPath, std::u16string_view logPath) {
  return platform::ToUtf16(
      fmt::format("再ラップ処理が完了しました。\n"
                  "詳細ログをMXFファイルと同じ場所に作成しましたのでご確認ください。\n\n"
                  "ファイル名\n{}\n場所\n{}",
                  ToUtf8(platform::LastComponent(mxfPath)), ToUtf8(platform::FolderOf(logPath))));
}

}  // namespace quorvan
