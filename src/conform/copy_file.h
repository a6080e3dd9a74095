// Writes a conformed copy as its plan says, and reads it back.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "conform/layout.h"
#include "platform/file.h"
#include "state/job_progress.h"

namespace quorvan {

// The file of a copy, under a temporary name until TakeName renames it. The destructor removes the
// file unless TakeName has succeeded.
class UnfinishedCopy {
 public:
  UnfinishedCopy(const UnfinishedCopy&) = delete;
  UnfinishedCopy& operator=(const UnfinishedCopy&) = delete;

  // Creates the file in the folder of `out`; file() is not open when that fails. Throws
  // std::bad_alloc.
  explicit UnfinishedCopy(const std::u16string& out);
  ~UnfinishedCopy();

  platform::File& file() { return file_; }

  // Closes the copy, renames it to `out` and brings the folder with the name onto the medium. False
  // when one of these steps fails; the destructor then removes the file. Throws std::bad_alloc.
  bool TakeName(const std::u16string& out);

 private:
  std::u16string path_;
  platform::File file_;
  bool exists_ = false;
};

enum class CopyEnd : std::uint8_t { kDone, kStopped, kUnreadable, kUnwritable };

// Writes all parts of the copy but the essence to the empty file `out`, each part at its place.
// Returns kDone, kStopped or kUnwritable. Throws std::bad_alloc.
CopyEnd WriteSkeleton(const CopyPlan& plan, platform::File* out);

// Writes the copy of the clip `in` to `out` from the first byte to the last, brings it onto the
// medium and reads its essence back. kUnwritable also when the bytes that come back are others.
// Counts in `progress` the bytes that are written and those that are read back. Throws
// std::bad_alloc.
CopyEnd WriteCopy(const CopyPlan& plan, const platform::File& in, platform::File* out,
                  JobProgress* progress);

}  // namespace quorvan
