// What the operator is told of the end of a job.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/language.h"
#include "state/app_state_info.h"

namespace quorvan {

// The message about the job that `app` describes, which has ended with `result`. Empty for an
// accepted clip, and for a result that the continuity check does not have. Throws std::bad_alloc.
std::u16string OutcomeMessage(const APP_STATE_INFO& app, std::int32_t result,
                              platform::Language language = platform::kWindowLanguage);

// Characters of the longest PlainOutcomeText, at most.
inline constexpr std::size_t kMostPlainChars = 128;

// A short text that stands for OutcomeMessage when memory is out. It is zero terminated and lives
// as long as the program. Throws nothing.
std::u16string_view PlainOutcomeText(JobKind jobKind, std::int32_t result,
                                     platform::Language language = platform::kWindowLanguage);

}  // namespace quorvan
