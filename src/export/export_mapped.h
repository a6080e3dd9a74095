// The export engine for the method "Memory Mapping".

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Results of ExportMapped, besides kStageExportMapped plus a JobFault.
enum ExportMappedCode : std::int32_t {
  kExportNoClip = 4006,         // the clip cannot be opened
  kExportNoClipMapping = 4007,  // the clip cannot be mapped
  kExportNoFile = 4008,         // a new file cannot be made
  kExportNoView = 4009,         // no view of the clip can be made
};

// Exports tracks of the clip at `path`. Each track whose exportSwitch is ON goes, from the frame
// `exportIn` to the frame `exportOut` of `tracks`, both included, into a new mono BWF file (EBU
// Tech 3285) in exportFolder, or an RF64 file (EBU Tech 3306) when BWF cannot hold its audio. A
// file whose name is taken gets a further number; no file that exists is changed. `mxf` holds the
// analysis of the clip. The clip and `mxf` are only read.
//
// Before it makes the first file, the job proves for every frame of the range that the frame's own
// keys and lengths lead to the audio elements that the index gives, each with exactly the samples
// of its frame. Unless `noFlush` of `tracks` is 1, each file, and the folder with its name, is on
// the medium before the job is done.
//
// Writes `totalFrames` and `phase` of `tracks` for the front end, and to `currentFrame` the number,
// from 0, of the frame that was taken last. Clears `cancel` when the clip is open. When `cancel`
// becomes 1 later, the job stops behind the frame at work, or behind the file that it is flushing.
//
// Returns 0 when the job is done, kCancelled when it was stopped, else a failure; `fault` then
// names the frame or file at fault. A failure with a number up to kExportNoClipMapping comes before
// the first file is made. New files stay after a stop or a failure, as far as they were written,
// and may be shorter than their headers say. Throws nothing.
std::int32_t ExportMapped(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
