// The new files of one export.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "export/bwf_header.h"
#include "export/export_plan.h"
#include "platform/file.h"
#include "state/audiotrack_io_info.h"

namespace quorvan {

// Makes the file of `track` (from 0) in exportFolder: exportName and the track's number from 1, and
// where that name is taken a further number behind it, from exportCount up to the first that is
// free. No file that exists is ever opened. A file that is not open when there can be none.
platform::File CreateExportFile(const AUDIOTRACK_IO_INFO& tracks, std::uint32_t track);

// One file a track, open until the end of the export. What was written stays, whatever happens.
class ExportFiles {
 public:
  // Makes the files of all tracks of `plan`, in their order, each with `header`. False when one
  // cannot be made or written.
  bool Create(const ExportPlan& plan, const AUDIOTRACK_IO_INFO& tracks, const BwfHeader& header);

  // Appends `samples` to the file of the plan's `n`-th track. False when they could not be written.
  bool Append(std::uint32_t n, std::span<const std::uint8_t> samples) {
    return files_[n].Write(samples.data(), samples.size());
  }

  // Closes all files. False when the system tells only now that one of them is not whole.
  bool Close();

 private:
  std::array<platform::File, kMaxTracks> files_;
};

}  // namespace quorvan
