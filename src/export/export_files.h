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

  // Frames that are taken at a time.
  static constexpr std::uint32_t kMostFrames = 64;

  // Takes the samples that come next in the file of the plan's `n`-th track, up to kMostFrames
  // times between two calls of WriteTaken. They must stay where they are until then.
  void Take(std::uint32_t n, std::span<const std::uint8_t> samples) {
    Taken& taken = taken_[n];
    taken.pieces[taken.count++] = samples;
  }

  // Appends what was taken to the files, in one write each. Without success some of it may be
  // written.
  platform::WriteResult WriteTaken();

  // Closes all files. False when the system tells only now that one of them is not whole.
  bool Close();

 private:
  // Of one file: its end, and what is to come behind it.
  struct Taken {
    std::uint64_t end = 0;
    std::uint32_t count = 0;
    std::array<std::span<const std::uint8_t>, kMostFrames> pieces;
  };

  std::array<platform::File, kMaxTracks> files_;
  std::array<Taken, kMaxTracks> taken_;
};

}  // namespace quorvan
