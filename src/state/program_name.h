// What the program calls itself.

#pragma once

#include <string_view>

namespace quorvan {

inline constexpr std::u16string_view kProgramName = u"MXF Quorvan";
inline constexpr std::u16string_view kProgramVersion = u"1.7.8.3";
inline constexpr std::u16string_view kProgramTitle = u"MXF Quorvan 1.7.8.3";

}  // namespace quorvan
