// What an export is going to do, worked out before anything is opened.

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
  std::array<std::uint32_t, kMaxTracks> track;  // those that are ON, from 0, ascending

  std::span<const std::uint32_t> Tracks() const { return std::span(track).first(trackCount); }
};

// Checks the arguments and the range of an export and collects the tracks that are ON. What
// FindRange finds, or kNothingOn.
JobFault PlanExport(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks,
                    const MXF_BASE_INFO* mxf, ExportPlan* plan);

// kNoFault when the index holds every frame of the plan and the audio format is one that a BWF file
// can state; else kIndexUnfit or kNoSampleFormat.
JobFault CheckClipFormat(const ExportPlan& plan, const MXF_BASE_INFO& mxf);

// The header of every file of a plan whose clip format is in order.
BwfHeader HeaderOf(const ExportPlan& plan, const MXF_BASE_INFO& mxf, std::uint16_t extensionSize);

}  // namespace quorvan
