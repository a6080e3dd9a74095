// The faults that refuse or end a job, as numbers that mean the same for every engine, and what
// else a job tells about its end.

#pragma once

#include <cstdint>

#include "mxf/essence/audio_element.h"

namespace quorvan {

// A failed job's result is the process code of its stage plus a JobFault. A measurement adds the
// JobFault to 4000, the process code of the export by memory mapping. The numbers 6 to 14 mean
// something else in each stage. The next fault is 34. The tables of job/process_table.cpp hold a
// text for every number; a new fault needs a text there and a higher kResultColumns.
enum JobFault : std::int32_t {
  kNoFault = 0,
  kNoPath = 1,
  kNoTracks = 2,
  kNoRecords = 3,    // the MXF_BASE_INFO or one of its records is missing
  kUnknownRate = 4,  // rateIndex outside its table
  kBadRange = 5,     // IN or OUT outside the clip, or IN behind OUT

  kNothingOn = 15,        // no track is ON
  kNoRange = 16,          // the clip does not tell start, timecode base or duration
  kNoSampleFormat = 17,   // sampling rate or sample width is unknown or unfit for the job
  kUnfitFrame = 18,       // an audio element does not hold exactly the samples of its frame
  kMisplacedFrame = 19,   // index and frame do not lead to the same audio elements
  kClipChanged = 20,      // the clip is not the one that was analysed
  kSourceChanged = 21,    // a source file is not the one that was added
  kSourceCutShort = 22,   // a source file holds less audio than it claims
  kSourceNotPcm = 23,     // the samples of a source file cannot be copied into this clip
  kClipFault = 24,        // the clip cannot be read or written
  kSourceFault = 25,      // a source file cannot be read, or has changed during the job
  kNotFlushed = 26,       // the written audio may not be on the medium
  kUmidsNotFlushed = 27,  // the audio is on the medium, the UMIDs may not be
  kOutOfMemory = 28,
  kNoThread = 29,      // a thread could not be started
  kTargetFault = 30,   // a new file cannot be written
  kIndexUnfit = 31,    // the index table does not count every frame of the range
  kHeaderUnfit = 32,   // the UMIDs cannot be found in the header metadata
  kOtherPattern = 33,  // the sample pattern does not start with the clip
};

// Result of both rewrite engines, whatever their process code, for a clip with a UMID of 64 bytes
// while `keepUmids` is 0.
inline constexpr std::int32_t kUmidTooLong = 2014;

// Result of a rewrite that is done, but has not renewed all UMIDs: the operator has to know.
// `umidState` says what the clip holds.
inline constexpr std::int32_t kDoneWithNotice = 98;

// What the header metadata of a clip holds after a rewrite.
enum UmidState : std::uint32_t {
  kUmidsRenewed = 0,  // all references hold the new UMIDs, and the packages the new dates
  kUmidsOld = 1,      // all references still hold the old UMIDs
  kUmidsMixed = 2,    // neither all old nor all new
  kUmidsUndated = 3,  // all references hold the new UMIDs, but the modification dates are old
  kUmidsUnknown = 4,  // the header metadata cannot be read back
  kUmidsKept = 5,     // the UMIDs have 64 bytes and stay as they are at the operator's wish
};

// What a running job is doing.
enum JobPhase : std::uint32_t {
  kPhaseProving = 0,   // checking clip and sources before the first write
  kPhaseWriting = 1,   // writing; in a measurement, which writes nothing, reading
  kPhaseFlushing = 2,  // waiting until what was written is on the medium
};

// Stands in JOB_FAULT_INFO.frame for "no frame is at fault".
inline constexpr std::uint32_t kNoFrame = 0xFFFFFFFF;

// The fault that ends a job when it needs the audio elements of a frame and finds them in `state`;
// kNoFault for kProven.
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

// What a job that failed or was cancelled tells besides its result. The engine writes the record;
// others read it after the job has ended.
struct JOB_FAULT_INFO {
  std::uint32_t frame = kNoFrame;  // frame at fault: place in the INDEX_ENTRY_ARRAY
  std::uint32_t framesBegun = 0;   // frames from IN on whose audio may have been overwritten
  char16_t path[1024] = {};        // file at fault; empty for none and for the clip
};

}  // namespace quorvan
