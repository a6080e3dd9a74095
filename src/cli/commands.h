// The commands of the console companion, each with the record of its arguments. A command writes
// its result to standard output and its messages to standard error, and returns the exit status.
// Texts and paths are UTF-8; bytes that are not valid UTF-8 are kept as they are. A command speaks
// `language`, except in JSON, which is the same in every language. It throws std::bad_alloc when
// memory is out.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mxf/records.h"
#include "platform/language.h"

namespace quorvan::cli {

enum ExitStatus : int {
  kDone = 0,
  kFailed = 1,       // refused or failed, for the reason on standard error
  kWrongUsage = 2,   // the arguments are wrong, for the reason on standard error
  kInterrupted = 3,  // cancelled by the operator
  kDoneNotice = 4,   // done, with a notice on standard error
};

// How the clip is read and analysed before a command works on it.
struct LoadArguments {
  Method method = Method::kMemoryMapping;  // of the analysis and of the job that follows it
  bool noTimecodeCheck = false;            // do not compare the timecodes of the frames
};

struct InfoArguments {
  std::string file;
  bool json = false;   // one JSON object instead of text
  bool index = false;  // with every index entry
  LoadArguments load;
  std::optional<std::string> timecodeLog;  // path of the list of timecode breaks
};

// The timecodes of the first and the last frame of a range, the last one included. An absent
// timecode stands for the first or last frame of the clip.
struct RangeArguments {
  std::optional<std::string> in;
  std::optional<std::string> out;
};

// The source files and the silence that are put on the tracks of the clip.
struct PlacementArguments {
  std::vector<std::string> tracks;   // each "N=WAV", N the track from 1
  std::vector<std::string> silence;  // each the number of a track from 1
};

struct RewrapArguments {
  std::string file;
  PlacementArguments placement;
  RangeArguments range;
  LoadArguments load;
  std::optional<std::uint32_t> buffer;  // row of kWavBufferRows, from 0
  bool noLog = false;                   // write no log beside the clip
  bool noFlush = false;                 // do not wait until the bytes are on the medium
  bool keepUmids = false;  // rewrite a clip although its 64-byte UMIDs cannot be renewed
  bool yes = false;        // do not ask for a backup
};

struct ExportArguments {
  std::string file;
  std::string tracks;                 // "1,3-5"
  std::string folder;                 // of the new files
  std::optional<std::string> prefix;  // start of their names; a default when absent
  RangeArguments range;
  LoadArguments load;
  bool noFlush = false;  // do not wait until the bytes are on the medium
};

struct LoudnessArguments {
  std::string file;
  std::string tracks;  // "A,B" or "A", tracks from 1
  RangeArguments range;
  LoadArguments load;
  bool json = false;  // one JSON object instead of text
};

struct VerifyArguments {
  std::string file;
  PlacementArguments placement;
  RangeArguments range;
  LoadArguments load;
};

struct ConformArguments {
  std::string in;      // the clip, only read
  std::string out;     // the copy; must not exist; unused with check
  bool check = false;  // only tell what a copy would mend
  bool json = false;   // one JSON object instead of text
};

// Analyses a clip and shows what was found, as text or JSON; writes the list of timecode breaks
// when it is wanted and there are breaks. kFailed when the clip is refused or an output cannot be
// written.
int RunInfo(const InfoArguments& arguments, platform::Language language);

// Overwrites the audio of a clip in place with source files or silence, after the question for a
// backup, and writes a log beside the clip. kDoneNotice when the clip is rewritten but its UMIDs
// are not as they should be.
int RunRewrap(const RewrapArguments& arguments, platform::Language language);

// Writes tracks of a clip into BWF files (EBU Tech 3285), one file for each track.
int RunExport(const ExportArguments& arguments, platform::Language language);

// Measures the loudness (EBU R128) of one track of a clip, or of two tracks as left and right, and
// shows it as text or JSON.
int RunLoudness(const LoudnessArguments& arguments, platform::Language language);

// Compares the audio of a clip with the source files and the silence that a rewrite would write
// into it. kDone when all samples are the same; kFailed with the first difference on standard
// error.
int RunVerify(const VerifyArguments& arguments, platform::Language language);

// Copies a clip whose layout the analysis cannot follow into a new clip that can be loaded, and
// tells what the copy mends.
int RunConform(const ConformArguments& arguments, platform::Language language);

}  // namespace quorvan::cli
