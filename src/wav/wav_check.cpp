#include "wav/wav_check.h"

#include <cstring>

#include "wav/little_endian.h"

namespace quorvan {
namespace {

constexpr std::uint64_t kRiffHeaderBytes = 12;  // form, size, "WAVE"
constexpr std::uint64_t kChunkHeaderBytes = 8;

constexpr std::size_t kFormatBytes = 16;
constexpr int kMostChunks = 4096;  // in front of the audio; more is no chain but a run of zeros

// True when these first bytes of a fmt chunk say what the library holds.
bool IsFormatOf(const std::uint8_t* fmt, const WAV_FILE_INFO& wav) {
  return LoadLittleEndian<std::uint16_t>(fmt) == wav.formatTag &&
         LoadLittleEndian<std::uint16_t>(fmt + 2) == wav.channels &&
         LoadLittleEndian<std::uint32_t>(fmt + 4) == wav.sampleRate &&
         LoadLittleEndian<std::uint16_t>(fmt + 12) == wav.blockAlign &&
         LoadLittleEndian<std::uint16_t>(fmt + 14) == wav.bitsPerSample;
}

// The file by the sizes of its chunks, where the reader goes by their letters, which may stand
// anywhere: false when the chunks lead to another format or to audio elsewhere, true when they
// agree or lead nowhere.
bool AgreesWithChunks(const platform::File& file, const WAV_FILE_INFO& wav) {
  std::uint8_t chunk[kChunkHeaderBytes + kFormatBytes];
  bool sameFormat = true;
  std::uint64_t at = kRiffHeaderBytes;
  for (int chunks = 0; chunks < kMostChunks; ++chunks) {
    const std::size_t held = file.ReadAt(at, chunk, sizeof chunk);
    if (held < kChunkHeaderBytes) return true;
    at += kChunkHeaderBytes;
    if (std::memcmp(chunk, "data", 4) == 0) return sameFormat && at == wav.dataOffset;
    if (std::memcmp(chunk, "fmt ", 4) == 0 && held == sizeof chunk) {
      sameFormat = IsFormatOf(chunk + kChunkHeaderBytes, wav);
    }
    const std::uint64_t size = LoadLittleEndian<std::uint32_t>(chunk + 4);
    at += size + size % 2;
  }
  return true;
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

}  // namespace quorvan
