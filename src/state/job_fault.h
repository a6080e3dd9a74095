// What can be wrong with a job, in numbers that mean the same for every engine.

#pragma once

#include <cstdint>

#include "mxf/essence/audio_element.h"

namespace quorvan {

// Added to the process code of the job's stage, one of these is the job's result (a measurement
// adds them to the code of the export through views). The numbers from 6 to 14 belong to each stage
// alone.
enum JobFault : std::int32_t {
  kNoFault = 0,
  kNoPath = 1,
  kNoTracks = 2,
  kNoRecords = 3,    // no MXF_BASE_INFO or one of its records missing
  kUnknownRate = 4,  // rateIndex outside its table
  kBadRange = 5,     // IN or OUT outside the clip, or IN behind OUT

  kNothingOn = 15,        // no track is ON
  kNoRange = 16,          // the clip does not tell start, timecode base or duration
  kNoSampleFormat = 17,   // nor sampling rate or sample width, or such that do not fit each other
  kUnfitFrame = 18,       // an element does not hold exactly the samples of its frame
  kMisplacedFrame = 19,   // index and frame lead to other audio elements
  kClipChanged = 20,      // not the clip that was analysed
  kSourceChanged = 21,    // not the file that was added
  kSourceCutShort = 22,   // a file that holds less audio than it claims
  kSourceNotPcm = 23,     // a file whose samples cannot be copied into this clip
  kClipFault = 24,        // the clip cannot be read or written
  kSourceFault = 25,      // a source file cannot be read, or has changed during the job
  kNotFlushed = 26,       // the audio did not come onto the medium
  kUmidsNotFlushed = 27,  // the audio did, the UMIDs did not
  kOutOfMemory = 28,
  kNoThread = 29,     // a thread could not be started
  kTargetFault = 30,  // a new file cannot be written
  kIndexUnfit = 31,   // the index table does not count every frame of the range
  kHeaderUnfit = 32,  // the UMIDs cannot be found in the header metadata
};

// Result of both rewrite engines for a clip whose UMIDs are not 32 bytes long and are not to be
// kept.
inline constexpr std::int32_t kUmidTooLong = 2014;

// Result of a job that is done, but for something that the operator has to know.
inline constexpr std::int32_t kDoneWithNotice = 98;

// What the header metadata of a clip holds behind a rewrite.
enum UmidState : std::uint32_t {
  kUmidsRenewed = 0,
  kUmidsOld = 1,      // all references still hold the old UMIDs
  kUmidsMixed = 2,    // some hold the old ones
  kUmidsUndated = 3,  // all hold the new ones, but the packages' modification dates are old
  kUmidsUnknown = 4,  // they cannot be read back
  kUmidsKept = 5,     // 64-byte UMIDs, left as they are at the operator's wish
};

// What a running job is doing.
enum JobPhase : std::uint32_t {
  kPhaseProving = 0,
  kPhaseWriting = 1,   // or, in a job that writes nothing, reading
  kPhaseFlushing = 2,  // waiting for the medium
};

inline constexpr std::uint32_t kNoFrame = 0xFFFFFFFF;

// What the state of a frame's elements means for a job that needs them.
constexpr JobFault FaultOfFrame(ElementState state) {
  switch (state) {
    case ElementState::kProven:
      return kNoFault;
    case ElementState::kMisplaced:
      return kMisplacedFrame;
    case ElementState::kOtherLength:
      return kUnfitFrame;
    case ElementState::kFault:
      return kClipFault;
  }
  return kMisplacedFrame;
}

// What a job that did not end well has to say besides its result. Written by the engine, read
// behind its end.
struct JOB_FAULT_INFO {
  std::uint32_t frame = kNoFrame;  // entry of the INDEX_ENTRY_ARRAY at fault
  std::uint32_t framesBegun = 0;   // frames from IN on into whose audio the job has written
  char16_t path[1024] = {};        // the file at fault, when that is not the clip
};

}  // namespace quorvan
