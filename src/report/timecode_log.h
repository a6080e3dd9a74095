// The log of the timecode breaks that a continuity check has found. All functions but
// WriteTimecodeLog throw std::bad_alloc when memory is out.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/language.h"
#include "state/app_state_info.h"

namespace quorvan {

// The beginning of the log, up to the line of the first break, in UTF-8 with CR LF. `now` is the
// local time that the log gives as its date.
std::string TimecodeLogHead(const APP_STATE_INFO& app, const platform::CalendarTime& now);

// The line of one break, in UTF-8 with CR LF. `number` is the number of the break, from 0.
std::string TimecodeLogLine(const APP_STATE_INFO& app, std::uint32_t number,
                            const TIMECODE_ERROR_INFO& timecodeBreak);

// Writes the log of the breaks in `app` to `path`, where it replaces an earlier log, as LogFile
// says. Leaves the list of breaks as it is. True when the log is on the medium. False when there is
// no log: `*error` is then the system's error number, or 0 when memory is out. Throws nothing.
bool WriteTimecodeLog(const std::u16string& path, const APP_STATE_INFO& app, std::uint32_t* error);

// The message that tells the operator that the log of the clip at `mxfPath` could not be written,
// for the system's reason `error`.
std::u16string TimecodeLogFailureMessage(std::u16string_view mxfPath, std::uint32_t error,
                                         platform::Language language = platform::kWindowLanguage);

// The message that tells the operator that the log of the clip at `mxfPath` was written.
std::u16string TimecodeLogDoneMessage(std::u16string_view mxfPath);

}  // namespace quorvan
