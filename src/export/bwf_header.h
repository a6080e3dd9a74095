// The header of a mono Broadcast Wave file: RIFF (EBU Tech 3285), or RF64 (EBU Tech 3306) for more
// than kMostRiffAudioBytes bytes of audio. Both have the same layout.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "mxf/records.h"

namespace quorvan {

// Bytes in front of the samples.
inline constexpr std::size_t kBwfHeaderBytes = 714;

// Most audio bytes of a RIFF file. A file with more is an RF64 file.
inline constexpr std::uint64_t kMostRiffAudioBytes = 0xFFFFFFFE;

using BwfHeader = std::array<std::uint8_t, kBwfHeaderBytes>;

// The values that differ from export to export.
struct BwfDescription {
  std::uint64_t dataBytes;      // bytes of audio
  std::uint64_t timeReference;  // first sample, in samples since midnight
  std::uint16_t extensionSize;  // cbSize of the fmt chunk
};

// Makes the header of a file with the sampling rate and the sample width of `audio`: the chunks
// JUNK or ds64, fmt, bext, and the start of data. The texts, the UMID and the loudness fields of
// bext stay zero. Throws nothing.
BwfHeader MakeBwfHeader(const MXF_AUDIO_INFO& audio, const BwfDescription& description);

// Number of samples of one track at 48 kHz in `frames` frames from midnight on, which is the time
// reference of frame number `frames`. `rateIndex` must be below kRateCount. Throws nothing.
std::uint64_t SamplesInFrames(std::uint64_t frames, std::uint32_t rateIndex);

}  // namespace quorvan
