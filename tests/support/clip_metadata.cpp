#include <algorithm>
#include <string_view>
#include <utility>

#include "support/clip_parts.h"
#include "timecode/timecode.h"

namespace quorvan::test {

const std::array<std::uint8_t, 32> kMaterialUmid{
    0x06, 0x0A, 0x2B, 0x34, 1,    1,    1,    5,    1,    1,    0x0F, 0x20, 0x13, 0,    0,    0,
    0x4D, 0x31, 0x85, 0xC2, 0x17, 0x9E, 0x44, 0xA0, 0x8B, 0x5C, 0x6D, 0x02, 0xF1, 0x33, 0x90, 0x7E};
const std::array<std::uint8_t, 32> kSourceUmid{
    0x06, 0x0A, 0x2B, 0x34, 1,    1,    1,    5,    1,    1,    0x0D, 0x20, 0x13, 0,    0,    0,
    0x53, 0x72, 0x1B, 0xE9, 0x64, 0x0A, 0x4F, 0xD5, 0x91, 0x26, 0xB8, 0x7C, 0x3E, 0x49, 0x05, 0xAA};

namespace {

// By ClipSpec::codec.
constexpr std::array<Label, 7> kCodingLabels{{
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x03, 4, 1, 2, 2, 1, 0x03, 0x03, 0},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x03, 4, 1, 2, 2, 1, 0x04, 0x03, 0},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x03, 4, 1, 2, 2, 1, 0x03, 0x02, 0},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x03, 4, 1, 2, 2, 1, 0x04, 0x02, 0},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x08, 4, 1, 2, 2, 1, 0x05, 0x02, 0},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x0A, 4, 1, 2, 2, 1, 0x32, 0x30, 1},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x0D, 4, 1, 2, 2, 1, 0x31, 0x60, 1},
}};

constexpr std::uint32_t kSampleRate = 48000;
constexpr std::uint32_t kFirstAvcRow = 5;

constexpr Label kMultiple{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 3, 0x0D, 1, 3, 1, 2, 0x7F, 1, 0};
constexpr Label kMpegFrames{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 2, 0x0D, 1, 3, 1, 2, 4, 0x60, 1};
constexpr Label kAvcFrames{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x0A, 0x0D, 1, 3, 1, 2, 0x10, 0x60, 1};
constexpr Label kAes3Frames{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 1, 0x0D, 1, 3, 1, 2, 6, 3, 0};
constexpr Label kWaveFrames{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 1, 0x0D, 1, 3, 1, 2, 6, 1, 0};
constexpr Label kDataFrames{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 9, 0x0D, 1, 3, 1, 2, 0x0E, 0, 0};
constexpr Label kTimecodeDef{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 1, 1, 3, 2, 1, 1, 0, 0, 0};
constexpr Label kPictureDef{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 1, 1, 3, 2, 2, 1, 0, 0, 0};
constexpr Label kSoundDef{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 1, 1, 3, 2, 2, 2, 0, 0, 0};
constexpr Label kDataDef{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 1, 1, 3, 2, 2, 3, 0, 0, 0};
constexpr Label kAudioKey{0x06, 0x0E, 0x2B, 0x34, 1, 2, 1, 1, 0x0D, 1, 3, 1, 0x16, 0, 3, 0};

// What the Primer Pack names: one plain tag and the dynamic ones.
constexpr Label kInstanceUidLabel{0x06, 0x0E, 0x2B, 0x34, 1, 1, 1, 1, 1, 1, 0x15, 2, 0, 0, 0, 0};
constexpr Label kBitRateLabel{0x06, 0x0E, 0x2B, 0x34, 1, 1, 1, 5, 4, 1, 6, 2, 1, 0x0B, 0, 0};
constexpr Label kAvcRateLabel{0x06, 0x0E, 0x2B, 0x34, 1, 1, 1, 0x0E, 4, 1, 6, 6, 1, 0x0B, 0, 0};

