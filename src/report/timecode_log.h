// The log of the breaks that a continuity check has found.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "state/app_state_info.h"

namespace quorvan {

// All of the log in front of its lines, in UTF-8 with CR LF. `now` is the local time that it names.
std::string TimecodeLogHead(const APP_STATE_INFO& app, const platform::CalendarTime& now);

// The line of one break; `number` counts from 0.
std::string TimecodeLogLine(const APP_STATE_INFO& app, std::uint32_t number,
                            const TIMECODE_ERROR_INFO& timecodeBreak);

// Writes the log to `path`, where it replaces an earlier file. The list of breaks stays. False,
// with the system's number of the reason in `error`, when there is no log.
bool WriteTimecodeLog(const std::u16string& path, const APP_STATE_INFO& app, std::uint32_t* error);

// What the operator is told of a log that could not be written, and of one that was.
std::u16string TimecodeLogFailureMessage(std::u16string_view mxfPath, std::uint32_t error);
std::u16string TimecodeLogDoneMessage(std::u16string_view mxfPath);

}  // namespace quorvan
