// WAV files for the tests (RIFF WAVE, EBU Tech 3285 and 3306), good and broken ones.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorvan::test {

struct WavChunk {
  std::string id{};  // four characters
  std::vector<std::uint8_t> body{};
  std::optional<std::uint32_t> claimedSize{};
};

// What to build. The defaults give a mono file of one second, 48 kHz and 24 bits, without bext.
struct WavSpec {
  std::string formId = "RIFF";  // "RF64" adds ds64 and sets the 32-bit sizes to 0xFFFFFFFF
  std::uint16_t formatTag = 1;
  std::uint16_t subFormat = 1;  // in a fmt chunk of 40 bytes
  std::uint16_t channels = 1;
  std::uint32_t sampleRate = 48000;
  std::uint16_t bits = 24;
  std::optional<std::uint16_t> blockAlign{};  // claimed; the audio keeps its own
  std::uint32_t fmtSize = 16;                 // 16, 18, 40 or any other; cut or zero filled
  std::uint64_t sampleFrames = 48000;
  // Value of a sample as a signed number of `bits` bits; PatternSample when empty.
  std::function<std::int32_t(std::uint32_t channel, std::uint64_t index)> sample{};

  std::optional<std::uint64_t> timeReference{};  // makes a bext chunk
  bool bextBehindData = false;
  std::vector<WavChunk> chunksFirst{};       // behind "WAVE" and ds64
  std::vector<WavChunk> chunksBeforeData{};  // behind fmt
  std::vector<WavChunk> chunksBehindData{};
  std::vector<std::string> omit{};          // ids of chunks that are left out
  std::optional<std::uint32_t> dataSize{};  // claimed sizes instead of the true ones
  std::optional<std::uint64_t> ds64DataSize{};
};

struct WavFile {
  std::vector<std::uint8_t> bytes{};
  // File offsets of the chunks' bodies, 0 for a bext that is not there, and bytes of audio.
  std::uint64_t bextOffset = 0, fmtOffset = 0, dataOffset = 0, dataBytes = 0;
};

WavFile BuildWav(const WavSpec& spec);

// Sample of a file whose description gives none: recognisable by channel and place, fits 16 bits.
std::int32_t PatternSample(std::uint32_t channel, std::uint64_t index);

}  // namespace quorvan::test
