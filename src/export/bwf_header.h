// The header of a mono Broadcast Wave file (EBU Tech 3285), which becomes RF64 (EBU Tech 3306) when
// its sizes need more than 32 bits. Both have the same layout.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "mxf/records.h"

namespace quorvan {

inline constexpr std::size_t kBwfHeaderBytes = 714;

// The most audio bytes of a RIFF file.
inline constexpr std::uint64_t kMostRiffAudioBytes = 0xFFFFFFFE;

using BwfHeader = std::array<std::uint8_t, kBwfHeaderBytes>;

// What the header of one file says.
struct BwfDescription {
  std::uint64_t dataBytes;      // of audio
  std::uint64_t timeReference;  // samples since midnight
  std::uint16_t extensionSize;  // cbSize of the fmt chunk
};

// All that stands in front of the samples, in the format of `audio`.
BwfHeader MakeBwfHeader(const MXF_AUDIO_INFO& audio, const BwfDescription& description);

// Samples of one track in the first `frames` frames of a day. `rateIndex` must be below kRateCount.
std::uint64_t SamplesInFrames(std::uint64_t frames, std::uint32_t rateIndex);

}  // namespace quorvan
