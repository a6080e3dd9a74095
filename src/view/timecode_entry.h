// The entry of an IN or OUT point, as the main window and two dialogs have it.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "state/app_state_info.h"
#include "state/frame_range.h"

namespace quorvan {

enum TimecodeTarget : std::int32_t { kNoTarget = -1, kInTarget = 0, kOutTarget = 1 };

enum class EntryResult {
  kAccepted = 0,
  kMissing = -1,
  kFieldTooLarge = -2,
  kBeforeStart = -3,
  kBehindEnd = -4,
};

// `text` as it may stand in the entry: with the wide forms of digits and marks, which Japanese
// input gives, made plain. Nothing when anything else is in it than digits and what stands between
// them.
std::optional<std::u16string> PlainTimecodeText(std::u16string text);

// Checks `text` and stores it as the point `target` of the range. It counts from its end: of its
// first nine characters the last eight digits, whatever stands between them.
//
// Accepted, the point is set, and one that would lie on the wrong side of it moves up to it. A
// point in front of the clip or behind its end counts as not set from then on; with a field above
// its limit all stays as it was.
EntryResult ApplyTimecodeEntry(APP_STATE_INFO* app, TimecodeTarget target,
                               const RangeFields& fields, PointSet* pointSet,
                               std::u16string_view text);

// What the operator is told of a refusal; empty for kAccepted and kMissing.
std::u16string_view EntryRefusal(EntryResult result);
inline constexpr std::u16string_view kEntryTitle = u"タイムコード入力";

// Which entry opens next when `target` was accepted: OUT behind IN, none behind OUT.
TimecodeTarget NextTarget(TimecodeTarget target);

}  // namespace quorvan
