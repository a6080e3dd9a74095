// The functions of two threads: the worker, which runs analyses, rewrites, exports and
// measurements, and the thread that shows the stages of an analysis.

#pragma once

#include <cstddef>

#include "state/app_state_info.h"

namespace quorvan {

// Characters of text for which a front end allocates memory before it starts a job, because
// memory may be out when the job ends. Every message of a job, with the path of its file, is
// shorter.
inline constexpr std::size_t kMostReportChars = 8192;

// Runs the job that `app` describes by jobKind, useFileIo, mxfPath, tracks and, for an analysis,
// the open mxfFile. Sets jobStartTime and `mxf->processCode`. Throws nothing.
//
// Every job ends with exactly one message, JOB_MSG_DONE or JOB_MSG_FAILED, with the text for the
// operator. An analysis sends JOB_MSG_PHASE between its readers and the continuity check, even when
// noTimecodeCheck leaves the check out. The messages go to `ui.progressDialog`, which must be set
// before, is called on this thread and must not throw. The last message is the last thing that the
// thread does.
//
// A job stops when `tracks->cancel` becomes 1; an analysis stops, in any stage, when
// `mxf->timecode->stopRequest` becomes 1.
void WorkerThread(APP_STATE_INFO* app);

// Calls `ui.stageTextControl` with the text of the running stage of an analysis, at the start and
// whenever the stage changes, until `stageThreadStop` is 1. The caller, not this function, clears
// the flag, before it starts the thread: the end of a short analysis may set the flag before the
// thread has begun to run.
void StageTextThread(APP_STATE_INFO* app);

}  // namespace quorvan
