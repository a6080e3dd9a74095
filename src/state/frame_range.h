// The arguments of a job and its range, checked against the clip before anything is opened.

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"
#include "state/job_fault.h"

namespace quorvan {

// A range as the engines walk it: from its IN frame to its OUT frame, both included.
struct FrameRange {
  std::uint32_t firstEntry;  // of the INDEX_ENTRY_ARRAY, the IN frame
  std::uint32_t total;       // frames
};

// Two members of AUDIOTRACK_IO_INFO that bound the range of one kind of job.
struct RangeFields {
  FramePoint AUDIOTRACK_IO_INFO::*in;
  FramePoint AUDIOTRACK_IO_INFO::*out;
};

inline constexpr RangeFields kRewrapRange = {&AUDIOTRACK_IO_INFO::inFrame,
                                             &AUDIOTRACK_IO_INFO::outFrame};
inline constexpr RangeFields kExportRange = {&AUDIOTRACK_IO_INFO::exportIn,
                                             &AUDIOTRACK_IO_INFO::exportOut};
inline constexpr RangeFields kLoudnessRange = {&AUDIOTRACK_IO_INFO::loudnessIn,
                                               &AUDIOTRACK_IO_INFO::loudnessOut};

// What keeps every job from a loaded clip: kNoRange, kUnknownRate or kNoSampleFormat; else
// kNoFault.
JobFault CheckClip(const MXF_BASE_INFO& mxf);

// Checks the arguments of a job: kNoPath to kBadRange, kNoRange and kNoSampleFormat, or kNoFault
// with `range` filled. In a clip that starts in hour 23 an OUT directly before IN stands for no
// frame at all: a total of 0.
JobFault FindRange(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks, const MXF_BASE_INFO* mxf,
                   const RangeFields& fields, FrameRange* range);

// True when the index counts its frames without a gap, in ascending places, and has the range.
bool IndexHolds(const FrameRange& range, const MXF_BASE_INFO& mxf);

}  // namespace quorvan
