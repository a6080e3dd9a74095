// A copy of a clip in the form that the readers of this program follow: metadata with four-byte
// lengths, one KAG for each partition pack, room behind the sets. The essence stays what it is.

#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace quorvan {

// Shared with the thread that watches the copy; `cancel` is written by that one, the rest by the
// copy.
struct ConformProgress {
  std::atomic<std::uint64_t> bytesDone{0};   // bytes of the copy that are written
  std::atomic<std::uint64_t> bytesTotal{0};  // size of the copy; 0 until it is known
  std::atomic<std::uint32_t> cancel{0};      // 1 asks the copy to stop
};

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
// only read. A file that no reader refuses is copied as well. Throws nothing.
ConformResult ConformClip(const std::u16string& in, const std::u16string& out,
                          ConformProgress* progress);

}  // namespace quorvan
