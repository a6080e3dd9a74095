// Long clips that take little room on the disk: the file holds only those bytes of a frame that a
// load reads, and the rest of the frame is a hole.

#pragma once

#include <cstdint>
#include <filesystem>

namespace quorvan::bench {

inline constexpr std::uint32_t kSparseTracks = 24;

// Frames that a 59.94 clip (drop frame) of `minutes` minutes has.
std::uint32_t SparseFrames(std::uint32_t minutes);

// Writes a clip of 59.94 frames a second (drop frame), with kSparseTracks tracks of 24 bits and a
// picture of 50 Mbit/s. Every frame holds its system element with the timecode and the key and
// length of its picture; only the first frame holds audio. Each index table segment comes before
// its frames. A clip that exists already is used as it is. False when the clip cannot be written.
bool MakeSparseClip(const std::filesystem::path& path, std::uint32_t minutes);

}  // namespace quorvan::bench
