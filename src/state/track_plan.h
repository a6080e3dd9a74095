// Decides what a rewrite puts on each track.

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

enum class TrackContent {
  kUntouched,  // the track's switch is not ON
  kSilence,
  kFile,
};

struct TrackPlan {
  TrackContent content;
  const WAV_FILE_INFO* wav;  // source file; null unless kFile
  std::uint32_t channel;     // channel of the source file, from 0
};

// What a rewrite described by `tracks` puts on `track` (from 0) of a clip with the audio `audio`.
// Only the track's own switch decides, not the switches of the other tracks of its file. A track
// that the clip does not have is kUntouched; a channel that the file does not have counts as its
// last channel. Engines, log and questions to the operator all use this function. Throws nothing.
TrackPlan PlanOfTrack(const AUDIOTRACK_IO_INFO& tracks, const MXF_AUDIO_INFO& audio,
                      std::uint32_t track);

}  // namespace quorvan
