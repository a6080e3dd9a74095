// The clip and the sound files that the jobs are measured on, made once and kept in a folder.

#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace quorvan::bench {

struct Material {
  std::filesystem::path clip;
  std::vector<std::filesystem::path> mono;  // one for each track, of the clip's length
  std::filesystem::path stereo;
};

// Has ffmpeg write a clip of `seconds` with `tracks` tones, brings it into the form that the
// readers follow, and makes the noise that is going to replace the tones. What the folder holds
// already stays. False when something fails, with the reason on standard error.
bool MakeMaterial(const std::filesystem::path& folder, std::uint32_t seconds, std::uint32_t tracks,
                  Material* material);

}  // namespace quorvan::bench
