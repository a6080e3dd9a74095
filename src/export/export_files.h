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
// free. No file that exists is ever opened. A file that is not open when there can be none. `*path`
// is the path that was tried last.
platform::File CreateExportFile(const AUDIOTRACK_IO_INFO& tracks, std::uint32_t track,
                                std::u16string* path);

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

  // Appends what was taken to the files, in one write each: kNoFault; kTargetFault when a file
  // cannot be written, kClipFault when the samples' storage fails. Without success some of it may
  // be written.
  JobFault WriteTaken();

  // Brings all files, and the folder with their names, onto the medium, file by file, and closes
  // them. Leaves off between two files when `cancel` becomes 1, and does not clear it. kNoFault,
  // kNotFlushed or kTargetFault; with `noFlush` of `tracks` only closes.
  JobFault Finish(AUDIOTRACK_IO_INFO* tracks);

  // Path of the file at fault; empty while all is well.
  const std::u16string& pathAtFault() const { return pathAtFault_; }

 private:
  // Of one file: its end, and what is to come behind it.
  struct Taken {
    std::uint64_t end = 0;
    std::u16string path;
    std::uint32_t count = 0;
    std::array<std::span<const std::uint8_t>, kMostFrames> pieces;
  };

  JobFault FaultOf(std::size_t n, JobFault fault);

  std::array<platform::File, kMaxTracks> files_;
  std::array<Taken, kMaxTracks> taken_;
  std::u16string pathAtFault_;
};

}  // namespace quorvan
