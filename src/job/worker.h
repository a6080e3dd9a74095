// The thread on which every long operation runs, and the one that names its stage.

#pragma once

#include <cstddef>

#include "state/app_state_info.h"

namespace quorvan {

// Characters that a listener keeps memory for before the job starts, since none may be left at its
// end: the longest message, the path of its file included, is shorter.
inline constexpr std::size_t kMostReportChars = 8192;

// Runs the job that `app` describes by jobKind, useFileIo, mxfPath, tracks and, for an analysis,
// the open mxfFile. An analysis that passes sends JOB_MSG_PHASE; every job ends with exactly one
// JOB_MSG_DONE or JOB_MSG_FAILED, with the text for the operator. The messages go to
// `ui.progressDialog`, which must be set before, is called on this thread and must not throw; the
// last message is the thread's last act.
//
// A job is stopped by `tracks->cancel`, an analysis, in any stage, by
// `mxf->timecode->stopRequest`.
void WorkerThread(APP_STATE_INFO* app);

// Until `stageThreadStop` is 1, hands the text of the running analysis stage to
// `ui.stageTextControl` whenever it changes. The flag is cleared before the thread is started: the
// end of a short analysis could set it before the thread has come to run.
void StageTextThread(APP_STATE_INFO* app);

}  // namespace quorvan
