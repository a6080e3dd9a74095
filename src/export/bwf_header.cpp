#include "export/bwf_header.h"

#include <algorithm>
#include <string_view>

#include "mxf/sample_pattern.h"

namespace quorvan {
namespace {

constexpr std::uint32_t kSizeElsewhere = 0xFFFFFFFF;  // the size stands in the ds64 chunk
constexpr std::uint64_t kBehindFormSize = 706;        // header bytes behind the form's size field

constexpr std::uint32_t kDs64Size = 28;
constexpr std::uint32_t kFmtSize = 40;
constexpr std::uint32_t kBextSize = 602;
constexpr std::uint16_t kPcm = 1;
constexpr std::uint16_t kBextVersion = 1;

// Bytes of fields that stay zero.
constexpr std::size_t kFmtRest = 22;         // valid bits, channel mask, sub format
constexpr std::size_t kBextTexts = 338;      // from description to origination time
constexpr std::size_t kBextRest = 64 + 190;  // UMID; loudness and reserved fields

// Fills the header from its start on, little-endian.
class Writer {
 public:
  explicit Writer(BwfHeader* header) : header_(*header) {}

  void Id(std::string_view id) {
    for (const char letter : id)
      header_[at_++] = static_cast<std::uint8_t>(letter);
  }
  template <typename Number>
  void Put(Number value) {
    for (std::size_t b = 0; b < sizeof value; ++b)
      header_[at_++] = static_cast<std::uint8_t>(std::uint64_t{value} >> (8 * b));
  }
  void Skip(std::size_t bytes) { at_ += bytes; }

 private:
  BwfHeader& header_;
  std::size_t at_ = 0;
};

}  // namespace

BwfHeader MakeBwfHeader(const MXF_AUDIO_INFO& audio, const BwfDescription& description) {
  const bool isLong = description.dataBytes > kMostRiffAudioBytes;
  const std::uint64_t formSize = description.dataBytes + kBehindFormSize;
  const auto in32 = [&](std::uint64_t size) {
    return isLong ? kSizeElsewhere : static_cast<std::uint32_t>(size);
  };
  const auto in64 = [&](std::uint64_t size) { return isLong ? size : std::uint64_t{0}; };

  BwfHeader header{};
  Writer writer(&header);
  writer.Id(isLong ? "RF64" : "RIFF");
  writer.Put(in32(formSize));
  writer.Id("WAVE");

  writer.Id(isLong ? "ds64" : "JUNK");
  writer.Put(kDs64Size);
  writer.Put(in64(formSize));
  writer.Put(in64(description.dataBytes));
  writer.Put(in64(description.dataBytes / std::max<std::uint32_t>(audio.blockAlign, 1)));
  writer.Put(std::uint32_t{0});  // no table

  writer.Id("fmt ");
  writer.Put(kFmtSize);
  writer.Put(kPcm);
  writer.Put(std::uint16_t{1});  // one channel
  writer.Put(audio.sampleRate);
  writer.Put(audio.avgBytesPerSecond);
  writer.Put(audio.blockAlign);
  writer.Put(static_cast<std::uint16_t>(audio.quantizationBits));
  writer.Put(description.extensionSize);
  writer.Skip(kFmtRest);

  writer.Id("bext");
  writer.Put(kBextSize);
  writer.Skip(kBextTexts);
  writer.Put(description.timeReference);
  writer.Put(kBextVersion);
  writer.Skip(kBextRest);

  writer.Id("data");
  writer.Put(in32(description.dataBytes));
  return header;
}

std::uint64_t SamplesInFrames(std::uint64_t frames, std::uint32_t rateIndex) {
  std::uint64_t ring = 0;
  for (std::uint64_t f = 0; f < kPatternFrames; ++f)
    ring += SamplesInFrame(rateIndex, f);
  std::uint64_t samples = frames / kPatternFrames * ring;
  for (std::uint64_t f = frames / kPatternFrames * kPatternFrames; f < frames; ++f)
    samples += SamplesInFrame(rateIndex, f);
  return samples;
}

}  // namespace quorvan
