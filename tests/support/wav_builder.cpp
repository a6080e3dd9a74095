#include "support/wav_builder.h"

#include <algorithm>

namespace quorvan::test {
namespace {

constexpr std::uint32_t kSizeInDs64 = 0xFFFFFFFF;
constexpr std::size_t kRiffSizeOffset = 4;
constexpr std::size_t kTimeReferenceOffset = 338;
constexpr std::size_t kBextBytes = 602;
constexpr std::size_t kDs64Offset = 20;
constexpr std::size_t kDs64Bytes = 28;
constexpr std::uint32_t kPlainFmtSize = 16;
constexpr std::uint32_t kExtensibleFmtSize = 40;

using Bytes = std::vector<std::uint8_t>;

void PatchLittle(Bytes& bytes, std::size_t offset, std::uint64_t value, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    bytes.at(offset + i) = static_cast<std::uint8_t>(value >> (8 * i));
}

void PutLittle(Bytes& bytes, std::uint64_t value, std::size_t count) {
  bytes.resize(bytes.size() + count);
  PatchLittle(bytes, bytes.size() - count, value, count);
}

std::uint32_t SampleBytes(const WavSpec& spec) {
  return (spec.bits + 7u) / 8u;
}

Bytes FmtBody(const WavSpec& spec) {
  const std::uint32_t blockAlign =
      spec.blockAlign.value_or(static_cast<std::uint16_t>(SampleBytes(spec) * spec.channels));
  const std::uint32_t extension =
      spec.fmtSize >= kExtensibleFmtSize ? kExtensibleFmtSize - kPlainFmtSize - 2 : 0;
  Bytes body;
  for (const std::uint32_t number :
       {std::uint32_t{spec.channels} << 16 | spec.formatTag, spec.sampleRate,
        spec.sampleRate * blockAlign, std::uint32_t{spec.bits} << 16 | blockAlign,
        std::uint32_t{spec.bits} << 16 | extension, 0u, std::uint32_t{spec.subFormat}})
    PutLittle(body, number, 4);
  body.resize(spec.fmtSize);
  return body;
}

Bytes DataBody(const WavSpec& spec) {
  const std::size_t width = SampleBytes(spec);
  // Eight bits and fewer are stored with an offset, all others signed.
  const std::int32_t offset = width == 1 ? 0x80 : 0;
  Bytes body;
  for (std::uint64_t index = 0; index < spec.sampleFrames; ++index) {
    for (std::uint32_t channel = 0; channel < spec.channels; ++channel) {
      const std::int32_t value =
          spec.sample ? spec.sample(channel, index) : PatternSample(channel, index);
      PutLittle(body, static_cast<std::uint32_t>(value + offset), width);
    }
  }
  return body;
}

}  // namespace

WavFile BuildWav(const WavSpec& spec) {
  WavFile file;
  const auto put = [&file](const std::string& text) {
    file.bytes.insert(file.bytes.end(), text.begin(), text.end());
  };
  // Returns where the body starts, 0 when the chunk is left out.
  const auto add = [&](const WavChunk& chunk) -> std::uint64_t {
    if (std::count(spec.omit.begin(), spec.omit.end(), chunk.id) != 0) return 0;
    put(chunk.id);
    const auto size = static_cast<std::uint32_t>(chunk.body.size());
    PutLittle(file.bytes, chunk.claimedSize.value_or(size), 4);
    file.bytes.insert(file.bytes.end(), chunk.body.begin(), chunk.body.end());
    if (size % 2 != 0) file.bytes.push_back(0);
    return file.bytes.size() - size - size % 2;
  };
  const bool rf64 = spec.formId == "RF64";
  put(spec.formId + "size" + "WAVE");
  if (rf64) add({"ds64", Bytes(kDs64Bytes)});
  std::for_each(spec.chunksFirst.begin(), spec.chunksFirst.end(), add);
  const auto addBext = [&] {
    if (!spec.timeReference) return;
    file.bextOffset = add({"bext", Bytes(kBextBytes)});
    PatchLittle(file.bytes, file.bextOffset + kTimeReferenceOffset, *spec.timeReference, 8);
  };
  if (!spec.bextBehindData) addBext();
  file.fmtOffset = add({"fmt ", FmtBody(spec)});
  std::for_each(spec.chunksBeforeData.begin(), spec.chunksBeforeData.end(), add);
  const Bytes data = DataBody(spec);
  const auto claimed = spec.dataSize || !rf64 ? spec.dataSize : kSizeInDs64;
  file.dataOffset = add({"data", data, claimed});
  file.dataBytes = data.size();
  if (spec.bextBehindData) addBext();
  std::for_each(spec.chunksBehindData.begin(), spec.chunksBehindData.end(), add);

  const std::uint64_t formSize = file.bytes.size() - 8;
  PatchLittle(file.bytes, kRiffSizeOffset, rf64 ? kSizeInDs64 : formSize, 4);
  if (rf64) {
    PatchLittle(file.bytes, kDs64Offset, formSize, 8);
    PatchLittle(file.bytes, kDs64Offset + 8, spec.ds64DataSize.value_or(file.dataBytes), 8);
    PatchLittle(file.bytes, kDs64Offset + 16, spec.sampleFrames, 8);
  }
  return file;
}

std::int32_t PatternSample(std::uint32_t channel, std::uint64_t index) {
  const std::uint64_t mixed = (index + 1) * 40503u + channel * 9973u;
  return static_cast<std::int32_t>((mixed ^ (mixed >> 16)) & 0xFFFF) - 0x8000;
}

}  // namespace quorvan::test
