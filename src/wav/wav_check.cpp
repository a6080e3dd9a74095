#include "wav/wav_check.h"

#include <algorithm>
#include <cstring>

#include "wav/little_endian.h"

namespace quorvan {
namespace {

constexpr std::uint64_t kRiffHeaderBytes = 12;  // "RIFF" or "RF64", size, "WAVE"
constexpr std::uint64_t kChunkHeaderBytes = 8;

// The body of a fmt chunk (bytes). In the extensible format, the first two bytes of the GUID say
// what the samples are.
constexpr std::size_t kFormatBytes = 16;
constexpr std::size_t kSubFormatPlace = 24;
constexpr std::size_t kExtensibleBytes = kSubFormatPlace + 2;
constexpr std::uint16_t kExtensibleTag = 0xFFFE;
constexpr std::uint16_t kPcmTag = 0x0001;
// Most chunks to follow in front of the audio. A longer chain is a run of zeros, read as chunks
// without a body.
constexpr int kMostChunks = 4096;

// True when the body of a fmt chunk, of which kFormatBytes stand at `fmt`, says the same as the
// library entry `wav`.
bool IsFormatOf(const std::uint8_t* fmt, const WAV_FILE_INFO& wav) {
  return LoadLittleEndian<std::uint16_t>(fmt) == wav.formatTag &&
         LoadLittleEndian<std::uint16_t>(fmt + 2) == wav.channels &&
         LoadLittleEndian<std::uint32_t>(fmt + 4) == wav.sampleRate &&
         LoadLittleEndian<std::uint16_t>(fmt + 12) == wav.blockAlign &&
         LoadLittleEndian<std::uint16_t>(fmt + 14) == wav.bitsPerSample;
}

// True when the body of a fmt chunk, of which `held` bytes stand at `fmt`, is of the extensible
// format and names a sub-format other than PCM.
bool IsForeign(const std::uint8_t* fmt, std::size_t held) {
  if (held < kExtensibleBytes || LoadLittleEndian<std::uint16_t>(fmt) != kExtensibleTag) {
    return false;
  }
  const auto subFormat = LoadLittleEndian<std::uint16_t>(fmt + kSubFormatPlace);
  return subFormat != 0 && subFormat != kPcmTag;
}

// Follows the chunks of the file by their sizes up to the audio and compares what they say with the
// entry `wav`, which comes from a search for the tags at every byte. kChanged when the chunks lead
// to another format or to audio elsewhere; kNotPcm when the format is no PCM; kUsable when they
// agree with the entry, or lead to no data chunk.
SourceState CompareWithChunks(const platform::File& file, const WAV_FILE_INFO& wav) {
  std::uint8_t chunk[kChunkHeaderBytes + kExtensibleBytes];
  SourceState format = SourceState::kUsable;
  std::uint64_t at = kRiffHeaderBytes;
  for (int chunks = 0; chunks < kMostChunks; ++chunks) {
    const std::size_t held = file.ReadAt(at, chunk, sizeof chunk);
    if (held < kChunkHeaderBytes) return SourceState::kUsable;
    at += kChunkHeaderBytes;
    if (std::memcmp(chunk, "data", 4) == 0) {
      return at == wav.dataOffset ? format : SourceState::kChanged;
    }
    const std::uint64_t size = LoadLittleEndian<std::uint32_t>(chunk + 4);
    if (std::memcmp(chunk, "fmt ", 4) == 0 && held >= kChunkHeaderBytes + kFormatBytes) {
      const std::uint8_t* fmt = chunk + kChunkHeaderBytes;
      const std::uint64_t bytes = std::min<std::uint64_t>(size, held - kChunkHeaderBytes);
      format = !IsFormatOf(fmt, wav)   ? SourceState::kChanged
               : IsForeign(fmt, bytes) ? SourceState::kNotPcm
                                       : SourceState::kUsable;
    }
    at += size + size % 2;
  }
  return SourceState::kUsable;
}

}  // namespace

bool IsPcm(const WAV_FILE_INFO& wav) {
  return wav.formatTag == kPcmTag || wav.formatTag == kExtensibleTag;
}

bool FitsClip(const WAV_FILE_INFO& wav, const MXF_AUDIO_INFO& audio) {
  if (!IsPcm(wav)) return false;
  const std::uint32_t held = std::uint32_t{wav.bytesPerChannelSample} * wav.channels;
  if (wav.blockAlign == 0 || wav.channels == 0 || held != wav.blockAlign) return false;
  const bool widened =
      wav.bitsPerSample == 16 && wav.bytesPerChannelSample == 2 && audio.quantizationBits == 24;
  return widened || wav.bytesPerChannelSample == audio.blockAlign;
}

SourceState CheckSource(const platform::File& file, const WAV_FILE_INFO& wav) {
  const auto size = file.Size();
  const auto times = file.Times();
  if (!size || !times) return SourceState::kUnreadable;
  if (*size != wav.findData.size || times->lastWrite != wav.findData.times.lastWrite) {
    return SourceState::kChanged;
  }
  const SourceState chunks = CompareWithChunks(file, wav);
  if (file.Trouble() != platform::ReadTrouble::kNone) return SourceState::kUnreadable;
  if (chunks != SourceState::kUsable) return chunks;
  if (wav.dataOffset > *size) return SourceState::kCutShort;
  const std::uint64_t rest = *size - wav.dataOffset;
  const bool unfinished = wav.dataSize < wav.blockAlign && rest >= wav.blockAlign;
  if (wav.dataSize > rest || unfinished) return SourceState::kCutShort;
  return SourceState::kUsable;
}

}  // namespace quorvan
