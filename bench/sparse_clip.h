// Long clips that take little room: of a frame stands in the file what a load looks at, the rest
// are holes.

#pragma once

#include <cstdint>
#include <filesystem>

namespace quorvan::bench {

inline constexpr std::uint32_t kSparseTracks = 24;

// Frames of so many minutes at 59.94 frames, by the clock.
std::uint32_t SparseFrames(std::uint32_t minutes);

// Writes a clip of 59.94 frames (drop frame), kSparseTracks tracks of 24 bits and a picture of
// 50 Mbit/s. Keys, lengths and timecode of system element and picture stand in every frame, audio
// in the first one only. An index table segment stands in front of the frames that it counts.
bool MakeSparseClip(const std::filesystem::path& path, std::uint32_t minutes);

}  // namespace quorvan::bench
