// The texts of the main window: its displays, tool tips, status bar and track rows.

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

// The text of a display of the information panel, kFileNameText to kSizeText; empty for any other
// control.
std::u16string InfoText(const APP_STATE_INFO& app, ControlId id);

// The texts of the three displays of a range.
struct RangeTexts {
  std::u16string in;
  std::u16string out;
  std::u16string duration;
};
// The texts of the range that `fields` names in `tracks` of `app`. `pointSet` tells which points
// are set: a point that is not set, and a duration without both points, shows as kNoTimecode, as
// does everything while no clip is loaded.
RangeTexts TextsOfRange(const APP_STATE_INFO& app, const RangeFields& fields,
                        const PointSet& pointSet);

// The timecode of the real count `frames` as eight digits without separators, the form that the
// entry of a point starts with. Empty for a clip without a timecode base.
std::u16string TimecodeDigits(const MXF_TIMECODE_INFO& timecode, std::int32_t frames);

// A tool tip.
struct ToolTip {
  std::u16string text;
  std::int32_t width;  // most pixels of a line
};
// The tool tip of the file name, which tells about the creator of the loaded clip, and the tool tip
// of track `track` (from 0), which tells about its WAV file. Without a clip or a file the tip says
// so.
ToolTip FileToolTip(const APP_STATE_INFO& app);
ToolTip TrackToolTip(const APP_STATE_INFO& app, std::int32_t track);
// Title of FileToolTip.
inline constexpr std::u16string_view kFileToolTipTitle = u"ファイルクリエータ情報";

// The first field of the status bar: the path of the WAV file in row `focusRow` (from 0) of the
// library, cut to 259 characters. A fixed text tells that there is no path when the row is -1 or
// not in the library.
std::u16string PathStatus(const APP_STATE_INFO& app, std::int32_t focusRow);
// The second field of the status bar: the number of files and of selected files in the library
// view, the number of tracks and of selected tracks in the track view.
std::u16string CounterStatus(const APP_STATE_INFO& app);

// What the row of a track in the track view shows.
struct TrackRowText {
  std::u16string name;  // of the WAV file, at the left edge; empty without a file
  // Text of the switch, centred in the row or, behind a name, in its right half; may be empty.
  std::u16string_view state;
  COLOR nameColor;       // text colour of the name
  char16_t channelMark;  // "L" or "R" for a channel of a stereo file, else 0
};
// The row of track `track`, counted from 0. Without a file it shows what the switch means for the
// track. With a file it shows the name and, while the switch is OFF, a dimmed name and the text for
// OFF.
TrackRowText TextOfTrack(const APP_STATE_INFO& app, std::int32_t track);

}  // namespace quorvan