const Bytes kCreationDate{0x07, 0xE8, 3, 5, 14, 7, 9, 0};
const Bytes kModifiedDate{0x07, 0xE8, 3, 6, 8, 30, 0, 0};

Bytes Text(std::u16string_view text) {
  Bytes bytes;
  for (const char16_t unit : text)
    bytes = std::move(bytes) + Big16(unit);
  return bytes;
}

bool Mpeg(const ClipSpec& spec) {
  return spec.codec < kFirstAvcRow;
}

Label PictureContainer(const ClipSpec& spec) {
  return Mpeg(spec) ? kMpegFrames : kAvcFrames;
}

Label AudioContainer(const ClipSpec& spec) {
  return spec.waveAudio ? kWaveFrames : kAes3Frames;
}

// References to sets, which no reader follows.
Bytes References(std::size_t count) {
  return Batch(count, sizeof(Label), Bytes(count * sizeof(Label)));
}

class HeaderBuilder {
 public:
  explicit HeaderBuilder(const ClipSpec& spec) : spec_(spec), rate_(RowOf(spec.rate)) {}

  HeaderSets Build() {
    Add(SetKind::kPrimer,
        {{tag::kInstanceUid, ToBytes(kInstanceUidLabel)},
         Mpeg(spec_) ? MetadataItem{spec_.bitRateTag, ToBytes(kBitRateLabel)}
                     : MetadataItem{tag::kAvcMaximumBitRate, ToBytes(kAvcRateLabel)}});
    Add(SetKind::kPreface, {{tag::kVersion, {1, 3}},
                            {tag::kOperationalPattern, ToBytes(kOp1a)},
                            {tag::kEssenceContainers, LabelBatch(EssenceContainers(spec_))}});
    Add(SetKind::kIdentification, {{tag::kCompanyName, Text(u"Northlight")},
                                   {tag::kProductName, Text(u"Bench Writer")},
                                   {tag::kVersionString, Text(u"1.2.3")},
                                   {tag::kPlatform, Text(u"Bench")}});
    Add(SetKind::kContentStorage,
        {{tag::kPackages, References(2)}, {tag::kEssenceContainerData, References(1)}});
    Add(SetKind::kEssenceContainerData, {{tag::kLinkedPackageUid, Umid(kSourceUmid)},
                                         {tag::kIndexSid, Big32(kIndexSid)},
                                         {tag::kBodySid, Big32(kBodySid)}});
    AddPackage(SetKind::kMaterialPackage, kMaterialUmid, Umid(kSourceUmid));
    AddPackage(SetKind::kSourcePackage, kSourceUmid, Bytes(spec_.umidSize));
    AddDescriptors();
    return std::move(sets_);
  }

 private:
  void Add(SetKind kind, const std::vector<MetadataItem>& items) {
    sets_.push_back(EmptySet(kind, sets_.size(), items));
  }

  Bytes Umid(const std::array<std::uint8_t, 32>& basic) const {
    Bytes umid(spec_.umidSize, 0x20);
    std::copy_n(basic.begin(), std::min(basic.size(), umid.size()), umid.begin());
    if (umid.size() > basic.size()) umid[11] = 0x33;
    return umid;
  }

