// The timecode that every frame carries, checked from frame to frame.

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "platform/file.h"

namespace quorvan {

enum ContinuityCode : std::int32_t {
  kContinuityNoFile = 1001,
  kContinuityNoBaseInfo = 1002,
  kContinuityNoTimecodeInfo = 1003,
  kContinuityNoAudioInfo = 1004,
  kContinuityNoMemory = 1005,   // nor index entries
  kContinuityNoMapping = 1006,  // the file has become empty
  kContinuityNoView = 1007,     // not in use: the clip is read, whatever the method
  kContinuityNoCounts = 1008,
  kContinuityBreaks = 1009,
  kContinuityUnreadable = 1010,  // the file cannot be read
};

// Reads the timecode word of every frame of the analysed, open `file` (SMPTE 331) and compares it
// with that of the frame before. Every break stands afterwards in the list of
// `timecode->errorList`, in the order of the frames, and `errorCount` tells how many; breaks of an
// earlier check are freed first. Writes `progressTotal` and `progressFrame` for those who watch,
// and stops at the next frame when `stopRequest` becomes 1, and behind the reading when the stop
// request of `file` comes. A word behind the file's end is a break. A clip whose timecode base is
// unknown is not compared.
//
// Returns 0 when there is no break; kContinuityBreaks; kCancelled; or another ContinuityCode.
std::int32_t CheckTimecodeContinuity(platform::File* file, MXF_BASE_INFO* mxf);

// Frees the breaks behind the head node and sets errorCount to 0.
void FreeTimecodeErrors(MXF_TIMECODE_INFO* timecode);

}  // namespace quorvan
