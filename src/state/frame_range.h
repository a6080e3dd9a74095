// Checks the arguments and the range of a job against the clip, before any file is opened.

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "platform/file.h"
#include "state/audiotrack_io_info.h"
#include "state/job_fault.h"

namespace quorvan {

// The range of a job, from its IN frame to its OUT frame, both included.
struct FrameRange {
  std::uint32_t firstEntry;  // place of the IN frame in the INDEX_ENTRY_ARRAY
  std::uint32_t total;       // number of frames
};

// The two members of AUDIOTRACK_IO_INFO that hold the range of one kind of job.
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

// Why no job takes a loaded clip: kNoRange, kUnknownRate, kNoSampleFormat or kOtherPattern, the
// first of these that applies; kNoFault when jobs take the clip.
JobFault CheckClip(const MXF_BASE_INFO& mxf);

// Checks the arguments of a job and finds its range, whose IN and OUT frames `fields` picks from
// `tracks`. `path` is the zero-terminated path of the clip and `mxf` its analysis. Returns kNoFault
// with `*range` filled, or, with `*range` unchanged, the first fault in this order: kNoPath for a
// null or empty path; kNoTracks; kNoRecords; kNoRange; kUnknownRate; kNoSampleFormat;
// kOtherPattern; kBadRange. In a clip that starts in hour 23, an OUT frame directly before the IN
// frame is a range of 0 frames; in other clips it is kBadRange. Throws nothing.
JobFault FindRange(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks, const MXF_BASE_INFO* mxf,
                   const RangeFields& fields, FrameRange* range);

// Compares the size of the open `clip` with the size that the analysis has found. kNoFault;
// kClipChanged; or kClipFault when the system cannot tell the size.
JobFault CheckClipSize(const platform::File& clip, const MXF_BASE_INFO& mxf);

// True when the index of the clip contains every frame of `range`, and counts the frames of the
// clip without a gap and at ascending file offsets, as CountsEveryFrame says.
bool IndexHolds(const FrameRange& range, const MXF_BASE_INFO& mxf);

}  // namespace quorvan
