#include "rewrite/wav_source.h"

#include <algorithm>
#include <cstring>

namespace quorvan {
namespace {

// The widths are compile-time constants so that each copy is a move or two.
template <std::uint32_t kSampleBytes, std::uint32_t kTargetBytes>
void Split(const std::uint8_t* source, std::uint32_t frames, std::uint32_t blockAlign,
           std::uint8_t* target) {
  constexpr std::uint32_t low = kTargetBytes - kSampleBytes;
  for (std::uint32_t i = 0; i < frames; ++i) {
    if constexpr (low > 0) std::memset(target, 0, low);
    std::memcpy(target + low, source, kSampleBytes);
    source += blockAlign;
    target += kTargetBytes;
  }
}

}  // namespace

void FillChannel(const WAV_FILE_INFO& wav, std::uint32_t channel, const std::uint8_t* interleaved,
                 std::uint32_t held, std::uint32_t wanted, std::uint32_t width,
                 std::uint8_t* target) {
  const std::uint32_t sampleBytes = wav.bytesPerChannelSample;
  const std::uint8_t* source = interleaved + channel * sampleBytes;
  if (sampleBytes == 3 && width == 3) Split<3, 3>(source, held, wav.blockAlign, target);
  if (sampleBytes == 2 && width == 3) Split<2, 3>(source, held, wav.blockAlign, target);
  if (sampleBytes == 2 && width == 2) Split<2, 2>(source, held, wav.blockAlign, target);
  std::memset(target + held * width, 0, (wanted - held) * width);
}

std::uint64_t SamplesLeft(const WAV_FILE_INFO& wav, std::uint64_t consumed, std::uint64_t wanted) {
  const std::uint64_t held = wav.dataSize / wav.blockAlign;
  return std::min(held > consumed ? held - consumed : 0, wanted);
}

}  // namespace quorvan
