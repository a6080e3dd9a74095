// The log of a rewrite: what was done to which clip, with which source file on each track. All
// functions but WriteRewrapLog throw std::bad_alloc when memory is out.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/language.h"
#include "state/app_state_info.h"

namespace quorvan {

// The log up to the block that RewrapLogEnd returns, in UTF-8 with CR LF. `now` is the local time
// that the log gives as its date.
std::string RewrapLogText(const APP_STATE_INFO& app, const platform::CalendarTime& now);

// The block of the log that follows RewrapLogText: when the job of `app` started and ended.
std::string RewrapLogEnd(const APP_STATE_INFO& app);

// The path of the log of the clip at `mxfPath`: in the folder of the clip, with the clip's name up
// to its extension and "_LOG.txt".
std::u16string RewrapLogPath(std::u16string_view mxfPath);

// Writes the log of the rewrite in `app` to RewrapLogPath, where it replaces an earlier log, as
// LogFile says, and sets `jobEndTime`. A `notice` that is not empty goes into a block of its own
// behind RewrapLogEnd. True when the log is on the medium. False when there is no log: `*error` is
// then the system's error number, or 0 when memory is out. Throws nothing.
bool WriteRewrapLog(APP_STATE_INFO* app, std::u16string_view notice, std::uint32_t* error);

// The message that tells the operator that the log of the clip at `mxfPath` could not be written,
// for the system's reason `error`.
std::u16string RewrapLogFailureMessage(std::u16string_view mxfPath, std::uint32_t error,
                                       platform::Language language = platform::kWindowLanguage);

// The message that tells the operator that the name of the clip is too long for a log beside the
// clip; empty when the clip can have a log. The front ends call this before a rewrite begins.
std::u16string NoRewrapLogMessage(std::u16string_view mxfPath,
                                  platform::Language language = platform::kWindowLanguage);

// The message that tells the operator that the rewrite of the clip at `mxfPath` is done and its log
// is at `logPath`.
std::u16string RewrapCompletionMessage(std::u16string_view mxfPath, std::u16string_view logPath);

}  // namespace quorvan
