// The samples of one source of a rewrite, frame by frame.

#pragma once

#include <cstdint>

#include "mxf/audio_element.h"
#include "wav/wav_library.h"

namespace quorvan {

// Room for one frame of one track, whatever its width: the largest frame in samples of four bytes.
inline constexpr std::uint64_t kFrameRoom = std::uint64_t{kLargestFrameSamples} * 4;

// One channel of the interleaved sample frames of `wav` at `interleaved`, of which there are
// `held`, as `wanted` samples of `width` bytes at `target`: bytes as they are, or 16 bits in the
// upper ones of 24, and silence behind the last one held.
void FillChannel(const WAV_FILE_INFO& wav, std::uint32_t channel, const std::uint8_t* interleaved,
                 std::uint32_t held, std::uint32_t wanted, std::uint32_t width,
                 std::uint8_t* target);

// Whole sample frames that the data chunk of `wav` still holds behind its first `consumed` ones, at
// most `wanted`.
std::uint64_t SamplesLeft(const WAV_FILE_INFO& wav, std::uint64_t consumed, std::uint64_t wanted);

}  // namespace quorvan
