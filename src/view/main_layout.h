// The places of all controls of the main window, in pixels of its client area, and their colours
// and typefaces.

#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "state/window_state_info.h"

namespace quorvan {

// Smallest size of the main window, in pixels, without its frame, on a screen that has the room.
inline constexpr std::int32_t kMinimumWidth = 1280;
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
  std::int32_t height;  // pixels of the character cell
  std::int32_t width;   // average letter in pixels; 0 for the typeface's own
  std::int32_t weight;  // 400 normal, 700 bold
};

// The fonts, indexed by the number that the controls use.
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

// The numbers of the controls, which are also their object names.
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

// A label of the window: one line of text, with an ellipsis where it does not fit.
struct LabelSpec {
  ControlId id;
  std::size_t font;  // index of kFonts
  COLOR color;
  HorizontalAlign horizontal;
  VerticalAlign vertical;
  std::u16string_view caption;  // the text of a label that never changes; else empty
};
// All labels of the main window.
std::span<const LabelSpec> Labels();

// The size of the controls in the bands of a view of `width` pixels, as a part of their full size:
// 1, and less in a view that is narrower than the smallest window should be.
double ControlScale(std::int32_t width);

// The rectangle of the control `id` in a view of `width` x `height` pixels, the client area without
// the status bar. Empty when no control has that number.
RECTANGLE ControlRect(ControlId id, std::int32_t width, std::int32_t height);

// The rectangle from whose width the library columns take their `share`, in a view of `width` x
// `height` pixels.
RECTANGLE ListReference(std::int32_t width, std::int32_t height);

// The right ends, in pixels, of the first two fields of a status bar of `width` pixels.
std::array<std::int32_t, 2> StatusFieldEnds(std::int32_t width);

}  // namespace quorvan
