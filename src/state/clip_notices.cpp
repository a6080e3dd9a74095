#include "state/clip_notices.h"

#include "mxf/sample_pattern.h"

namespace quorvan {

std::uint32_t IndexedAudioElements(const MXF_BASE_INFO& mxf) {
  const std::uint32_t others = kDeltasBeforeAudio + (mxf.hasAncillaryData != 0 ? 1 : 0);
  const std::uint32_t deltas = (*mxf.indexEntries)[0].deltaCount;
  return deltas > others ? deltas - others : 0;
}

std::vector<ClipNotice> NoticesOf(const MXF_BASE_INFO& mxf) {
  const MXF_TIMECODE_INFO& timecode = *mxf.timecode;
  const MXF_AUDIO_INFO& audio = *mxf.audio;
  std::vector<ClipNotice> notices;
  if (!HasRange(timecode)) notices.push_back(ClipNotice::kNoRange);
  if (timecode.rateIndex >= kRateCount) notices.push_back(ClipNotice::kUnknownRate);
  if (audio.sampleRate == 0 || audio.quantizationBits == 0) {
    notices.push_back(ClipNotice::kNoSampleFormat);
  }
  if (HasRange(timecode) && timecode.duration != timecode.frameCount) {
    notices.push_back(ClipNotice::kOtherLength);
  }
  if (IndexedAudioElements(mxf) > audio.trackCount) notices.push_back(ClipNotice::kHiddenTracks);
  return notices;
}

}  // namespace quorvan
