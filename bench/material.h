// The clip and the WAV files on which the jobs are measured, made once and kept in a folder.

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

// Lets ffmpeg write a clip of `seconds` with a tone on each of `tracks` tracks, conforms the clip,
// and makes the WAV files of noise that are going to replace the tones. Files that `folder` holds
// already are used as they are. False when a step fails, with the reason on standard error.
bool MakeMaterial(const std::filesystem::path& folder, std::uint32_t seconds, std::uint32_t tracks,
                  Material* material);

}  // namespace quorvan::bench
