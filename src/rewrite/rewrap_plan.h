// What a rewrite is going to do, decided before anything is opened: the range of frames and the
// source of each track.

#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"
#include "state/frame_range.h"
#include "wav/wav_library.h"

namespace quorvan {

// One source and the tracks that it fills: consecutive channels of a source file on consecutive
// tracks, or silence on one track. A source file whose tracks or channels have a gap makes one
// source for each stretch without a gap.
struct TrackSource {
  const WAV_FILE_INFO* wav;    // null for silence
  std::uint32_t firstTrack;    // zero-based
  std::uint32_t trackCount;    // consecutive tracks, at least 1
  std::uint32_t firstChannel;  // zero-based channel of the file that goes on firstTrack
};

struct RewrapPlan {
  FrameRange range;
  std::uint32_t sourceCount;
  std::array<TrackSource, kMaxTracks> sources;
  std::uint32_t trackCount;
  std::array<std::uint32_t, kMaxTracks> track;  // tracks of all sources, zero-based, ascending

  std::span<const std::uint32_t> Tracks() const { return std::span(track).first(trackCount); }
};

// Checks the arguments and the range of a rewrite and fills `*plan` with the sources that
// PlanOfTrack gives. Returns kNoFault; the fault that FindRange finds in the arguments or in the
// range from `inFrame` to `outFrame`; or kNothingOn when no track is ON. Throws nothing.
JobFault PlanRewrap(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks,
                    const MXF_BASE_INFO* mxf, RewrapPlan* plan);

// Checks that samples can be copied into the clip. Returns kNoFault; kIndexUnfit when the index
// does not hold every frame of the plan; or kNoSampleFormat when the clip does not have
// 48 kHz or the bits of a sample do not fill its bytes. Throws nothing.
JobFault CheckClipFormat(const RewrapPlan& plan, const MXF_BASE_INFO& mxf);

}  // namespace quorvan
