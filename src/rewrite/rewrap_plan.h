// What a rewrite is going to do, worked out before the first byte is touched: the range, the
// sources track by track, and the proof that each value to be written is one.

#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"
#include "state/frame_range.h"
#include "wav/wav_library.h"

namespace quorvan {

// One source and the tracks that it fills: channels of a file in a row, or silence. A file of which
// a track between two others is left alone counts once for each row.
struct TrackSource {
  const WAV_FILE_INFO* wav;    // null for silence
  std::uint32_t firstTrack;    // from 0
  std::uint32_t trackCount;    // tracks in a row
  std::uint32_t firstChannel;  // of the file, on the first track
};

struct RewrapPlan {
  FrameRange range;
  std::uint32_t sourceCount;
  std::array<TrackSource, kMaxTracks> sources;
  std::uint32_t trackCount;
  std::array<std::uint32_t, kMaxTracks> track;  // those of all sources, from 0, ascending

  std::span<const std::uint32_t> Tracks() const { return std::span(track).first(trackCount); }
};

// Checks the arguments and the range of a rewrite and walks the tracks as PlanOfTrack says. What
// FindRange finds, or kNothingOn.
JobFault PlanRewrap(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks,
                    const MXF_BASE_INFO* mxf, RewrapPlan* plan);

// kNoFault when the index holds every frame of the plan and the clip's samples are such that bytes
// can be copied; else kIndexUnfit or kNoSampleFormat.
JobFault CheckClipFormat(const RewrapPlan& plan, const MXF_BASE_INFO& mxf);

}  // namespace quorvan
