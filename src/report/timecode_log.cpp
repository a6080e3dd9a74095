#include "report/timecode_log.h"

#include <fmt/format.h>

#include <array>
#include <new>

#include "platform/path.h"
#include "platform/text.h"
#include "report/log_file.h"
#include "report/report_text.h"
#include "state/program_name.h"
#include "state/wording.h"
#include "timecode/timecode.h"

namespace quorvan {
namespace {

using platform::ToUtf8;

constexpr std::array<std::string_view, 5> kKindTexts = {"**", "**", "inc", "dec", "still"};

// With the timecode base 60, the timecode word of a frame counts pairs of frames, 30 a second.
constexpr std::uint32_t kFpsIndex60 = 4;

std::string_view ScanMark(const MXF_VIDEO_INFO& video) {
  if (video.frameLayout == 2) return "i";
  return video.frameLayout == 1 || video.codecIndex == 5 || video.codecIndex == 6 ? "p" : "";
}

// The timecode text of a frame's timecode word, whose frame count is `count`; hours may be above
// 23. Dashes for a word that is no timecode: its count is negative when read as signed.
std::string WordText(const MXF_TIMECODE_INFO& timecode, std::uint32_t count) {
  if (static_cast<std::int32_t>(count) < 0) {
    return timecode.dropFrame != 0 ? "--:--:--.--" : "--:--:--:--";
  }
  const std::int64_t frames =
      timecode.fpsIndex == kFpsIndex60 ? std::int64_t{count} * 2 : std::int64_t{count};
  return TimecodeText(timecode, frames);
}

std::string FactsBlock(const APP_STATE_INFO& app, const platform::CalendarTime& now) {
  const MXF_BASE_INFO& mxf = *app.mxf;
  const MXF_TIMECODE_INFO& timecode = *mxf.timecode;
  const MXF_AUDIO_INFO& audio = *mxf.audio;
  const double megabits = static_cast<float>(mxf.video->bitRate) / 1000000.0F;
  const std::uint32_t length = LengthInFrames(timecode);
  return fmt::format(
      "< MXF情報 >\r\n{}\r\n{}\r\n{}\r\n\r\n作成日: {}\r\n更新日: {}\r\n\r\n"
      "製品名: {} {}\r\n    OS: {}\r\n会社名: {}\r\n\r\nMXF version = {}.{}\r\n\r\n"
      "Video Codec        = {}\r\nBit Rate           = {:.2f} Mb/s\r\n"
      "FPS                = {}{}\r\nAudio Sample       = {}\r\nAudio Bit Depth    = {}\r\n"
      "Tracks             = {}\r\nDelta Entry        = {}\r\nAudio Element size = {}\r\n"
      "Data Element size  = {}\r\nSegment Max frame  = {}\r\n\r\nフレームレート = {}{}\r\n"
      "開始(フレーム) = {} ({})\r\n終了(フレーム) = {} ({})\r\n長さ(フレーム) = {} ({})\r\n\r\n"
      "想定フレーム数   = {}\r\n実際のフレーム数 = {}\r\n\r\n",
      ToUtf8(platform::LastComponent(app.mxfPath)), ToUtf8(platform::FolderOf(app.mxfPath)),
      FileSizeText(mxf.fileSize), ToUtf8(mxf.creationDateText), DateTimeText(now, 1),
      ToUtf8(mxf.productName), ToUtf8(mxf.productVersion), ToUtf8(mxf.platform),
      ToUtf8(mxf.companyName), mxf.versionMajor, mxf.versionMinor, ToUtf8(mxf.video->codecName),
      megabits, RateLabel(timecode), ScanMark(*mxf.video), audio.sampleRate, audio.quantizationBits,
      audio.trackCount, (*mxf.indexEntries)[0].deltaCount, audio.elementSize,
      mxf.ancillaryElementSize, timecode.maxIndexDuration, RateLabel(timecode), DropLabel(timecode),
      TimecodeText(timecode, timecode.startFrames), timecode.startFrames,
      TimecodeText(timecode, timecode.lastFrames), timecode.lastFrames,
      TimecodeText(timecode, length), length, timecode.duration, timecode.frameCount);
}

}  // namespace

std::string TimecodeLogHead(const APP_STATE_INFO& app, const platform::CalendarTime& now) {
  return fmt::format("LTCエラーログ作成日 [{}]\r\n作成日: {}\r\n\r\n", ToUtf8(kProgramTitle),
                     DateTimeText(now, 1)) +
         FactsBlock(app, now) +
         fmt::format(
             "\r\nLTCエラー数: {}\r\nこの数値が全フレームと同じかそれに近い場合、"
             "エレメントが壊れている可能性があります。\r\n\r\n",
             app.mxf->timecode->errorCount) +
         "#       発生場所     再開ＴＣ     積算         状態\r\n";
}

std::string TimecodeLogLine(const APP_STATE_INFO& app, std::uint32_t number,
                            const TIMECODE_ERROR_INFO& timecodeBreak) {
  const MXF_TIMECODE_INFO& timecode = *app.mxf->timecode;
  const std::size_t kind = timecodeBreak.kind < kKindTexts.size() ? timecodeBreak.kind : 0;
  return fmt::format("{:6}  {}  {}  {}  {}\r\n", number,
                     WordText(timecode, timecodeBreak.previousTimecode),
                     WordText(timecode, timecodeBreak.nextTimecode),
                     TimecodeText(timecode, timecodeBreak.frameNumber), kKindTexts[kind]);
}

bool WriteTimecodeLog(const std::u16string& path, const APP_STATE_INFO& app, std::uint32_t* error) {
  *error = 0;
  try {
    LogFile log(path, app);
    log.Write(TimecodeLogHead(app, platform::LocalTimeNow()));
    std::uint32_t number = 0;
    const TIMECODE_ERROR_INFO* head = app.mxf->timecode->errorList;
    for (const auto* node = head->next; node != nullptr; node = node->next)
      log.Write(TimecodeLogLine(app, number++, *node));
    const bool written = log.Finish();
    *error = log.error();
    return written;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

std::u16string TimecodeLogFailureMessage(std::u16string_view mxfPath, std::uint32_t error,
                                         platform::Language language) {
  return platform::ToUtf16(
      Worded(language,
             {"{}\n\nエラーログを作成できません。\n保存場所、接続デバイスを確認して下さい。\n"
              "ERR: {:X}{}",
              "{}\n\nThe list of timecode breaks cannot be written.\n"
              "Check the folder and the connected device.\nERR: {:X}{}"},
             ToUtf8(platform::LastComponent(mxfPath)), error, LogRefusal(error, language)));
}

std::u16string TimecodeLogDoneMessage(std::u16string_view mxfPath) {
  return platform::ToUtf16(fmt::format("{}\r\n{}\r\n\nタイムコードエラーログを作成しました",
                                       ToUtf8(platform::LastComponent(mxfPath)), ToUtf8(mxfPath)));
}

}  // namespace quorvan
