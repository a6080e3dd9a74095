// The export engine for the method "Memory Mapping".

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Besides the stage's code plus a JobFault.
enum ExportMappedCode : std::int32_t {
  kExportNoClip = 4006,
  kExportNoClipMapping = 4007,
  kExportNoFile = 4008,  // a new file cannot be made
  kExportNoView = 4009,
};

// Writes each track of the clip at `path` whose exportSwitch is ON, from the exportIn to the
// exportOut frame of `tracks`, both included, into a new mono BWF file in exportFolder, RF64 where
// it has to be. `mxf` holds the analysis of that clip, which is only read. A name that is taken
// gets a number; no file that exists is changed. Writes `totalFrames` and, from 0 on, the number of
// the frame at work to `currentFrame`, and stops behind the frame during which `cancel` becomes 1.
//
// Before the first file is made, every value is proven to be the one of its track in its frame,
// with exactly its frame's samples. Each file, and the folder with its name, is on the medium
// before the export is done, unless `noFlush` is 1.
//
// Returns 0; kCancelled; or a failure: `fault` tells which frame or file was at fault. Up to 4007
// no file was made. New files stay afterwards, as far as they were written: shorter than their
// headers say when the result is not 0. Throws nothing.
std::int32_t ExportMapped(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
