// The place of the window from one run of the program to the next.

#pragma once

#include <cstdint>
#include <optional>

namespace quorvan::platform {

// A rectangle on the desktop, in the units of the toolkit: on a screen at 200 percent a unit is two
// pixels.
struct KeptPlace {
  std::int32_t left;
  std::int32_t top;
  std::int32_t width;
  std::int32_t height;
};

// The place that WriteKeptPlace has stored last. On Windows a place whose value is missing counts
// as four zeros, and so does a value of another type or length. Nothing when no place is stored or
// the system does not give the place. Throws std::bad_alloc.
std::optional<KeptPlace> ReadKeptPlace();

// Stores a place for the user: on POSIX in the file MXF_Quorvan/MXF_Quorvan.conf of the user's
// configuration folder; on Windows in the registry, in the value "position" of the user's key
// software\MXF_Quorvan\Window, as four little-endian numbers. Does nothing when the system does not
// take the place. Throws std::bad_alloc.
void WriteKeptPlace(const KeptPlace& place);

// True when the stored size is that of the window with its frame, as on Windows; false when the
// size is that of the contents, as on POSIX, where a window gets its frame only when it shows.
bool KeptPlaceHasFrame();

}  // namespace quorvan::platform
