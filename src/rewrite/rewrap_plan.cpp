#include "rewrite/rewrap_plan.h"

#include <algorithm>

#include "mxf/sample_pattern.h"

namespace quorvan {
namespace {

TrackSource SourceOf(const AUDIOTRACK_IO_INFO& tracks, const MXF_AUDIO_INFO& audio,
                     std::uint32_t track) {
  TrackSource source{tracks.wav[track], track, 1, 0, false};
  if (source.wav == nullptr) return source;
  const std::uint32_t group = tracks.wavGroup[track];
  const std::uint32_t channels = source.wav->channels;
  if (channels > 1) {
    const bool grouped = group >= kWavGroupBase && track >= group - kWavGroupBase;
    const std::uint32_t channel = grouped ? track - (group - kWavGroupBase) : 0;
    source.firstChannel = std::min(channel, channels - 1);
    source.trackCount = std::min(channels - source.firstChannel, UsableTracks(audio) - track);
  }
  source.widen = source.wav->bitsPerSample == 16 && source.wav->bytesPerChannelSample == 2 &&
                 audio.quantizationBits == 24;
  return source;
}

void WalkTracks(const AUDIOTRACK_IO_INFO& tracks, const MXF_AUDIO_INFO& audio, RewrapPlan* plan) {
  plan->sourceCount = 0;
  plan->trackCount = 0;
  for (std::uint32_t track = 0; track < UsableTracks(audio);) {
    if (tracks.rewrapSwitch[track] != kSwitchOn) {
      ++track;
      continue;
    }
    const TrackSource source = SourceOf(tracks, audio, track);
    plan->sources[plan->sourceCount++] = source;
    for (std::uint32_t c = 0; c < source.trackCount; ++c)
      plan->track[plan->trackCount++] = track++;
  }
}

// WAVE_FORMAT_PCM, and the tag of files that state their format at length. Anything else, FLAC or
// DTS, say, would be noise in the clip.
constexpr std::uint16_t kPcmTag = 0x0001;
constexpr std::uint16_t kExtensibleTag = 0xFFFE;

bool FitsSampleWidth(const TrackSource& source, const MXF_AUDIO_INFO& audio) {
  const WAV_FILE_INFO* wav = source.wav;
  if (wav == nullptr) return true;
  if (wav->formatTag != kPcmTag && wav->formatTag != kExtensibleTag) return false;
  const std::uint32_t held = std::uint32_t{wav->bytesPerChannelSample} * wav->channels;
  if (wav->blockAlign == 0 || wav->channels == 0 || held != wav->blockAlign) return false;
  return source.widen || wav->bytesPerChannelSample == audio.blockAlign;
}

}  // namespace

ArgumentFault PlanRewrap(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks,
                         const MXF_BASE_INFO* mxf, RewrapPlan* plan) {
  const ArgumentFault fault = CheckArguments(path, tracks, mxf, kRewrapRange, &plan->range);
  if (fault == kArgumentsSound) WalkTracks(*tracks, *mxf->audio, plan);
  return fault;
}

bool CanBeWritten(const RewrapPlan& plan, const MXF_BASE_INFO& mxf) {
  if (!IndexHolds(plan.range, mxf) || mxf.audio->sampleRate != kSampleRate ||
      mxf.audio->quantizationBits != mxf.audio->blockAlign * 8u) {
    return false;
  }
  return std::all_of(plan.sources.begin(), plan.sources.begin() + plan.sourceCount,
                     [&](const TrackSource& s) { return FitsSampleWidth(s, *mxf.audio); });
}

}  // namespace quorvan
