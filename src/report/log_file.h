// A text file that appears whole or not at all.

#pragma once

#include <string>
#include <string_view>

#include "platform/file.h"
#include "state/app_state_info.h"

namespace quorvan {

// Writes a log file. The text goes into a temporary file in the folder of the log's path; Finish
// gives this file the log's name and so replaces an earlier log. When a link has the log's name,
// the link is replaced and the file to which it leads stays as it is. In a folder in which no file
// can be created, an earlier log with no other name is overwritten in place.
//
// A log never replaces the clip of `app`, a file of its library, or any file that begins as MXF,
// RIFF or FORM.
//
// The constructor and Write throw std::bad_alloc when memory is out. A log that is destroyed before
// Finish leaves no temporary file behind.
class LogFile {
 public:
  // Opens the temporary file, or in place the earlier log, for a log at `path`. A log that cannot
  // be written shows in the result of Finish.
  LogFile(std::u16string path, const APP_STATE_INFO& app);
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;
  ~LogFile();

  // Appends UTF-8 text to the log, which holds the text in the encoding of the system.
  void Write(std::string_view text);

  // Writes the rest of the text, waits until the log is on the medium, and gives the log its name.
  // False when anything has failed since the constructor: then there is no new log and no temporary
  // file, but a log that was overwritten in place may hold a part of the text. A failure to bring
  // the folder with the new name onto the medium does not count.
  bool Finish();

  // The system's error number for what has failed. Valid only after Finish has returned false.
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
