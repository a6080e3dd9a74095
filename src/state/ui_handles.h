// How a running job reaches the front end that started it.

#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace quorvan {

enum JobMessage : std::uint32_t {
  JOB_MSG_DONE = 0x8006,    // the job has ended well
  JOB_MSG_FAILED = 0x8007,  // it failed or was cancelled
  JOB_MSG_PHASE = 0x800C,   // the analysis sequence has ended well, the continuity check starts
};

// One message. Texts are zero terminated and live only during the call.
struct JobReport {
  JobMessage message;
  std::int32_t result;      // of the engine or the analysis
  const char16_t* caption;  // done: a fixed text, empty for an analysis; failed: the job's title
  const char16_t* text;     // for the operator; empty or null where there is nothing to say
};

// What a front end hands over before it starts a job. Both are called on the job's threads, which
// wait until the call returns; a front end that works on its own thread passes the message on
// itself.
struct UI_HANDLES {
  std::function<void(const JobReport&)> progressDialog;
  // What an analysis is doing. The text lives as long as the program.
  std::function<void(std::u16string_view)> stageTextControl;
};

}  // namespace quorvan
