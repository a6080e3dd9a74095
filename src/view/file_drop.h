// Decides what happens to files that are dropped on the window.

#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quorvan {

struct DropDecision {
  std::vector<std::u16string> wavFiles;  // to add to the library, in the order of the drop
  std::optional<std::u16string> load;    // MXF file to load
  bool refuseMxf = false;                // an MXF file was dropped while a clip is loaded
};

// Decides on the dropped files at `paths`; `loaded` is true while a clip is loaded. Extensions
// count without regard to case, and a file whose extension has more than three letters is ignored.
// While a clip is loaded, WAV and BWF files are taken and an MXF file is refused. Otherwise an MXF
// file is loaded when it is the only MXF file and the last of all files that are not ignored; with
// a file behind it, it is unclear what the operator wants, and nothing is loaded.
DropDecision DecideDrop(std::span<const std::u16string> paths, bool loaded);

}  // namespace quorvan
