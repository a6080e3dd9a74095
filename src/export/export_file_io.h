// The export engine for the method "Generic File I/O".

#pragma once

#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Results of ExportFileIo, besides kStageExportFileIo plus a JobFault.
enum ExportFileIoCode : std::int32_t {
  kFileExportNoBlock = 5006,  // no memory for a block, or wavBufferIndex gives no valid block size
  kFileExportNoClip = 5007,   // the clip cannot be opened
  kFileExportNoFile = 5008,   // a new file cannot be made
};

// Exports as ExportMapped does, but reads the clip with plain file access. It takes the same
// arguments, makes the same files except for cbSize of the fmt chunk, and returns the same results,
// with ExportFileIoCode in place of ExportMappedCode and kStageExportFileIo in place of
// kStageExportMapped. A failure with a number up to kFileExportNoClip comes before the first file
// is made. Throws nothing.
//
// A row is the audio elements of one frame in file order; the job reads each row in one go. It
// writes to the new files after every block of rows. A block is as many rows as stay in the
// processor's cache, at most ExportFiles::kMostFrames, and at most the buffer duration that
// `wavBufferIndex` of `tracks` picks (state/wav_buffer.h).
std::int32_t ExportFileIo(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf);

}  // namespace quorvan
