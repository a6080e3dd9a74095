// The log behind a rewrite that is done.

#pragma once

#include <cstdint>
#include <string>

#include "state/app_state_info.h"

namespace quorvan {

// Writes the rewrap log of the rewrite that has ended with `result`: 0, or kDoneWithNotice, whose
// reason then stands in the log. False, with the words for the operator in `*failure`, when there
// is no log; the rewrite stands all the same.
bool LogRewrite(std::int32_t result, APP_STATE_INFO* app, std::u16string* failure);

}  // namespace quorvan
