#include "support/command.h"

#include <sys/wait.h>

#include <cstdlib>

#include "support/temp_folder.h"

namespace quorvan::test {

std::string CompanionOf(const std::string& path) {
  const char* other = std::getenv("QUORVAN_COMPANION");
  return other != nullptr ? other : path;
}

CommandResult RunCommand(const std::string& command) {
  const TempFolder folder;
  const auto text = [](const std::string& path) {
    const auto bytes = ReadAll(path);
    return std::string(bytes.begin(), bytes.end());
  };
  const std::string out = folder.Path() / "out";
  const std::string err = folder.Path() / "err";
  const std::string line = "( " + command + " ) </dev/null >" + out + " 2>" + err;
  const int status = std::system(line.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, text(out), text(err)};
}

std::string MakeFfmpegClip(const std::string& path, const FfmpegClip& clip) {
  const std::string duration = ":d=" + std::to_string(clip.seconds);
  std::string inputs = " -f lavfi -i " + clip.picture + ":r=" + clip.rate + duration;
  std::string maps = " -map 0";
  for (int track = 1; track <= clip.tracks; ++track) {
    const std::string tone = "sine=f=" + std::to_string(300 * track) + ":r=48000";
    const bool named = static_cast<std::size_t>(track) <= clip.audio.size();
    inputs += " -t " + std::to_string(clip.seconds) + " -f lavfi -i \"" +
              (named ? clip.audio[static_cast<std::size_t>(track) - 1] : tone) + "\"";
    maps += " -map " + std::to_string(track);
  }
  const std::string coding =
      clip.avcIntra ? " -c:v libx264 -preset ultrafast -pix_fmt yuv422p10le -profile:v high422 -g 1"
                    : " -c:v mpeg2video -pix_fmt yuv422p -profile:v 0 -level:v 2 -g 12 -bf 2";
  const CommandResult made =
      RunCommand("ffmpeg -v error -y" + inputs + maps + coding + " -c:a pcm_s" +
                 std::to_string(clip.bits) + "le -timecode '" + clip.start + "' " + path);
  return made.status == 0 ? "" : made.error + " (status " + std::to_string(made.status) + ")";
}

}  // namespace quorvan::test
