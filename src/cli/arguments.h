// Reads the values of the command line arguments from their text.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mxf/records.h"

namespace quorvan::cli {

// A WAV file and the track that it is put on.
struct TrackArgument {
  std::uint32_t track;  // from 0
  std::string path;     // of the WAV file, UTF-8
};

// The track (from 0) that the decimal number `text` names; tracks are written from 1 to kMaxTracks.
// Nothing for any other text.
std::optional<std::uint32_t> ParseTrackNumber(std::string_view text);

// The track and the path of "N=WAV", with N from 1 to kMaxTracks and a path that is not empty.
// Nothing for any other text.
std::optional<TrackArgument> ParseTrackArgument(std::string_view text);

// The tracks (from 0) of a list such as "1,3-5", with numbers from 1 to kMaxTracks: in ascending
// order, each track once. Nothing for any other text, an empty list included.
std::optional<std::vector<std::uint32_t>> ParseTrackList(std::string_view text);

// The real count of the timecode `text`, with the timecode base of the clip's record `timecode`.
// The text is "01:02:03:04", in which ";", "." and "," may replace any ":", or "01020304". Nothing
// for a text of another form and for a field out of range.
std::optional<std::int32_t> ParseTimecode(std::string_view text, const MXF_TIMECODE_INFO& timecode);

}  // namespace quorvan::cli
