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

// One source and the tracks that it fills: a file's channels in order, or silence.
struct TrackSource {
  const WAV_FILE_INFO* wav;    // null for silence
  std::uint32_t firstTrack;    // from 0
  std::uint32_t trackCount;    // tracks in a row
  std::uint32_t firstChannel;  // of the file, on the first track
  bool widen;                  // 16-bit samples into the upper bytes of 24-bit ones
};

struct RewrapPlan {
  FrameRange range;
  std::uint32_t sourceCount;
  std::array<TrackSource, kMaxTracks> sources;
  std::uint32_t trackCount;
  std::array<std::uint32_t, kMaxTracks> track;  // those of all sources, from 0, ascending

  std::span<const std::uint32_t> Tracks() const { return std::span(track).first(trackCount); }
};

// Checks the arguments and the range of a rewrite and walks the tracks that are ON. A file counts
// with all its channels from the first of its tracks that is ON; the switches of the tracks behind
// it are not looked at, and each track gets the channel that the assignment gave it.
ArgumentFault PlanRewrap(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks,
                         const MXF_BASE_INFO* mxf, RewrapPlan* plan);

// True when the index holds every frame of the plan and every sample width is one that can be
// written: bytes are copied, or 16 bits widened to 24, and nothing else.
bool CanBeWritten(const RewrapPlan& plan, const MXF_BASE_INFO& mxf);

}  // namespace quorvan
