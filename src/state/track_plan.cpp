#include "state/track_plan.h"

#include <algorithm>

#include "wav/wav_library.h"

namespace quorvan {

TrackPlan PlanOfTrack(const AUDIOTRACK_IO_INFO& tracks, const MXF_AUDIO_INFO& audio,
                      std::uint32_t track) {
  if (track >= UsableTracks(audio) || tracks.rewrapSwitch[track] != kSwitchOn) {
    return {TrackContent::kUntouched, nullptr, 0};
  }
  const WAV_FILE_INFO* wav = tracks.wav[track];
  if (wav == nullptr) return {TrackContent::kSilence, nullptr, 0};
  const std::uint32_t lastChannel = std::max<std::uint32_t>(wav->channels, 1) - 1;
  return {TrackContent::kFile, wav, std::min<std::uint32_t>(tracks.wavChannel[track], lastChannel)};
}

}  // namespace quorvan
