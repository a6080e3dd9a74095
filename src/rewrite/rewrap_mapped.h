// The rewrite engine for the method "Memory Mapping".

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Results of RewrapMapped, besides kStageRewrapMapped plus a JobFault.
enum RewrapMappedCode : std::int32_t {
  kRewrapNoClip = 2006,         // the clip cannot be opened for a rewrite
  kRewrapNoClipMapping = 2007,  // the clip cannot be mapped
  kRewrapNoWav = 2008,          // a source file cannot be opened
  kRewrapNoWavMapping = 2009,   // a source file cannot be mapped
  kRewrapNoSilence = 2010,      // no memory for a frame of silence
  // No memory for one frame of every track. Also when a track gets a source file and the audio of
  // one track in the longest index table segment needs more than 2^31 - 1 bytes.
  kRewrapNoTrackBuffer = 2011,
  kRewrapNoView = 2012,  // no view of the clip can be made
};

// Overwrites the audio of the clip at `path` on the tracks that are ON, from the frame `inFrame` to
// the frame `outFrame` of `tracks`, both included. Each track gets the samples of its source file,
// or silence (state/track_plan.h). Then gives the clip new UMIDs (SMPTE 330M). `mxf` holds the
// analysis of the clip; the UMIDs and dates in `mxf` are renewed together with those in the clip.
//
// Proves everything before it writes the first byte. The index ascends from frame to frame without
// a gap. In each frame of the range a walk over the frame's own keys and lengths leads to the audio
// elements that the index gives, and each of them holds exactly the samples of its frame. The clip
// still has its size and its UMIDs. Each source file is the file that was added, and holds the
// audio that it claims. Unless `noFlush` of `tracks` is 1, the audio is on the medium before the
// UMIDs are renewed, and the UMIDs are on the medium before the job is done. The times of the last
// access and the last write of the clip become the time at which the last frame was written.
//
// Writes `totalFrames`, `currentFrame` and `phase` of `tracks` for the front end, and clears
// `cancel` when the job is prepared. When `cancel` becomes 1 later, the job stops behind the frame
// that it is proving or writing, or behind the flush of the audio.
//
// Returns 0 when the job is done. Returns kDoneWithNotice when the job is done but not all UMIDs
// and their dates are renewed; `umidState` tells what the clip holds. Returns kCancelled when the
// job was stopped: the frames written before the stop keep the new audio, and the UMIDs are the old
// UMIDs (a stop during the proof leaves the clip unchanged). Refuses a clip
// with 64-byte UMIDs with kUmidTooLong, unless `keepUmids` is 1. Every other result is a failure:
// `fault` tells into how many frames, from IN on, the job has written, and the frame or file at
// fault. Throws nothing.
std::int32_t RewrapMapped(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
