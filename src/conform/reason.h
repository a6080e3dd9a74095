// Why a clip cannot be copied, or why there is no copy.

#pragma once

#include <string>

#include "platform/language.h"

namespace quorvan {

// For the operator; UTF-8.
using Reason = platform::InBoth<std::string>;

}  // namespace quorvan
