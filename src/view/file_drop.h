// What becomes of files that are dropped on the window.

#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quorvan {

struct DropDecision {
  std::vector<std::u16string> wavFiles;  // to be added to the library, in order
  std::optional<std::u16string> load;    // the MXF file to be loaded
  bool refuseMxf = false;                // one was dropped although one is loaded
};

// With a file loaded, WAV and BWF files are taken and an MXF file is refused. With none, an MXF
// file is loaded if no further file behind it makes the wish unclear. Files with an extension of
// more than three letters do not count.
DropDecision DecideDrop(std::span<const std::u16string> paths, bool loaded);

}  // namespace quorvan
