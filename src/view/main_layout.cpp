#include "view/main_layout.h"

#include <algorithm>
#include <cmath>

namespace quorvan {
namespace {

constexpr COLOR kCaptionColor = {195, 195, 195};
constexpr COLOR kFileNameColor = {0, 120, 255};
constexpr COLOR kPointColor = {255, 0, 1};

constexpr LabelSpec Figure(ControlId id) {
  return {id, 4, kFigureColor, HorizontalAlign::kLeft, VerticalAlign::kCenter, {}};
}

constexpr LabelSpec Heading(std::uint32_t id, std::u16string_view text) {
  return {static_cast<ControlId>(id), 0,   kWhite, HorizontalAlign::kLeft,
          VerticalAlign::kCenter,     text};
}

constexpr LabelSpec Caption(std::uint32_t id, std::u16string_view text) {
  return {static_cast<ControlId>(id), 1,   kCaptionColor, HorizontalAlign::kLeft,
          VerticalAlign::kTop,        text};
}

constexpr LabelSpec Point(ControlId id, COLOR color) {
  return {id, 3, color, HorizontalAlign::kLeft, VerticalAlign::kCenter, {}};
}

constexpr LabelSpec kLabels[] = {
    {kFileNameText, 2, kFileNameColor, HorizontalAlign::kCenter, VerticalAlign::kCenter, {}},
    Heading(5040, u"Video"),
    Heading(5039, u"Audio"),
    Heading(5038, u"Time code"),
    Caption(5052, u"Codec"),
    Caption(5051, u"Bit Rate"),
    Caption(5050, u"FPS"),
    Caption(5053, u"Size"),
    Figure(kCodecText),
    Figure(kBitRateText),
    Figure(kFpsText),
    Figure(kSizeText),
    Caption(5047, u"Tracks"),
    Caption(5046, u"Format"),
    Caption(5048, u"Bit Rate"),
    Caption(5049, u"Fs Rate"),
    Figure(kTracksText),
    Figure(kFormatText),
    Figure(kBitsText),
    Figure(kFsRateText),
    Caption(5042, u"Rate"),
    Caption(5043, u"Head"),
    Caption(5044, u"Tail"),
    Caption(5045, u"Dur"),
    Figure(kRateText),
    Figure(kHeadText),
    Figure(kTailText),
    Figure(kDurText),
    Point(kInTimecodeText, kPointColor),
    Point(kOutTimecodeText, kPointColor),
    Point(kDurTimecodeText, kWhite),
};

// The place of a control, in pixels. Its left edge lies `fromMiddle` right of the middle of the
// view. Its top counts from the top of the view; a negative `top` counts from the bottom.
struct Placement {
  std::uint32_t id;
  std::int32_t fromMiddle;
  std::int32_t top;
  std::int32_t width;
  std::int32_t height;
};

constexpr Placement kPlacements[] = {
    {5040, -600, 35, 170, 10},
    {5039, -240, 35, 170, 10},
    {5038, 20, 35, 170, 10},
    {5052, -600, 53, 170, 18},
    {5051, -600, 79, 170, 18},
    {5050, -600, 107, 170, 18},
    {5053, -600, 134, 170, 18},
    {kCodecText, -520, 48, 226, 27},
    {kBitRateText, -520, 75, 236, 27},
    {kFpsText, -520, 102, 164, 27},
    {kSizeText, -520, 129, 180, 27},
    {5047, -240, 53, 170, 18},
    {5046, -240, 79, 170, 18},
    {5048, -240, 107, 170, 18},
    {5049, -240, 134, 170, 18},
    {kTracksText, -161, 48, 140, 27},
    {kFormatText, -161, 75, 140, 27},
    {kBitsText, -161, 102, 140, 27},
    {kFsRateText, -161, 129, 140, 27},
    {5042, 20, 53, 170, 18},
    {5043, 20, 79, 170, 18},
    {5044, 20, 107, 170, 18},
    {5045, 20, 134, 170, 18},
    {kRateText, 95, 48, 130, 27},
    {kHeadText, 95, 75, 175, 27},
    {kTailText, 95, 102, 175, 27},
    {kDurText, 95, 129, 175, 27},
    {kInButton, 285, 42, 104, 36},
    {kOutButton, 285, 80, 104, 36},
    {kDurButton, 285, 118, 104, 36},
    {kInTimecodeText, 395, 40, 220, 40},
    {kOutTimecodeText, 395, 79, 220, 40},
    {kDurTimecodeText, 395, 117, 220, 40},
    {kTimecodeEdit, 385, 38, 220, 40},
    {kLoadButton, -352, -117, 128, 80},
    {kViewButton, -160, -117, 128, 80},
    {kRewrapButton, 32, -117, 128, 80},
    {kExportButton, 224, -117, 128, 80},
};

// The lines of the two bands that keep their place when the controls become smaller: the middle of
// the top band, and the middle of the large buttons from the bottom of the view.
constexpr std::int32_t kTopBandMiddle = 80;
constexpr std::int32_t kButtonMiddle = -77;

constexpr std::int32_t kSideMargin = 20;
constexpr std::int32_t kFileNameTop = 8;
constexpr std::int32_t kFileNameHeight = 22;
constexpr std::int32_t kListTop = 180;
constexpr std::int32_t kListOutside = 360;
constexpr std::int32_t kListReferenceTop = 183;

}  // namespace

std::span<const LabelSpec> Labels() {
  return kLabels;
}

double ControlScale(std::int32_t width) {
  return std::min(1.0, static_cast<double>(width) / kMinimumWidth);
}

RECTANGLE ControlRect(ControlId id, std::int32_t width, std::int32_t height) {
  if (id == kFileNameText) {
    return {0, kFileNameTop, width - 2 * kSideMargin, kFileNameTop + kFileNameHeight};
  }
  if (id == kWavListView) {
    return {kSideMargin, kListTop, width - kSideMargin, kListTop + height - kListOutside};
  }
  for (const Placement& place : kPlacements) {
    if (place.id != id) continue;
    const auto scaled = [scale = ControlScale(width)](std::int32_t length) {
      return static_cast<std::int32_t>(std::floor(scale * length));
    };
    const bool atBottom = place.top < 0;
    const std::int32_t middle = atBottom ? kButtonMiddle : kTopBandMiddle;
    const std::int32_t left = width / 2 + scaled(place.fromMiddle);
    const std::int32_t top = (atBottom ? height : 0) + middle + scaled(place.top - middle);
    return {left, top, left + scaled(place.width), top + scaled(place.height)};
  }
  return {};
}

RECTANGLE ListReference(std::int32_t width, std::int32_t height) {
  return {kSideMargin, kListReferenceTop, width / 2 * 2 - 2 * kSideMargin,
          height - static_cast<std::int32_t>(kBandHeight)};
}

std::array<std::int32_t, 2> StatusFieldEnds(std::int32_t width) {
  return {width / 2, width / 2 * 3 / 2};
}

}  // namespace quorvan
