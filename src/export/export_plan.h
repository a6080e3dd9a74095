// What an export is going to do, decided before anything is opened.

#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "export/bwf_header.h"
#include "mxf/records.h"
#include "state/audiotrack_io_info.h"
#include "state/frame_range.h"

namespace quorvan {

struct ExportPlan {
  FrameRange range;
  std::uint32_t trackCount;
  std::array<std::uint32_t, kMaxTracks> track;  // tracks that are ON, zero-based, ascending

  std::span<const std::uint32_t> Tracks() const { return std::span(track).first(trackCount); }
};

// Checks the arguments and the range of an export and fills `*plan` with the tracks whose
// exportSwitch is ON. Returns kNoFault; the fault that FindRange finds in the arguments or in the
// range from `exportIn` to `exportOut`; or kNothingOn when no track is ON. Throws nothing.
JobFault PlanExport(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks,
                    const MXF_BASE_INFO* mxf, ExportPlan* plan);

// Checks that a BWF file can hold the audio of the clip. Returns kNoFault; kIndexUnfit when the
// index does not hold every frame of the plan; or kNoSampleFormat when the clip has no sampling
// rate or the bits of a sample do not fill its bytes. Throws nothing.
JobFault CheckClipFormat(const ExportPlan& plan, const MXF_BASE_INFO& mxf);

// Makes the header of every file of `plan`, with the time reference of the plan's first frame and
// `extensionSize` as cbSize of the fmt chunk. CheckClipFormat must have returned kNoFault. Throws
// nothing.
BwfHeader HeaderOf(const ExportPlan& plan, const MXF_BASE_INFO& mxf, std::uint16_t extensionSize);

}  // namespace quorvan
