// What the main window says: its displays, tool tips and status bar.

#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "state/app_state_info.h"
#include "state/frame_range.h"
#include "view/main_layout.h"

namespace quorvan {

inline constexpr std::u16string_view kProgramSubtitle = u"Audio Track Exchange Tool";
inline constexpr std::u16string_view kNoTimecode = u"--:--:--:--";

// Text of a display of the information panel, kFileNameText to kCodecText; empty for any other.
std::u16string InfoText(const APP_STATE_INFO& app, ControlId id);

// The three displays of a range: IN, OUT and duration.
struct RangeTexts {
  std::u16string in;
  std::u16string out;
  std::u16string duration;
};
RangeTexts TextsOfRange(const APP_STATE_INFO& app, const RangeFields& fields,
                        const PointSet& pointSet);

// The eight digits of a real count's timecode, for an entry.
std::u16string TimecodeDigits(const MXF_TIMECODE_INFO& timecode, std::int32_t frames);

struct ToolTip {
  std::u16string text;
  std::int32_t width;  // pixels at most
};
ToolTip FileToolTip(const APP_STATE_INFO& app);
ToolTip TrackToolTip(const APP_STATE_INFO& app, std::int32_t track);
inline constexpr std::u16string_view kFileToolTipTitle = u"ファイルクリエータ情報";

// Status bar: the path of the library row that has the focus, -1 for none; and the counters.
std::u16string PathStatus(const APP_STATE_INFO& app, std::int32_t focusRow);
std::u16string CounterStatus(const APP_STATE_INFO& app);

// What stands in the row of a track: its text, and where and how.
struct TrackRowText {
  std::u16string name;        // at the left edge; empty without a file
  std::u16string_view state;  // centred in the field, or in its right half behind a name
  COLOR nameColor;
  char16_t channelMark;  // "L" or "R", 0 for none
};
TrackRowText TextOfTrack(const APP_STATE_INFO& app, std::int32_t track);

}  // namespace quorvan
