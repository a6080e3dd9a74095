#include "bench/material.h"

#include <fmt/format.h>

#include <string>

#include "bench/measured_run.h"
#include "conform/conform.h"
#include "platform/text.h"

namespace quorvan::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kPictureSeconds = 10;

// Runs ffmpeg to make `target`, unless it exists. ffmpeg writes under another name and the file is
// renamed at the end, so that a file named `target` is always complete.
bool Ffmpeg(std::vector<std::string> arguments, const fs::path& target) {
  if (fs::exists(target)) return true;
  const fs::path growing = target.parent_path() / ("growing-" + target.filename().string());
  const std::vector<std::string> head = {"ffmpeg", "-nostdin", "-v", "error", "-y"};
  arguments.insert(arguments.begin(), head.begin(), head.end());
  arguments.push_back(growing.string());
  if (!RunProgram(arguments)) {
    fmt::print(stderr, "ffmpeg cannot make {}\n", target.string());
    return false;
  }
  fs::rename(growing, target);
  return true;
}

bool MakePicture(const fs::path& target) {
  return Ffmpeg({"-f",
                 "lavfi",
                 "-i",
                 fmt::format("testsrc2=size=1920x1080:rate=25:duration={}", kPictureSeconds),
                 "-c:v",
                 "mpeg2video",
                 "-pix_fmt",
                 "yuv422p",
                 "-b:v",
                 "21M",
                 "-minrate",
                 "21M",
                 "-maxrate",
                 "21M",
                 "-bufsize",
                 "15291000",
                 "-g",
                 "12",
                 "-bf",
                 "2",
                 "-flags",
                 "+ildct+ilme+cgop",
                 "-sc_threshold",
                 "1000000000"},
                target);
}

bool MakeCamera(const fs::path& picture, std::uint32_t seconds, std::uint32_t tracks,
                const fs::path& target) {
  std::vector<std::string> inputs = {"-stream_loop", "-1", "-i", picture.string()};
  std::vector<std::string> maps = {"-map", "0:v"};
  for (std::uint32_t t = 1; t <= tracks; ++t) {
    for (const std::string& word :
         {std::string("-f"), std::string("lavfi"), std::string("-i"),
          fmt::format("sine=frequency={}:sample_rate=48000", 200 + 40 * t)}) {
      inputs.push_back(word);
    }
    maps.push_back("-map");
    maps.push_back(fmt::format("{}:a", t));
  }
  inputs.insert(inputs.end(), maps.begin(), maps.end());
  for (const std::string& word :
       {std::string("-c:v"), std::string("copy"), std::string("-c:a"), std::string("pcm_s24le"),
        std::string("-t"), std::to_string(seconds), std::string("-timecode"),
        std::string("10:00:00:00")}) {
    inputs.push_back(word);
  }
  return Ffmpeg(inputs, target);
}

bool Conform(const fs::path& camera, const fs::path& target) {
  if (fs::exists(target)) return true;
  JobProgress progress;
  const ConformResult result = ConformClip(
      {.in = platform::ToUtf16(camera.string()), .out = platform::ToUtf16(target.string())},
      &progress);
  if (!result.IsDone()) fmt::print(stderr, "{}: {}\n", camera.string(), result.reason.en);
  return result.IsDone();
}

bool MakeNoise(std::uint32_t seconds, std::uint32_t channels, std::uint32_t seed,
               const fs::path& target) {
  const auto source = [&](std::uint32_t number) {
    return fmt::format("anoisesrc=seed={}:duration={}:sample_rate=48000:amplitude=0.25", number,
                       seconds);
  };
  const std::string graph =
      channels == 1 ? source(seed)
                    : source(seed) + "[l];" + source(seed + 1) + "[r];[l][r]amerge=inputs=2";
  return Ffmpeg({"-f", "lavfi", "-i", graph, "-c:a", "pcm_s24le"}, target);
}

}  // namespace

bool MakeMaterial(const fs::path& folder, std::uint32_t seconds, std::uint32_t tracks,
                  Material* material) {
  const fs::path home = folder / fmt::format("{}s-{}tracks", seconds, tracks);
  fs::create_directories(home);
  const fs::path picture = folder / "picture.mxf";
  const fs::path camera = home / "camera.mxf";
  *material = {home / "clip.mxf", {}, home / "stereo.wav"};
  if (!fs::exists(material->clip) &&
      (!MakePicture(picture) || !MakeCamera(picture, seconds, tracks, camera) ||
       !Conform(camera, material->clip))) {
    return false;
  }
  for (std::uint32_t t = 1; t <= tracks; ++t) {
    material->mono.push_back(home / fmt::format("noise{}.wav", t));
    if (!MakeNoise(seconds, 1, t, material->mono.back())) return false;
  }
  return MakeNoise(seconds, 2, tracks + 1, material->stereo);
}

}  // namespace quorvan::bench
