// The functions through which a running job reports to the front end that started it.

#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace quorvan {

enum JobMessage : std::uint32_t {
  JOB_MSG_DONE = 0x8006,    // the job has ended well
  JOB_MSG_FAILED = 0x8007,  // the job failed or was cancelled
  // The analysis sequence has ended well; the continuity check follows, unless it is switched off.
  JOB_MSG_PHASE = 0x800C,
};

// A message of a running job to its front end. Texts are zero terminated and live only during the
// call.
struct JobReport {
  JobMessage message;
  std::int32_t result;  // of the engine or the analysis
  // A fixed text when the job is done; the job's title when the job failed, was cancelled, or is
  // done with a notice. Empty or null for an analysis.
  const char16_t* caption;
  const char16_t* text;  // for the operator; empty or null where there is nothing to say
};

// The functions that a front end sets before it starts a job. They must not throw. The job's
// threads call them and wait until they return; a front end that shows messages on its own thread
// hands them over to that thread itself.
struct UI_HANDLES {
  // Takes the messages of a job.
  std::function<void(const JobReport&)> progressDialog;
  // Takes the text for the stage of a running analysis. The text lives as long as the program.
  std::function<void(std::u16string_view)> stageTextControl;
};

}  // namespace quorvan
