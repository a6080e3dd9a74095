// The commands of the console companion, behind their arguments. Each returns the exit status.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quorvan::cli {

enum ExitStatus : int {
  kDone = 0,
  kFailed = 1,  // refused or failed; the reason is on standard error
  kWrongUsage = 2,
  kInterrupted = 3,  // cancelled by the operator
};

struct InfoArguments {
  std::string file;
  bool json = false;
  bool index = false;
  bool fileIo = false;
};

struct RewrapArguments {
  std::string file;
  std::vector<std::string> tracks;   // "N=WAV", N from 1
  std::vector<std::string> silence;  // tracks from 1
  std::optional<std::string> in;     // timecode text; the first frame when absent
  std::optional<std::string> out;    // timecode text; the last frame when absent
  bool yes = false;
};

struct ConformArguments {
  std::string in;
  std::string out;
};

// Analyses a clip and shows what was found.
int RunInfo(const InfoArguments& arguments);

// Gives a clip new sound.
int RunRewrap(const RewrapArguments& arguments);

// Copies a clip into the form that the readers follow.
int RunConform(const ConformArguments& arguments);

}  // namespace quorvan::cli
