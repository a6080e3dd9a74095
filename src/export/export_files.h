// The new files of one export: how they are named, written and closed.

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

// Creates the file of `track` (zero-based) in exportFolder. Its name is exportName, the track's
// number from 1, and ".wav". When the name is taken, a space and a second number follow the first:
// exportCount, or the next number whose name is free. Never opens a file that exists. Returns the
// open file, and its path in `*path`. Returns a file that is not open, and the path that was tried
// last, if any, when exportFolder is empty, when the path has more than 1023 characters, when
// 100000 names are taken, or when the system refuses. Throws std::bad_alloc.
platform::File CreateExportFile(const AUDIOTRACK_IO_INFO& tracks, std::uint32_t track,
                                std::u16string* path);

// The new files, one for each track of the plan, open until the end of the export. The files stay,
// as far as they were written, also when the export fails. Create, WriteTaken and Finish may throw
// std::bad_alloc.
class ExportFiles {
 public:
  // Creates the files of all tracks of `plan`, in the order of the tracks, and writes `header` to
  // each. Returns false when a file cannot be created or written. Throws std::bad_alloc.
  bool Create(const ExportPlan& plan, const AUDIOTRACK_IO_INFO& tracks, const BwfHeader& header);

  // Most frames between two calls of WriteTaken.
  static constexpr std::uint32_t kMostFrames = 64;

  // Remembers `samples` as the next bytes of the file of the plan's `n`-th track (zero-based). Call
  // it at most kMostFrames times for each track between two calls of WriteTaken. The bytes must
  // stay where they are until WriteTaken. They may lie in a mapped view.
  void Take(std::uint32_t n, std::span<const std::uint8_t> samples) {
    Taken& taken = taken_[n];
    taken.pieces[taken.count++] = samples;
  }

  // Appends all bytes that were taken to their files, with one gathered write for each file.
  // Returns kNoFault; kTargetFault when a file cannot be written; or kClipFault when the storage of
  // the view that holds the samples fails. After a fault some of the bytes may have been written.
  JobFault WriteTaken();

  // Ends the export: flushes and closes file after file, then flushes the folder that holds their
  // names. With `noFlush` of `tracks` only closes the files. Returns kNoFault; kNotFlushed when a
  // file or the folder cannot be flushed; or kTargetFault when closing reports that written data is
  // lost. When `cancel` is 1, returns kNoFault in front of the next file and leaves `cancel` set.
  JobFault Finish(AUDIOTRACK_IO_INFO* tracks);

  // Path of the new file at fault; empty when there is none.
  const std::u16string& pathAtFault() const { return pathAtFault_; }

 private:
  // The end of one file and the pieces that WriteTaken has to append.
  struct Taken {
    std::uint64_t end = 0;  // bytes written
    std::u16string path;
    std::uint32_t count = 0;  // valid entries of pieces
    std::array<std::span<const std::uint8_t>, kMostFrames> pieces;
  };

  JobFault FaultOf(std::size_t n, JobFault fault);

  std::array<platform::File, kMaxTracks> files_;
  std::array<Taken, kMaxTracks> taken_;
  std::u16string pathAtFault_;
};

}  // namespace quorvan
