// The name and version that the program shows. QUORVAN_VERSION comes from the build.

#pragma once

#include <string_view>

namespace quorvan {

inline constexpr std::u16string_view kProgramName = u"MXF Quorvan";
inline constexpr std::u16string_view kProgramVersion = u"" QUORVAN_VERSION;
inline constexpr std::u16string_view kProgramTitle = u"MXF Quorvan " QUORVAN_VERSION;

}  // namespace quorvan
