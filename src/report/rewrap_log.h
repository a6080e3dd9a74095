// The log of a rewrite: what was done to which clip, with which source on each track.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "state/app_state_info.h"

namespace quorvan {

// All of the log but its last block, in UTF-8 with CR LF. `now` is the local time that it names.
std::string RewrapLogText(const APP_STATE_INFO& app, const platform::CalendarTime& now);

// The last block: when the job of `app` has started and ended.
std::string RewrapLogEnd(const APP_STATE_INFO& app);

// Path of the log of the clip at `mxfPath`: beside the clip, under its name without its extension
// and with "_LOG.txt".
std::u16string RewrapLogPath(std::u16string_view mxfPath);

// False when no file can have that name, since it is too long. Asked before a rewrite begins.
bool CanHaveRewrapLog(std::u16string_view mxfPath);

// Writes the log to its path, where it replaces an earlier one, and sets `jobEndTime`. `notice`
// stands in a block of its own behind the last one, and may be empty. False, with the system's
// number of the reason in `error`, when there is no log. Throws nothing.
bool WriteRewrapLog(APP_STATE_INFO* app, std::u16string_view notice, std::uint32_t* error);

// What the operator is told of a log that could not be written.
std::u16string RewrapLogFailureMessage(std::u16string_view mxfPath, std::uint32_t error);

// What the operator is told of a clip that cannot have a log.
std::u16string NoRewrapLogMessage(std::u16string_view mxfPath);

// What the operator is told of a rewrite with its log.
std::u16string RewrapCompletionMessage(std::u16string_view mxfPath, std::u16string_view logPath);

}  // namespace quorvan