  // A package with its tracks, whose clips come from the package of UMID `clipsOf`.
  void AddPackage(SetKind kind, const std::array<std::uint8_t, 32>& umid, const Bytes& clipsOf) {
    std::vector<Label> definitions(spec_.timecodeTracks, kTimecodeDef);
    definitions.push_back(kPictureDef);
    definitions.resize(definitions.size() + spec_.tracks, kSoundDef);
    if (spec_.dataTrack) definitions.push_back(kDataDef);
    Add(kind, {{tag::kPackageUid, Umid(umid)},
               {tag::kPackageCreationDate, kCreationDate},
               {tag::kPackageModifiedDate, kModifiedDate},
               {tag::kTracks, References(definitions.size())}});
    const auto base = static_cast<std::uint16_t>(FramesPerSecond(rate_.fpsIndex));
    for (const Label& definition : definitions) {
      std::vector<MetadataItem> items = {{tag::kDataDefinition, ToBytes(definition)},
                                         {tag::kDuration, Big64(spec_.frames)}};
      Add(SetKind::kTimelineTrack, {});
      Add(SetKind::kSequence, items);
      if (definition == kTimecodeDef) {
        const std::uint32_t start = FrameCount(spec_.start, spec_.rate, spec_.dropFrame);
        items.push_back({tag::kStartTimecode, Big64(start)});
        items.push_back({tag::kRoundedTimecodeBase, Big16(base)});
        items.push_back({tag::kDropFrame, {spec_.dropFrame}});
        Add(SetKind::kTimecodeComponent, items);
      } else {
        items.push_back({tag::kSourcePackageId, clipsOf});
        Add(SetKind::kSourceClip, items);
      }
    }
  }

  void AddDescriptors() {
    AddDescriptor(SetKind::kMultipleDescriptor, kMultiple, {});
    AddDescriptor(Mpeg(spec_) ? SetKind::kMpegVideoDescriptor : SetKind::kCdciDescriptor,
                  PictureContainer(spec_),
                  {{tag::kPictureEssenceCoding, ToBytes(kCodingLabels.at(spec_.codec))},
                   {tag::kDisplayHeight, Big32(spec_.height)},
                   {tag::kDisplayWidth, Big32(spec_.width)},
                   {tag::kFrameLayout, {spec_.frameLayout}},
                   {tag::kAspectRatio, Big32(16) + Big32(9)}});
    if (Mpeg(spec_)) {
      sets_.back().SetTag(spec_.bitRateTag, Big32(spec_.bitRate));
    } else {
      Add(SetKind::kAvcSubDescriptor, {{tag::kAvcMaximumBitRate, Big32(spec_.bitRate)}});
    }
    const std::uint32_t blockAlign = spec_.bits / 8;
    for (std::uint32_t t = 0; t < spec_.tracks; ++t) {
      AddDescriptor(spec_.waveAudio ? SetKind::kWaveDescriptor : SetKind::kAes3Descriptor,
                    AudioContainer(spec_),
                    {{tag::kQuantizationBits, Big32(spec_.bits)},
                     {tag::kAudioSamplingRate, Big32(kSampleRate) + Big32(1)},
                     {tag::kAvgBps, Big32(kSampleRate * blockAlign)},
                     {tag::kBlockAlign, Big16(static_cast<std::uint16_t>(blockAlign))}});
    }
    if (spec_.dataTrack) AddDescriptor(SetKind::kDataDescriptor, kDataFrames, {});
  }

  void AddDescriptor(SetKind kind, const Label& container, const std::vector<MetadataItem>& items) {
    Add(kind, {{tag::kSampleRate, Big32(rate_.numerator) + Big32(rate_.denominator)},
               {tag::kContainerDuration, Big64(spec_.frames)},
               {tag::kEssenceContainer, ToBytes(container)}});
    sets_.back().items.insert(sets_.back().items.end(), items.begin(), items.end());
  }

  const ClipSpec& spec_;
  const RateRow& rate_;
  HeaderSets sets_;
};

}  // namespace

HeaderSets BuildHeaderSets(const ClipSpec& spec) {
  return HeaderBuilder(spec).Build();
}

std::vector<Label> EssenceContainers(const ClipSpec& spec) {
  std::vector<Label> labels{kMultiple, PictureContainer(spec), AudioContainer(spec)};
  if (spec.dataTrack) labels.push_back(kDataFrames);
  return labels;
}

Label AudioElementKey(const ClipSpec& spec, std::uint32_t track) {
  Label key = kAudioKey;
  key[13] = static_cast<std::uint8_t>(spec.tracks);
  key[14] = spec.waveAudio ? 1 : 3;
  key[15] = static_cast<std::uint8_t>(track + 1);
  return key;
}

}  // namespace quorvan::test
