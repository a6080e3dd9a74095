// The name and version that the program shows. QUORVAN_VERSION comes from the build.

#pragma once

#include <string_view>

namespace quorvan {

inline constexpr std::u16string_view kProgramName = u"MXF Quorvan";
inline constexpr std::u16string_view kProgramVersion = u"" QUORVAN_VERSION;
inline constexpr std::u16string_view kProgramTitle = u"MXF Quorvan " QUORVAN_VERSION;

// The captions of windows and messages about jobs name the core of the program.
inline constexpr std::u16string_view kCoreName = u"MXF Lattice Core";
inline constexpr std::u16string_view kCoreTitle = u"MXF Lattice Core Ver 2.3.1.0";

}  // namespace quorvan
