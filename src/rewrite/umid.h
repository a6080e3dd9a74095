// New UMIDs for a rewritten clip (SMPTE 330M).

#pragma once

#include <array>
#include <cstdint>

#include "mxf/records.h"
#include "mxf/umid_text.h"
#include "platform/file.h"

namespace quorvan {

enum class PackageKind : std::uint32_t { kMaterial = 0, kSource = 1 };

// A new basic UMID: bytes 7 and 10 of `old`, instance number zero, and a new UUID as material
// number, zeros where the system has none.
std::array<std::uint8_t, kUmidBytes> MakeUmid(const std::array<std::uint8_t, kUmidBytes>& old);

// Replaces the 32 bytes at `umid` by a new UMID wherever they stand in `file`, open for writing, at
// an offset below `limit`, and stamps the first package set of `kind` that starts below `limit`
// with the local time. Returns 0, and `umid` holds what now stands in the file: the new bytes, or
// the old ones where they were nowhere found; -1 for a null argument or a write that failed; 405
// when there is no such set. `umid` keeps its bytes unless the result is 0.
std::int32_t RegenerateUmid(platform::File* file, PackageKind kind,
                            std::array<std::uint8_t, kUmidBytes>* umid, std::uint64_t limit);

// True when both UMIDs of `mxf` stand in the header metadata of `file`, as they do in the clip that
// was analysed and in no other.
bool HoldsUmids(const platform::File& file, const MXF_BASE_INFO& mxf);

// The last step of a rewrite: both UMIDs of the clip in `file` and in `mxf`, which then also has
// the dates that stand in the file. Returns false, and changes nothing, when a UMID of the clip is
// not 32 bytes long.
bool RenewUmids(platform::File* file, MXF_BASE_INFO* mxf);

}  // namespace quorvan
