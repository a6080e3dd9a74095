// Copies a clip into the layout that the readers of this program can follow: metadata with
// four-byte lengths, each partition pack filled up to one KAG (the unit on which partitions are
// aligned), and fill behind the metadata sets (SMPTE 377). The essence is copied byte for byte.

#pragma once

#include <cstdint>
#include <string>

#include "state/job_progress.h"

namespace quorvan {

struct ConformResult {
  bool done = false;
  bool cancelled = false;
  std::string reason;               // English, UTF-8; empty when done
  std::int32_t analysisCode = 0;    // result of the analysis when it refused the copy, else 0
  std::uint32_t processCode = 0;    // stage that refused the copy
  bool hasAudioDescriptor = false;  // of the refused copy, for LoadFailureMessage
};

// Writes a conformed copy of the clip at `in` to `out`, which must not exist. Writes the copy under
// another name in the folder of `out` and brings it onto the medium. Renames the copy to `out` only
// when the analysis accepts the copy and its index leads to its frames; otherwise removes the copy.
// `in` is only read. A clip that the readers already accept is copied too. `progress` counts the
// bytes of the copy, and its `cancel` stops the copy; `progress` must not be null. Throws nothing.
ConformResult ConformClip(const std::u16string& in, const std::u16string& out,
                          JobProgress* progress);

}  // namespace quorvan
