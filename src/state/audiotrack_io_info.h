// The record through which the front ends and the engines exchange tracks, ranges, progress and the
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

// The wavBufferIndex of a program that has just started.
inline constexpr std::uint32_t kDefaultWavBufferIndex = 4;

// Added to the first track (from 0) of a multichannel file to make the wavGroup of the file's
// tracks, so that 0 can stand for a track without a group.
inline constexpr std::uint32_t kWavGroupBase = 100;

// A frame of the clip as two real counts (frames from 00:00:00:00): [0] is the plain count, [1] the
// count one hour on, wrapped at midnight, when the clip starts in hour 23, else the plain count
// again. CountedSlot tells which of the two a job works with.
using FramePoint = std::array<std::int32_t, 2>;

// Before a job, the front end writes the fields and PrepareJob sets the atomic words. While a job
// runs, the job's thread alone writes `wavHandle`, `umidState`, `fault`, and the atomic words
// `currentFrame`, `totalFrames`, `phase` and `provenFrames`, which the front end shows. The front
// end sets `cancel`; the job clears `cancel` when the job starts and when it stops.
struct AUDIOTRACK_IO_INFO {
  std::array<WAV_FILE_INFO*, kMaxTracks> wav;  // library entry; null without a file; not owned
  std::array<platform::File, kMaxTracks> wavHandle;   // source files of the running engine
  std::uint32_t wavBufferIndex;                       // of kWavBufferRows, 0 to 13
  std::uint32_t exportCount;                          // exports started since the program began
  std::array<std::uint8_t, kMaxTracks> rewrapSwitch;  // TrackSwitch
  std::array<std::uint8_t, kMaxTracks> exportSwitch;  // TrackSwitch
  std::array<std::uint32_t, kMaxTracks> wavGroup;     // first track + kWavGroupBase, or 0
  std::array<std::uint8_t, kMaxTracks> wavChannel;    // channel of `wav` on this track, from 0
  FramePoint inFrame;                                 // first frame of the rewrite
  FramePoint outFrame;                                // last frame of the rewrite, inclusive
  FramePoint exportIn;                                // first frame of the export
  FramePoint exportOut;                               // last frame of the export, inclusive
  FramePoint loudnessIn;                              // first frame of the measurement
  FramePoint loudnessOut;                             // last frame of the measurement, inclusive
  char16_t exportFolder[1024];
  char16_t exportName[256];  // beginning of the new files' names
  // Number of frames that the running job has done. An export instead writes the number (from 0) of
  // the frame that was done last.
  std::atomic<std::uint32_t> currentFrame;
  std::atomic<std::uint32_t> totalFrames;   // frames of the running job
  std::atomic<std::uint32_t> cancel;        // 1 asks the running job to stop
  std::atomic<std::uint32_t> phase;         // JobPhase of the running job
  std::atomic<std::uint32_t> provenFrames;  // frames proven before the first write
  std::uint8_t keepUmids;                   // 1 lets a rewrite leave 64-byte UMIDs as they are
  std::uint8_t noFlush;                     // 1 lets a job end before its bytes are on the medium
  UmidState umidState;                      // what a rewrite has made of the UMIDs
  JOB_FAULT_INFO fault;                     // what the last job tells besides its result
};

// Resets what the last job has left: phase, proven frames, UMID state and fault. Every engine calls
// this function first.
inline void BeginJob(AUDIOTRACK_IO_INFO* tracks) {
  tracks->phase = kPhaseProving;
  tracks->provenFrames = 0;
  tracks->umidState = kUmidsRenewed;
  tracks->fault = {};
}

}  // namespace quorvan
