// What a rewrite is going to do, worked out before the first byte is touched: the range, the
// sources track by track, and the proof that each value to be written is one.

#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"
#include "wav/wav_library.h"

namespace quorvan {

// Largest number of samples of a frame.
inline constexpr std::uint32_t kLargestFrameSamples = 2002;

// One source and the tracks that it fills: a file's channels in order, or silence.
struct TrackSource {
  const WAV_FILE_INFO* wav;    // null for silence
  std::uint32_t firstTrack;    // from 0
  std::uint32_t trackCount;    // tracks in a row
  std::uint32_t firstChannel;  // of the file, on the first track
  bool widen;                  // 16-bit samples into the upper bytes of 24-bit ones
};

struct RewrapPlan {
  std::uint32_t firstEntry;  // of the INDEX_ENTRY_ARRAY, the IN frame
  std::uint32_t total;       // frames, IN and OUT included
  std::uint32_t sourceCount;
  std::array<TrackSource, kMaxTracks> sources;
};

enum class PlanResult {
  kReady,
  kNoTracks,     // no AUDIOTRACK_IO_INFO
  kNoRecords,    // no MXF_BASE_INFO or one of its records missing
  kUnknownRate,  // rateIndex outside its table
  kBadRange,     // IN or OUT outside the clip, or IN behind OUT
};

// Checks the arguments and the range of a rewrite and walks the tracks that are ON. A file counts
// with all its channels from the first of its tracks that is ON; the switches of the tracks behind
// it are not looked at, and each track gets the channel that the assignment gave it.
PlanResult PlanRewrap(const AUDIOTRACK_IO_INFO* tracks, const MXF_BASE_INFO* mxf, RewrapPlan* plan);

// True when the index counts every frame from 0 on, in ascending places, the plan lies within it,
// and every sample width is one that can be written: bytes are copied, or 16 bits widened to 24,
// and nothing else.
bool CanBeWritten(const RewrapPlan& plan, const MXF_BASE_INFO& mxf);

// Number of tracks up to and with the last one that the plan writes.
std::uint32_t TracksUpToLast(const RewrapPlan& plan);

// A stretch of frames that can be reached through one view.
struct SegmentRun {
  std::uint32_t firstEntry;
  std::uint32_t frames;
  std::uint64_t start;   // file offset of the first frame
  std::uint64_t length;  // bytes up to the end of the last frame, within the file
};

// The run that starts `done` frames into the plan: to the end of its index table segment or of
// the plan. At least one frame. Only for a plan that CanBeWritten.
SegmentRun NextRun(const RewrapPlan& plan, const MXF_BASE_INFO& mxf, std::uint32_t done);

}  // namespace quorvan
