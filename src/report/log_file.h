// A text file that appears whole or not at all.

#pragma once

#include <string>
#include <string_view>

#include "platform/file.h"
#include "state/app_state_info.h"

namespace quorvan {

// Collects text under a name of its own in the folder of its path, and gets its name at the end. A
// file that has the name gives way then; one that it only leads to, as a link, stays what it is. In
// a folder that may not be written to, a log that stands there already, under no other name, is
// overwritten in place.
//
// A log never takes the place of the clip of `app`, of a file of its library, or of any file that
// begins as MXF or RIFF.
class LogFile {
 public:
  // `path` is where the log is to stand.
  LogFile(std::u16string path, const APP_STATE_INFO& app);
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;
  ~LogFile();

  // Appends UTF-8 text.
  void Write(std::string_view text);

  // Brings the log to its place and onto the medium. False when anything went wrong since the
  // start; then nothing is left behind, but for what was written of a log in place, and a log whose
  // folder could not be brought onto the medium.
  bool Finish();

  // The system's number of what went wrong.
  std::uint32_t error() const { return error_; }

 private:
  void OpenTemporary();
  bool TakePlace();
  bool EndInPlace();
  void Fail();
  void Flush();

  std::u16string path_;
  std::u16string temporaryPath_;
  platform::File file_;
  bool inPlace_ = false;
  std::string pending_;
  bool failed_ = false;
  std::uint32_t error_ = 0;
};

}  // namespace quorvan
