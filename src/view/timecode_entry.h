// The field in which the operator types an IN or OUT point: what it accepts and what it stores.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "state/app_state_info.h"
#include "state/frame_range.h"

namespace quorvan {

// The point that an entry sets; kNoTarget while no entry is open.
enum TimecodeTarget : std::int32_t { kNoTarget = -1, kInTarget = 0, kOutTarget = 1 };

// Result of an entry.
enum class EntryResult {
  kAccepted = 0,
  kMissing = -1,        // no target, or a clip without a timecode base
  kFieldTooLarge = -2,  // hours, minutes, seconds or frames above their limit
  kBeforeStart = -3,    // in front of the first frame of the clip
  kBehindEnd = -4,      // behind the last frame of the clip
};

// The digits in `text`, in their order. The wide digits of Japanese input become plain digits; all
// other characters are passed over.
std::u16string DigitsIn(std::u16string_view text);

// Checks `text` and stores its timecode as the point `target` of the range. `fields` names the
// members of `tracks` that hold the range; `pointSet` tells which of its points are set. Of the
// first nine characters of `text` the last eight digits count; all other characters are ignored,
// and missing digits on the left count as 0.
//
// With kAccepted the point is stored and set, `enteredTimecode` holds it, and the other point, if
// it is set and would make IN lie behind OUT, becomes the same point. With kBeforeStart and
// kBehindEnd the point counts as not set and keeps its value. With kMissing and kFieldTooLarge
// nothing changes.
EntryResult ApplyTimecodeEntry(APP_STATE_INFO* app, TimecodeTarget target,
                               const RangeFields& fields, PointSet* pointSet,
                               std::u16string_view text);

// The message about a refused entry; empty for kAccepted and kMissing.
std::u16string_view EntryRefusal(EntryResult result);
// Title of the message.
inline constexpr std::u16string_view kEntryTitle = u"タイムコード入力";

// The entry that opens after `target` was accepted: OUT after IN, none after OUT.
TimecodeTarget NextTarget(TimecodeTarget target);

}  // namespace quorvan
