#include "state/clip_text.h"

#include <iterator>

#include "mxf/metadata/package_uid.h"
#include "mxf/sample_pattern.h"
#include "platform/text.h"
#include "timecode/timecode.h"
#include "wav/size_text.h"

namespace quorvan {
namespace {

constexpr std::array<std::string_view, kRateCount> kRateLabels = {"24", "25",    "30",    "50",
                                                                  "60", "23.98", "29.97", "59.94"};

}  // namespace

std::string_view RateLabel(const MXF_TIMECODE_INFO& timecode) {
  return timecode.rateIndex < kRateCount ? kRateLabels[timecode.rateIndex] : std::string_view();
}

std::string TimecodeText(const MXF_TIMECODE_INFO& timecode, std::int64_t frames) {
  char16_t text[32] = {};
  FormatTimecode(text, std::size(text), timecode.fpsIndex, timecode.dropFrame,
                 static_cast<std::uint32_t>(frames), kSeparated);
  return platform::ToUtf8(text);
}

std::string FileSizeText(std::uint64_t bytes) {
  char16_t text[16] = {};
  FormatFileSize(bytes, text, std::size(text));
  return platform::ToUtf8(text);
}

std::string UmidText(const std::array<std::uint8_t, kUmidBytes>& umid) {
  char16_t text[kUmidTextChars];
  UmidToHexText(umid.data(), text);
  return platform::ToUtf8(text);
}

std::uint32_t LengthInFrames(const MXF_TIMECODE_INFO& timecode) {
  return WorkingLast(timecode) - WorkingStart(timecode) + 1;
}

std::vector<ClipNotice> NoticesOf(const MXF_BASE_INFO& mxf) {
  const MXF_TIMECODE_INFO& timecode = *mxf.timecode;
  const MXF_AUDIO_INFO& audio = *mxf.audio;
  std::vector<ClipNotice> notices;
  if (!HasRange(timecode)) notices.push_back(ClipNotice::kNoRange);
  if (!HasKnownRate(timecode)) notices.push_back(ClipNotice::kUnknownRate);
  if (!HasSampleFormat(audio)) notices.push_back(ClipNotice::kNoSampleFormat);
  if (HasRange(timecode) && timecode.duration != timecode.frameCount) {
    notices.push_back(ClipNotice::kOtherLength);
  }
  if (HasOtherPattern(audio)) notices.push_back(ClipNotice::kOtherPattern);
  if (mxf.indexContradicted != 0) {
    notices.push_back(ClipNotice::kIndexContradicted);
  } else if (audio.indexedElements != UsableTracks(audio)) {
    notices.push_back(ClipNotice::kHiddenTracks);
  }
  return notices;
}

}  // namespace quorvan
