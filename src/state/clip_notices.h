// What an operator should know of a loaded clip before working with it.

#pragma once

#include <cstdint>
#include <vector>

#include "mxf/records.h"

namespace quorvan {

enum class ClipNotice {
  kNoRange,         // start, timecode base or duration are unknown: no job takes the clip
  kUnknownRate,     // the edit rate is none of the table: no job takes the clip
  kNoSampleFormat,  // sampling rate or sample width are unknown: no job takes the clip
  kOtherLength,     // the index does not hold as many frames as the duration says
  kHiddenTracks,    // the index holds more audio elements than tracks were counted
};

// All notices of the clip, in that order.
std::vector<ClipNotice> NoticesOf(const MXF_BASE_INFO& mxf);

// Audio elements of a frame, as the index has them.
std::uint32_t IndexedAudioElements(const MXF_BASE_INFO& mxf);

}  // namespace quorvan
