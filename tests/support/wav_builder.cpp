#include "support/wav_builder.h"

#include <algorithm>

namespace quorvan::test {
namespace {

constexpr std::uint32_t kSizeInDs64 = 0xFFFFFFFF;
constexpr std::size_t kRiffSizeOffset = 4;
constexpr std::size_t kTimeReferenceOffset = 338;
constexpr std::size_t kBextTextBytes = 256;
constexpr std::uint32_t kPlainFmtSize = 16;
constexpr std::uint32_t kExtensibleFmtSize = 40;

using Bytes = std::vector<std::uint8_t>;

void PutLittle(Bytes& bytes, std::uint64_t value, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  }
}

void PatchLittle(Bytes& bytes, std::size_t offset, std::uint64_t value, std::size_t count) {
  for (std::size_t i = 0; i < count && offset + i < bytes.size(); ++i) {
    bytes[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
  }
}

std::uint32_t SampleBytes(const WavSpec& spec) {
  return (spec.bits + 7u) / 8u;
}

std::uint32_t FrameBytes(const WavSpec& spec) {
  return SampleBytes(spec) * spec.channels;
}

Bytes FmtBody(const WavSpec& spec) {
  const std::uint32_t blockAlign =
      spec.blockAlign.value_or(static_cast<std::uint16_t>(FrameBytes(spec)));
  Bytes body;
  PutLittle(body, spec.formatTag, 2);
  PutLittle(body, spec.channels, 2);
  PutLittle(body, spec.sampleRate, 4);
  PutLittle(body, std::uint64_t{spec.sampleRate} * blockAlign, 4);
  PutLittle(body, blockAlign, 2);
  PutLittle(body, spec.bits, 2);
  PutLittle(body, spec.fmtSize >= kExtensibleFmtSize ? kExtensibleFmtSize - kPlainFmtSize - 2 : 0,
            2);
  PutLittle(body, spec.bits, 2);
  PutLittle(body, 0, 4);  // speaker positions: none
  PutLittle(body, spec.subFormat, 2);
  body.resize(spec.fmtSize);
  return body;
}

Bytes BextBody(const WavSpec& spec) {
  Bytes body(spec.bextSize);
  const std::string description = "pattern";
  std::copy_n(description.begin(), std::min({description.size(), body.size(), kBextTextBytes}),
              body.begin());
  PatchLittle(body, kTimeReferenceOffset, *spec.timeReference, 8);
  return body;
}

Bytes DataBody(const WavSpec& spec) {
  const std::size_t width = SampleBytes(spec);
  // Eight bits and fewer are stored with an offset, all others signed.
  const std::int32_t offset = width == 1 ? 0x80 : 0;
  Bytes body;
  body.reserve(static_cast<std::size_t>(spec.sampleFrames * FrameBytes(spec)));
  for (std::uint64_t index = 0; index < spec.sampleFrames; ++index) {
    for (std::uint32_t channel = 0; channel < spec.channels; ++channel) {
      const std::int32_t value =
          spec.sample ? spec.sample(channel, index) : PatternSample(channel, index);
      PutLittle(body, static_cast<std::uint32_t>(value + offset), width);
    }
  }
  return body;
}

class WavWriter {
 public:
  explicit WavWriter(const WavSpec& spec) : spec_(spec) {}

  WavFile Build() {
    const bool rf64 = spec_.formId == "RF64";
    Tag(spec_.formId);
    PutLittle(file_.bytes, 0, 4);
    Tag("WAVE");
    if (rf64) file_.ds64Offset = Own("ds64", Bytes(spec_.ds64Size));
    Add(spec_.chunksFirst);
    if (!spec_.bextBehindData) AddBext();
    file_.fmtOffset = Own("fmt ", FmtBody(spec_));
    Add(spec_.chunksBeforeData);
    AddData(rf64);
    if (spec_.bextBehindData) AddBext();
    Add(spec_.chunksBehindData);
    SetSizes(rf64);
    if (spec_.truncateAt && *spec_.truncateAt < file_.bytes.size()) {
      file_.bytes.resize(static_cast<std::size_t>(*spec_.truncateAt));
    }
    return std::move(file_);
  }

 private:
  void Tag(const std::string& id) { file_.bytes.insert(file_.bytes.end(), id.begin(), id.end()); }

  std::uint64_t Chunk(const std::string& id, const Bytes& body,
                      std::optional<std::uint32_t> claimedSize) {
    Tag(id);
    PutLittle(file_.bytes, claimedSize.value_or(static_cast<std::uint32_t>(body.size())), 4);
    const std::uint64_t offset = file_.bytes.size();
    file_.bytes.insert(file_.bytes.end(), body.begin(), body.end());
    if (body.size() % 2 != 0) file_.bytes.push_back(0);
    return offset;
  }

  // A chunk that the description may leave out; the result is then 0.
  std::uint64_t Own(const std::string& id, const Bytes& body,
                    std::optional<std::uint32_t> claimedSize = {}) {
    if (std::find(spec_.omit.begin(), spec_.omit.end(), id) != spec_.omit.end()) return 0;
    return Chunk(id, body, claimedSize);
  }

  void Add(const std::vector<WavChunk>& chunks) {
    for (const WavChunk& chunk : chunks)
      Chunk(chunk.id, chunk.body, chunk.claimedSize);
  }

  void AddBext() {
    if (spec_.timeReference) file_.bextOffset = Own("bext", BextBody(spec_));
  }

  void AddData(bool rf64) {
    const Bytes body = DataBody(spec_);
    std::optional<std::uint32_t> claimed = spec_.dataSize;
    if (!claimed && rf64) claimed = kSizeInDs64;
    file_.dataOffset = Own("data", body, claimed);
    if (file_.dataOffset != 0) file_.dataBytes = body.size();
  }

  void SetSizes(bool rf64) {
    const std::uint64_t formSize = file_.bytes.size() - 8;
    PatchLittle(file_.bytes, kRiffSizeOffset, rf64 ? kSizeInDs64 : formSize, 4);
    if (file_.ds64Offset == 0) return;
    Bytes sizes;
    PutLittle(sizes, formSize, 8);
    PutLittle(sizes, spec_.ds64DataSize.value_or(file_.dataBytes), 8);
    PutLittle(sizes, spec_.sampleFrames, 8);
    std::copy_n(sizes.begin(), std::min<std::size_t>(sizes.size(), spec_.ds64Size),
                file_.bytes.begin() + static_cast<std::ptrdiff_t>(file_.ds64Offset));
  }

  const WavSpec& spec_;
  WavFile file_;
};

}  // namespace

WavFile BuildWav(const WavSpec& spec) {
  return WavWriter(spec).Build();
}

std::int32_t PatternSample(std::uint32_t channel, std::uint64_t index) {
  const std::uint64_t mixed = (index + 1) * 40503u + channel * 9973u;
  return static_cast<std::int32_t>((mixed ^ (mixed >> 16)) & 0xFFFF) - 0x8000;
}

}  // namespace quorvan::test
