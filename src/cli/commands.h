// The commands of the console companion, behind their arguments. Each returns the exit status.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mxf/records.h"

namespace quorvan::cli {

enum ExitStatus : int {
  kDone = 0,
  kFailed = 1,  // refused or failed; the reason is on standard error
  kWrongUsage = 2,
  kInterrupted = 3,  // cancelled by the operator
  kDoneNotice = 4,   // done, with a notice on standard error
};

// How a clip is opened and looked at before anything else.
struct LoadArguments {
  Method method = Method::kMemoryMapping;
  bool noTimecodeCheck = false;
};

struct InfoArguments {
  std::string file;
  bool json = false;
  bool index = false;
  LoadArguments load;
  std::optional<std::string> timecodeLog;  // where the breaks are written to
};

// First and last frame as timecode texts; the clip's own when absent.
struct RangeArguments {
  std::optional<std::string> in;
  std::optional<std::string> out;
};

// What is to stand on the tracks of the clip.
struct PlacementArguments {
  std::vector<std::string> tracks;   // "N=WAV", N from 1
  std::vector<std::string> silence;  // tracks from 1
};

struct RewrapArguments {
  std::string file;
  PlacementArguments placement;
  RangeArguments range;
  LoadArguments load;
  std::optional<std::uint32_t> buffer;  // row of the buffer durations
  bool noLog = false;
  bool noFlush = false;
  bool keepUmids = false;
  bool yes = false;
};

struct ExportArguments {
  std::string file;
  std::string tracks;  // "1,3-5"
  std::string folder;
  std::optional<std::string> prefix;
  RangeArguments range;
  LoadArguments load;
  bool noFlush = false;
};

struct LoudnessArguments {
  std::string file;
  std::string tracks;  // "A,B" or "A"
  RangeArguments range;
  LoadArguments load;
  bool json = false;
};

struct VerifyArguments {
  std::string file;
  PlacementArguments placement;
  RangeArguments range;
  LoadArguments load;
};

struct ConformArguments {
  std::string in;
  std::string out;
};

// Analyses a clip and shows what was found.
int RunInfo(const InfoArguments& arguments);

// Gives a clip new sound.
int RunRewrap(const RewrapArguments& arguments);

// Writes tracks of a clip into BWF files.
int RunExport(const ExportArguments& arguments);

// Measures two tracks of a clip.
int RunLoudness(const LoudnessArguments& arguments);

// Compares the sound of a clip with its sources.
int RunVerify(const VerifyArguments& arguments);

// Copies a clip into the form that the readers follow.
int RunConform(const ConformArguments& arguments);

}  // namespace quorvan::cli
