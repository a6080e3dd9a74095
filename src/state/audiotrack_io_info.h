// Through this record the front ends and the engines exchange tracks, ranges, progress and the
// cancel request of a job.

#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "mxf/records.h"
#include "platform/file.h"
#include "state/job_fault.h"

namespace quorvan {

struct WAV_FILE_INFO;

enum TrackSwitch : std::uint8_t { kSwitchOff = 0, kSwitchOn = 1, kNoSuchTrack = 2 };

// Index of the write buffer's duration that a new program starts with.
inline constexpr std::uint32_t kDefaultWavBufferIndex = 4;

// Added to the first track of a multichannel file to make its wavGroup.
inline constexpr std::uint32_t kWavGroupBase = 100;

// A frame count in both slots: [0] plain, [1] one hour on. CountedSlot tells which of them counts.
using FramePoint = std::array<std::int32_t, 2>;

// The front end writes the fields before a job. While a job runs, its thread alone reads and writes
// them, except for the atomic words: the job writes `currentFrame`, `totalFrames` and `phase` for
// the front end to show, and the front end sets `cancel`, which the job clears.
struct AUDIOTRACK_IO_INFO {
  std::array<WAV_FILE_INFO*, kMaxTracks> wav;         // null when none; not owned
  std::array<platform::File, kMaxTracks> wavHandle;   // source files of the running engine
  std::uint32_t wavBufferIndex;                       // 0 to 13
  std::uint32_t exportCount;                          // exports started since the program began
  std::array<std::uint8_t, kMaxTracks> rewrapSwitch;  // TrackSwitch
  std::array<std::uint8_t, kMaxTracks> exportSwitch;  // TrackSwitch
  std::array<std::uint32_t, kMaxTracks> wavGroup;     // 0, or first track + kWavGroupBase
  std::array<std::uint8_t, kMaxTracks> wavChannel;    // channel of the file on this track, from 0
  FramePoint inFrame;                                 // first frame of the rewrite
  FramePoint outFrame;                                // last frame of the rewrite, inclusive
  FramePoint exportIn;
  FramePoint exportOut;
  FramePoint loudnessIn;
  FramePoint loudnessOut;
  char16_t exportFolder[1024];
  char16_t exportName[256];
  std::atomic<std::uint32_t> currentFrame;  // frames done by the running job
  std::atomic<std::uint32_t> totalFrames;   // frames of the running job
  std::atomic<std::uint32_t> cancel;        // 1 asks the running job to stop
  std::atomic<std::uint32_t> phase;         // JobPhase of the running job
  std::uint8_t keepUmids;                   // 1 lets a rewrite leave 64-byte UMIDs as they are
  std::uint8_t noFlush;                     // 1 lets a job end before its bytes are on the medium
  UmidState umidState;                      // behind a rewrite
  JOB_FAULT_INFO fault;                     // behind a job
};

// Forgets what the job before has left: phase, UMID state and fault. Every engine begins with it.
inline void BeginJob(AUDIOTRACK_IO_INFO* tracks) {
  tracks->phase = kPhaseProving;
  tracks->umidState = kUmidsRenewed;
  tracks->fault = {};
}

}  // namespace quorvan
