#include "cli/arguments.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "timecode/timecode.h"

namespace quorvan::cli {
namespace {

constexpr std::size_t kDigits = 8;
constexpr std::size_t kSeparatedLength = 11;  // 01:02:03:04

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsSeparator(char c) {
  return c == ':' || c == ';' || c == '.' || c == ',';
}

// True for eight digits, or for four pairs of digits with a separator between each two.
bool HasTimecodeForm(std::string_view text) {
  const bool separated = text.size() == kSeparatedLength;
  if (!separated && text.size() != kDigits) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool wantsSeparator = separated && i % 3 == 2;
    if (wantsSeparator ? !IsSeparator(text[i]) : !IsDigit(text[i])) return false;
  }
  return true;
}

}  // namespace

std::optional<std::uint32_t> ParseTrackNumber(std::string_view text) {
  std::uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, number);
  if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
  if (number < 1 || number > kMaxTracks) return std::nullopt;
  return number - 1;
}

std::optional<TrackArgument> ParseTrackArgument(std::string_view text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos || equals + 1 == text.size()) return std::nullopt;
  const auto track = ParseTrackNumber(text.substr(0, equals));
  if (!track) return std::nullopt;
  return TrackArgument{*track, std::string(text.substr(equals + 1))};
}

std::optional<std::vector<std::uint32_t>> ParseTrackList(std::string_view text) {
  std::array<bool, kMaxTracks> named{};
  for (bool more = true; more;) {
    const std::size_t comma = text.find(',');
    more = comma != std::string_view::npos;
    const std::string_view part = text.substr(0, comma);
    if (more) text.remove_prefix(comma + 1);
    const std::size_t dash = part.find('-');
    const auto first = ParseTrackNumber(part.substr(0, dash));
    const auto last =
        dash == std::string_view::npos ? first : ParseTrackNumber(part.substr(dash + 1));
    if (!first || !last || *first > *last) return std::nullopt;
    std::fill(named.begin() + *first, named.begin() + *last + 1, true);
  }
  std::vector<std::uint32_t> tracks;
  for (std::uint32_t t = 0; t < kMaxTracks; ++t) {
    if (named[t]) tracks.push_back(t);
  }
  return tracks;
}

std::optional<std::int32_t> ParseTimecode(std::string_view text,
                                          const MXF_TIMECODE_INFO& timecode) {
  if (!HasTimecodeForm(text)) return std::nullopt;
  const std::int32_t frames = TextToFrames(timecode.fpsIndex, timecode.dropFrame, text);
  if (frames < 0) return std::nullopt;
  return frames;
}

}  // namespace quorvan::cli
