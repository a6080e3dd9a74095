// Compares an index table with the keys in the frames, header by header.

#pragma once

#include <cstdint>
#include <optional>

#include "mxf/records.h"
#include "platform/file.h"

namespace quorvan {

// What a walk reads of a file that is not in memory.
enum class ColdWalk : std::uint8_t {
  kPrefetches,  // the headers and the audio of coming frames, for a clip that stays where it is
  kReadsAll,    // everything in large blocks, for a clip that is copied anyway
};

// True when the first and the last frame of every stretch of frames with the same index table
// segment and partition stand where the index says: a key starts at the frame's offset, keys of
// audio elements stand where the deltas of the first and the last track lead, and the deltas of the
// tracks ascend. Reads few bytes of few frames. Throws nothing.
bool BorderKeysAgree(const platform::File& file, const MXF_BASE_INFO& mxf);

// True when every frame stands where the index says: from the frame's offset a walk from key to key
// finds the audio elements of all tracks where the index has them, each of the kind that the
// analysis found and with a length field of four bytes, and ends where the next frame of the same
// partition starts. Does not compare the lengths of the audio with the sample pattern. Reads the
// headers of all elements of all frames, and from a file that is not in memory what `cold` says.
// False also when a read fails or a stop was requested. Throws std::bad_alloc.
bool EveryFrameStands(const platform::File& file, const MXF_BASE_INFO& mxf, ColdWalk cold);

// Number of audio elements in the first frame that stand where the index says, at most kMaxTracks.
// Throws nothing.
std::uint32_t CountIndexedElements(const platform::File& file, const MXF_BASE_INFO& mxf);

// Length in bytes of the value of the first track's audio element in the frame `entryIndex`
// (zero-based), by its own length field. Nothing when no audio element stands where the index says.
// Throws nothing.
std::optional<std::uint64_t> FirstElementBytes(const platform::File& file, const MXF_BASE_INFO& mxf,
                                               std::uint32_t entryIndex);

}  // namespace quorvan
