// What a face asks before it starts a job.

#pragma once

#include <cstdint>

#include "state/app_state_info.h"

namespace quorvan {

// The result with which the job that `app` describes by jobKind and useFileIo would refuse its
// arguments before it opens anything: no track ON, a range outside the clip, a clip without a
// range. 0 when it would not. A range of no frame at all, which the engines allow, is refused here.
std::int32_t CheckJob(const APP_STATE_INFO& app);

// The same for what keeps every job from the clip, whatever its tracks and its range: a clip that
// can only be looked at.
std::int32_t CheckClipForJob(const APP_STATE_INFO& app);

// Why no job takes the loaded clip, for the operator; empty for a clip that jobs take.
std::u16string_view ClipRefusal(const APP_STATE_INFO& app);

// True when a rewrite of the loaded clip would leave its UMIDs as they are, since they have 64
// bytes: the operator is asked first, and a Yes becomes `keepUmids` of `tracks`.
bool NeedsOldIdentity(const APP_STATE_INFO& app);

}  // namespace quorvan
