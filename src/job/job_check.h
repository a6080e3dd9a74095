// What a face asks before it starts a job.

#pragma once

#include <cstdint>

#include "state/app_state_info.h"

namespace quorvan {

// The result with which the job that `app` describes by jobKind and useFileIo would refuse its
// arguments before it opens anything: no track ON, a range outside the clip, a clip without a
// range. 0 when it would not. A range of no frame at all, which the engines allow, is refused here.
std::int32_t CheckJob(const APP_STATE_INFO& app);

// True when a rewrite of the loaded clip would leave its UMIDs as they are, since they are not 32
// bytes long: the operator is asked first, and a Yes becomes `keepUmids` of `tracks`.
bool NeedsOldIdentity(const APP_STATE_INFO& app);

}  // namespace quorvan
