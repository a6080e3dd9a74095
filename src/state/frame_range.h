// The arguments of a job and its range, checked against the clip before anything is opened.

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// A range as the engines walk it: from its IN frame to its OUT frame, both included.
struct FrameRange {
  std::uint32_t firstEntry;  // of the INDEX_ENTRY_ARRAY, the IN frame
  std::uint32_t total;       // frames
};

// What is wrong with the arguments of a job. Added to the process code of its stage, it is the
// result of the job.
enum ArgumentFault : std::int32_t {
  kArgumentsSound = 0,
  kNoPath = 1,
  kNoTracks = 2,
  kNoRecords = 3,    // no MXF_BASE_INFO or one of its records missing
  kUnknownRate = 4,  // rateIndex outside its table
  kBadRange = 5,     // IN or OUT outside the clip, or IN behind OUT
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

// Checks the arguments in the order of ArgumentFault and fills `range` when they are sound. In a
// clip that starts in hour 23 an OUT directly before IN stands for no frame at all: a total of 0.
ArgumentFault CheckArguments(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks,
                             const MXF_BASE_INFO* mxf, const RangeFields& fields,
                             FrameRange* range);

// True when the index counts its frames without a gap, in ascending places, and has the range.
bool IndexHolds(const FrameRange& range, const MXF_BASE_INFO& mxf);

}  // namespace quorvan
