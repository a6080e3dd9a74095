// The samples of one source of a rewrite, frame by frame.

#pragma once

#include <cstdint>
#include <span>

#include "platform/file.h"
#include "rewrite/rewrap_plan.h"

namespace quorvan {

enum class SourceState {
  kSound,
  kChanged,   // not the file that was added, or its chunks lead to audio elsewhere
  kCutShort,  // the file ends before its audio does, or claims none though it has some
};

// Compares the open `file` with what the library knows of it as `wav`. Where its chunks, followed
// by their sizes, lead to a data chunk, format and place of the audio must be those that were
// found.
SourceState CheckSource(const platform::File& file, const WAV_FILE_INFO& wav);

// Splits one channel out of `frames` interleaved sample frames of `blockAlign` bytes at `source`:
// copies `sampleBytes` of each sample to every `targetBytes` bytes of `target`, into their upper
// bytes, and zeroes the lower ones.
void SplitChannel(const std::uint8_t* source, std::uint32_t frames, std::uint32_t blockAlign,
                  std::uint32_t sampleBytes, std::uint8_t* target, std::uint32_t targetBytes);

// Whole sample frames that the data chunk of `wav` still holds behind its first `consumed` ones, at
// most `wanted`.
std::uint32_t SamplesLeft(const WAV_FILE_INFO& wav, std::uint64_t consumed, std::uint32_t wanted);

}  // namespace quorvan
