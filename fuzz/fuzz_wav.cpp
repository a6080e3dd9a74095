// Fuzz target: reads the input as a WAV file, compares the result with a plain form of the same
// scan, and calculates the place on the timeline for every rate, base and drop frame flag.

#include <algorithm>
#include <cstdlib>
#include <span>
#include <string_view>

#include "memory_file.h"
#include "mxf/sample_pattern.h"
#include "timecode/timecode.h"
#include "wav/wav_header.h"

namespace quorvan {
namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

struct PlainScan {
  WavResult result;
  std::uint64_t dataOffset;
  std::uint32_t dataSize;
};

// The plain form of the scan: looks at the four bytes at each place in turn, straight from memory.
PlainScan ScanPlainly(std::span<const std::uint8_t> file) {
  PlainScan scan{kWavOk, 0, 0};
  const auto group = [&](std::uint64_t at) {
    return at + 4 > file.size()
               ? std::string_view()
               : std::string_view(reinterpret_cast<const char*>(file.data()) + at, 4);
  };
  const auto number = [&](std::uint64_t at) {
    std::uint32_t value = 0;
    for (std::uint32_t i = 0; i < 4; ++i)
      value |= std::uint32_t{file[at + i]} << (8 * i);
    return value;
  };
  bool riff = false, rf64 = false, wave = false, ds64 = false, fmt = false, bext = false;
  bool data = false;
  std::uint64_t limit = file.size();
  for (std::uint64_t at = 0; at < limit;) {
    const std::string_view tag = group(at);
    const bool known = tag == "RIFF" || tag == "RF64" || tag == "WAVE" || tag == "ds64" ||
                       tag == "fmt " || tag == "bext" || tag == "data" || tag == "FORM";
    if (known && group(at + 4).empty()) return {kWavHeaderIncomplete, 0, 0};
    const std::uint32_t size = known ? number(at + 4) : 0;
    at += known && tag != "WAVE" ? 8 : 4;
    const bool entered = tag == "ds64" || tag == "bext" || (tag == "fmt " && size >= 4);
    if (entered) at = std::min<std::uint64_t>(at + size, file.size());
    riff |= tag == "RIFF";
    rf64 |= tag == "RF64";
    wave |= tag == "WAVE";
    ds64 |= tag == "ds64";
    bext |= tag == "bext";
    fmt |= tag == "fmt " && entered;
    if (tag == "data") {
      data = true;
      limit = scan.dataOffset = at;
      scan.dataSize = size;
    }
    if (!(riff || rf64 || wave || ds64 || fmt || bext || data)) break;
    at -= 3;
  }
  if (!(riff || rf64 || wave || ds64 || fmt || bext || data))
    scan.result = kWavNotWave;
  else if (!(wave && fmt && data && (rf64 ? ds64 : riff)))
    scan.result = kWavHeaderIncomplete;
  return scan;
}

void CheckPositions(const WAV_HEADER_INFO& read) {
  for (std::uint32_t rate = 0; rate < kRateCount; ++rate) {
    const std::uint32_t longest = *std::max_element(kSamplePattern[rate], kSamplePattern[rate + 1]);
    for (std::uint32_t base = 0; base <= kTimecodeBases; ++base) {
      for (const std::uint32_t dropFrame : {0u, 1u, 255u}) {
        WAV_HEADER_INFO header = read;
        Require(ComputeWavPosition(&header, rate, base, dropFrame) == 1);
        Require(header.samplePosition[0] <= header.samplePosition[1]);
        Require(std::max(header.sampleRemainder[0], header.sampleRemainder[1]) <= longest);
        Require(header.startsInLastHour <= 1);
      }
    }
  }
}

void CheckHeader(const WAV_HEADER_INFO& header, const PlainScan& plain, std::size_t fileSize) {
  Require(header.dataOffset == plain.dataOffset && header.dataChunkSize == plain.dataSize);
  Require(header.dataOffset <= fileSize);
  Require(header.channels != 0 && header.blockAlign >= header.channels);
}

}  // namespace
}  // namespace quorvan

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvan;
  static fuzz::MemoryFile file;
  file.Replace(data, size);
  WAV_HEADER_INFO header{};
  const WavResult result = ReadWavHeader(file.Path().c_str(), &header);
  const PlainScan plain = ScanPlainly({data, size});
  // The reader also refuses a file for its format, which the plain scan does not look at.
  Require(result == plain.result ||
          (plain.result == kWavOk && result == kWavHeaderIncomplete &&
           (header.channels == 0 || header.blockAlign < header.channels)));
  if (result != kWavOk) return 0;
  CheckHeader(header, plain, size);
  CheckPositions(header);
  return 0;
}
