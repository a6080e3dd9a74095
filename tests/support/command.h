// Other programs, run by the tests: the console companion, ffmpeg and its like.

#pragma once

#include <string>
#include <vector>

namespace quorvan::test {

struct CommandResult {
  int status = -1;       // exit status; -1 when a signal ended it
  std::string output{};  // standard output
  std::string error{};   // standard error
};

// The console companion as a shell command: what the environment variable QUORVAN_COMPANION says,
// else the program of this build at `path`.
std::string CompanionOf(const std::string& path);

// Runs a shell command with nothing on standard input.
CommandResult RunCommand(const std::string& command);

struct FfmpegClip {
  std::string rate = "25";
  double seconds = 2;
  int tracks = 2;
  int bits = 24;
  bool avcIntra = false;  // all-intra H.264 instead of MPEG-2
  std::string start = "10:00:00:00";
  std::string picture = "testsrc2=s=320x180";  // a source of ffmpeg's, without rate and duration
  std::vector<std::string> audio{};  // sources of ffmpeg's at 48 kHz by track; tones where absent
};

// Has ffmpeg write an MXF clip with a tone of another pitch on each track; what it said, empty when
// it went well.
std::string MakeFfmpegClip(const std::string& path, const FfmpegClip& clip);

}  // namespace quorvan::test
