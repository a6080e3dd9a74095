// A copy of a clip in the form that the readers of this program follow: metadata with four-byte
// lengths, one KAG for each partition pack, room behind the sets. The essence stays what it is.

#pragma once

#include <cstdint>
#include <string>

#include "state/job_progress.h"

namespace quorvan {

struct ConformResult {
  bool done = false;
  bool cancelled = false;
  std::string reason;               // English, UTF-8; empty when done
  std::int32_t analysisCode = 0;    // result of the analysis that refused the copy, else 0
  std::uint32_t processCode = 0;    // stage at which it did
  bool hasAudioDescriptor = false;  // as LoadFailureMessage wants it
};

// Writes a conformed copy of the clip at `in` to `out`, which must not exist. The copy grows under
// a name of its own beside `out`, is brought onto the medium, and takes the name `out` only when
// the analysis accepts it and its index leads to its frames; otherwise it is removed again. `in` is
// only read. A file that no reader refuses is copied as well. `progress` counts the bytes of the
// copy. Throws nothing.
ConformResult ConformClip(const std::u16string& in, const std::u16string& out,
                          JobProgress* progress);

}  // namespace quorvan
