// The export engine for the method "Generic File I/O".

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Besides the stage's code plus a JobFault.
enum ExportFileIoCode : std::int32_t {
  kFileExportNoBlock = 5006,
  kFileExportNoClip = 5007,
  kFileExportNoFile = 5008,  // a new file cannot be made
};

// The twin of ExportMapped, by plain reads: it makes the same files, but for cbSize of the fmt
// chunk. It reads the audio of a frame in one go, and as many frames before it writes as the buffer
// duration of wavBufferIndex says at most.
//
// Ends in the same ways, with the same left behind as by the twin.
std::int32_t ExportFileIo(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
