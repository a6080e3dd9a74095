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

constexpr std::uint64_t kRiffHeaderBytes = 12;  // form, size, "WAVE"
constexpr std::uint64_t kChunkHeaderBytes = 8;

constexpr std::size_t kFormatBytes = 16;

std::uint16_t ReadLe16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] | p[1] << 8);
}

std::uint32_t ReadLe32(const std::uint8_t* p) {
  return std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16 |
         std::uint32_t{p[3]} << 24;
}

// True when these first bytes of a fmt chunk say what the library holds.
bool IsFormatOf(const std::uint8_t* fmt, const WAV_FILE_INFO& wav) {
  return ReadLe16(fmt) == wav.formatTag && ReadLe16(fmt + 2) == wav.channels &&
         ReadLe32(fmt + 4) == wav.sampleRate && ReadLe16(fmt + 12) == wav.blockAlign &&
         ReadLe16(fmt + 14) == wav.bitsPerSample;
}

// The file by the sizes of its chunks, where the reader goes by their letters, which may stand
// anywhere: false when the chunks lead to another format or to audio elsewhere, true when they
// agree or lead nowhere.
bool AgreesWithChunks(const platform::File& file, const WAV_FILE_INFO& wav) {
  std::uint8_t chunk[kChunkHeaderBytes + kFormatBytes];
  bool sameFormat = true;
  std::uint64_t at = kRiffHeaderBytes;
  for (;;) {
    const std::size_t held = file.ReadAt(at, chunk, sizeof chunk);
    if (held < kChunkHeaderBytes) return true;
    at += kChunkHeaderBytes;
    if (std::memcmp(chunk, "data", 4) == 0) return sameFormat && at == wav.dataOffset;
    if (std::memcmp(chunk, "fmt ", 4) == 0 && held == sizeof chunk) {
      sameFormat = IsFormatOf(chunk + kChunkHeaderBytes, wav);
    }
    const std::uint64_t size = ReadLe32(chunk + 4);
    at += size + size % 2;
  }
}

}  // namespace

SourceState CheckSource(const platform::File& file, const WAV_FILE_INFO& wav) {
  const auto size = file.Size();
  const auto times = file.Times();
  if (!size || *size != wav.findData.size || !times ||
      times->lastWrite != wav.findData.times.lastWrite) {
    return SourceState::kChanged;
  }
  if (!AgreesWithChunks(file, wav)) return SourceState::kChanged;
  if (wav.dataOffset > *size) return SourceState::kCutShort;
  const std::uint64_t rest = *size - wav.dataOffset;
  const bool unfinished = wav.dataSize < wav.blockAlign && rest >= wav.blockAlign;
  if (wav.dataSize > rest || unfinished) return SourceState::kCutShort;
  return SourceState::kSound;
}

void SplitChannel(const std::uint8_t* source, std::uint32_t frames, std::uint32_t blockAlign,
                  std::uint32_t sampleBytes, std::uint8_t* target, std::uint32_t targetBytes) {
  if (sampleBytes == 3 && targetBytes == 3) return Split<3, 3>(source, frames, blockAlign, target);
  if (sampleBytes == 2 && targetBytes == 3) return Split<2, 3>(source, frames, blockAlign, target);
  if (sampleBytes == 2 && targetBytes == 2) return Split<2, 2>(source, frames, blockAlign, target);
}

std::uint32_t SamplesLeft(const WAV_FILE_INFO& wav, std::uint64_t consumed, std::uint32_t wanted) {
  const std::uint64_t held = wav.dataSize / wav.blockAlign;
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(held > consumed ? held - consumed : 0, wanted));
}

}  // namespace quorvan
