// The values of the companion's arguments, read from their text.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mxf/records.h"

namespace quorvan::cli {

struct TrackArgument {
  std::uint32_t track;  // from 0
  std::string path;
};

// "N" with N from 1 to kMaxTracks as a track from 0; nothing for anything else.
std::optional<std::uint32_t> ParseTrackNumber(std::string_view text);

// "N=WAV" with N from 1 to kMaxTracks; nothing for anything else.
std::optional<TrackArgument> ParseTrackArgument(std::string_view text);

// "1,3-5", numbers from 1 to kMaxTracks, as tracks from 0, ascending and each once; nothing for
// anything else, an empty list included.
std::optional<std::vector<std::uint32_t>> ParseTrackList(std::string_view text);

// Real count of "01:02:03:04" (any of ":", ";", "." and "," between the pairs) or "01020304" on the
// base of the clip; nothing for another form or a field out of its range.
std::optional<std::int32_t> ParseTimecode(std::string_view text, const MXF_TIMECODE_INFO& timecode);

}  // namespace quorvan::cli
