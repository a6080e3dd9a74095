#include "rewrite/rewrap_plan.h"

#include "mxf/sample_pattern.h"
#include "state/track_plan.h"

namespace quorvan {
namespace {

// True when `track` is the track directly behind the tracks of `source` and gets the next channel
// of the same file.
bool Continues(const TrackSource& source, const TrackPlan& plan, std::uint32_t track) {
  return source.wav != nullptr && source.wav == plan.wav &&
         track == source.firstTrack + source.trackCount &&
         plan.channel == source.firstChannel + source.trackCount;
}

void WalkTracks(const AUDIOTRACK_IO_INFO& tracks, const MXF_AUDIO_INFO& audio, RewrapPlan* plan) {
  plan->sourceCount = 0;
  plan->trackCount = 0;
  for (std::uint32_t track = 0; track < UsableTracks(audio); ++track) {
    const TrackPlan content = PlanOfTrack(tracks, audio, track);
    if (content.content == TrackContent::kUntouched) continue;
    plan->track[plan->trackCount++] = track;
    if (plan->sourceCount > 0 && Continues(plan->sources[plan->sourceCount - 1], content, track)) {
      ++plan->sources[plan->sourceCount - 1].trackCount;
    } else {
      plan->sources[plan->sourceCount++] = {content.wav, track, 1, content.channel};
    }
  }
}

}  // namespace

JobFault PlanRewrap(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks,
                    const MXF_BASE_INFO* mxf, RewrapPlan* plan) {
  const JobFault fault = FindRange(path, tracks, mxf, kRewrapRange, &plan->range);
  if (fault != kNoFault) return fault;
  WalkTracks(*tracks, *mxf->audio, plan);
  return plan->trackCount == 0 ? kNothingOn : kNoFault;
}

JobFault CheckClipFormat(const RewrapPlan& plan, const MXF_BASE_INFO& mxf) {
  if (!IndexHolds(plan.range, mxf)) return kIndexUnfit;
  const MXF_AUDIO_INFO& audio = *mxf.audio;
  const bool fits =
      audio.sampleRate == kSampleRate && audio.quantizationBits == audio.blockAlign * 8u;
  return fits ? kNoFault : kNoSampleFormat;
}

}  // namespace quorvan
