// Checks that the timecodes in the frames of a clip follow each other.

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "platform/file.h"

namespace quorvan {

// Results of a continuity check, besides kSuccess and kCancelled.
enum ContinuityCode : std::int32_t {
  kContinuityNoFile = 1001,
  kContinuityNoBaseInfo = 1002,
  kContinuityNoTimecodeInfo = 1003,
  kContinuityNoAudioInfo = 1004,
  kContinuityNoMemory =
      1005,  // memory for the timecode words is out, or there are no index entries
  kContinuityNoMapping = 1006,   // the file has become empty, and the method is kMemoryMapping
  kContinuityNoView = 1007,      // never returned: the check reads the clip, whatever the method
  kContinuityNoCounts = 1008,    // memory for the counts or for the list of breaks is out
  kContinuityBreaks = 1009,      // at least one break
  kContinuityUnreadable = 1010,  // the file cannot be read
};

// Reads the timecode word in the system element of every frame of the open `file` (SMPTE 331),
// which `mxf` describes completely, and compares each timecode with the timecode of the frame
// before. Where each timecode stands in two frames (always on base 60, in some clips on base 50),
// compares only every second frame, with the frame two before. Puts every break into the list
// behind `timecode->errorList`, in the order of the frames, and their number into `errorCount`.
// Frees the breaks of an earlier check first. A compared word that is no timecode, or lies behind
// the end of the file, makes a break. A clip whose timecode base is unknown is not read.
//
// Clears `stopRequest` at the start, and writes `progressTotal` and `progressFrame` for the thread
// that shows the progress. A `stopRequest` of 1 stops the check before the next word is read.
// The stop request of `file` takes effect when the loop over the words has ended.
//
// Returns kSuccess when there is no break or the timecode base is unknown; kContinuityBreaks;
// kCancelled, with an empty list and `stopRequest` cleared; or another ContinuityCode. Throws
// nothing.
std::int32_t CheckTimecodeContinuity(platform::File* file, MXF_BASE_INFO* mxf);

// Frees the breaks behind the head node `timecode->errorList` and sets `errorCount` to 0.
void FreeTimecodeErrors(MXF_TIMECODE_INFO* timecode);

}  // namespace quorvan
