// Where everything on the main window lies, in pixels of its client area, and in which colours and
// typefaces it shows.

#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "state/window_state_info.h"

namespace quorvan {

inline constexpr std::int32_t kMinimumWidth = 1280;  // of the whole window
inline constexpr std::int32_t kMinimumHeight = 631;

struct COLOR {
  std::uint8_t red;
  std::uint8_t green;
  std::uint8_t blue;
  std::uint8_t alpha = 255;
};

inline constexpr COLOR kPanelColor = {0, 40, 55};
inline constexpr COLOR kTrackBandColor = {9, 60, 81};
inline constexpr COLOR kSelectedVeil = {0, 20, 30, 180};
inline constexpr COLOR kOffVeil = {0, 90, 50, 180};
inline constexpr COLOR kFigureColor = {80, 240, 80};
inline constexpr COLOR kWhite = {255, 255, 255};

enum class FontFamily { kFixedPitch, kJapanese };

struct FontSpec {
  FontFamily family;
  std::int32_t height;  // pixels, of the cell
  std::int32_t width;   // average, 0 for the typeface's own
  std::int32_t weight;  // 400 normal, 700 bold
};

// By the number under which the controls name them.
inline constexpr std::array<FontSpec, 9> kFonts = {{
    {FontFamily::kFixedPitch, 18, 0, 400},
    {FontFamily::kJapanese, 22, 0, 400},
    {FontFamily::kJapanese, 32, 0, 700},
    {FontFamily::kFixedPitch, 39, 0, 800},
    {FontFamily::kFixedPitch, 28, 0, 600},
    {FontFamily::kJapanese, 52, 30, 600},
    {FontFamily::kFixedPitch, 20, 0, 400},
    {FontFamily::kJapanese, 70, 0, 700},
    {FontFamily::kJapanese, 50, 33, 600},
}};

// Numbers of the controls.
enum ControlId : std::uint32_t {
  kLoadButton = 5008,
  kViewButton = 5009,
  kRewrapButton = 5010,
  kExportButton = 5011,
  kWavListView = 5012,
  kTimecodeEdit = 5014,
  kFileNameText = 5024,
  kRateText = 5025,
  kHeadText = 5026,
  kTailText = 5027,
  kDurText = 5028,
  kFormatText = 5029,
  kTracksText = 5030,
  kBitsText = 5031,
  kFsRateText = 5032,
  kFpsText = 5033,
  kBitRateText = 5034,
  kCodecText = 5035,
  kSizeText = 5036,
  kFirstCaption = 5038,
  kLastCaption = 5053,
  kInButton = 5054,
  kOutButton = 5055,
  kDurButton = 5056,
  kInTimecodeText = 5057,
  kOutTimecodeText = 5058,
  kDurTimecodeText = 5059,
};

enum class HorizontalAlign { kLeft, kCenter, kRight };
enum class VerticalAlign { kTop, kCenter };

// A text on the window: one line, with an ellipsis where it does not fit.
struct LabelSpec {
  ControlId id;
  std::size_t font;
  COLOR color;
  HorizontalAlign horizontal;
  VerticalAlign vertical;
  std::u16string_view caption;  // of a label whose text never changes
};
std::span<const LabelSpec> Labels();

// Where a control lies in a view of `width` x `height`, the client area without the status bar.
// Empty for a number of no control.
RECTANGLE ControlRect(ControlId id, std::int32_t width, std::int32_t height);

// The rectangle from which the widths of the library's columns are reckoned.
RECTANGLE ListReference(std::int32_t width, std::int32_t height);

// Right ends of the status bar's first two fields.
std::array<std::int32_t, 2> StatusFieldEnds(std::int32_t width);

}  // namespace quorvan
