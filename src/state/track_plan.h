// What a rewrite puts on a track.

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
  const WAV_FILE_INFO* wav;  // null unless kFile
  std::uint32_t channel;     // of the file, from 0
};

// What a rewrite described by `tracks` puts on `track` (from 0) of a clip with the audio `audio`.
// The track's own switch decides alone, whatever the other tracks of its file do; each track gets
// the channel that the assignment gave it. Every engine, log and question goes by this function.
TrackPlan PlanOfTrack(const AUDIOTRACK_IO_INFO& tracks, const MXF_AUDIO_INFO& audio,
                      std::uint32_t track);

}  // namespace quorvan
