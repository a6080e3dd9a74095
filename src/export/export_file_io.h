// The export engine for the method "Generic File I/O".

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

enum ExportFileIoCode : std::int32_t {
  kFileExportNoPath = 5001,
  kFileExportNoTracks = 5002,
  kFileExportUnfit = 5003,  // no records, or records that do not fit the clip
  kFileExportUnknownRate = 5004,
  kFileExportBadRange = 5005,
  kFileExportNoBlock = 5006,
  kFileExportNoClip = 5007,  // cannot be opened, or not be read any more
  kFileExportNoFile = 5008,  // a new file cannot be made or written
};

// The twin of ExportMapped, by plain reads: it makes the same files, but for cbSize of the fmt
// chunk. It reads the audio of a frame in one go, and as many frames before it writes as the buffer
// duration of wavBufferIndex says at most.
//
// Returns 0; kCancelled; or an ExportFileIoCode, with the same left behind as by the twin.
std::int32_t ExportFileIo(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
