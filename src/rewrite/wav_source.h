// The samples of one source of a rewrite, frame by frame.

#pragma once

#include <cstdint>
#include <span>

#include "rewrite/rewrap_plan.h"

namespace quorvan {

// Splits one channel out of `frames` interleaved sample frames of `blockAlign` bytes at `source`:
// copies `sampleBytes` of each sample to every `targetBytes` bytes of `target`, into their upper
// bytes, and zeroes the lower ones.
void SplitChannel(const std::uint8_t* source, std::uint32_t frames, std::uint32_t blockAlign,
                  std::uint32_t sampleBytes, std::uint8_t* target, std::uint32_t targetBytes);

// Whole sample frames that the data chunk of `wav` still holds behind its first `consumed` ones, at
// most `wanted`.
std::uint64_t SamplesLeft(const WAV_FILE_INFO& wav, std::uint64_t consumed, std::uint64_t wanted);

}  // namespace quorvan
