#include <algorithm>
#include <string_view>
#include <utility>

#include "support/clip_parts.h"

namespace quorvan::test {

const std::array<Label, 7> kCodingLabels{{
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x03, 4, 1, 2, 2, 1, 0x03, 0x03, 0},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x03, 4, 1, 2, 2, 1, 0x04, 0x03, 0},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x03, 4, 1, 2, 2, 1, 0x03, 0x02, 0},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x03, 4, 1, 2, 2, 1, 0x04, 0x02, 0},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x08, 4, 1, 2, 2, 1, 0x05, 0x02, 0},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x0A, 4, 1, 2, 2, 1, 0x32, 0x30, 1},
    {0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 0x0D, 4, 1, 2, 2, 1, 0x31, 0x60, 1},
}};

const std::array<std::uint8_t, 32> kMaterialUmid{
    0x06, 0x0A, 0x2B, 0x34, 1,    1,    1,    5,    1,    1,    0x0F, 0x20, 0x13, 0,    0,    0,
    0x4D, 0x31, 0x85, 0xC2, 0x17, 0x9E, 0x44, 0xA0, 0x8B, 0x5C, 0x6D, 0x02, 0xF1, 0x33, 0x90, 0x7E};
const std::array<std::uint8_t, 32> kSourceUmid{
    0x06, 0x0A, 0x2B, 0x34, 1,    1,    1,    5,    1,    1,    0x0D, 0x20, 0x13, 0,    0,    0,
    0x53, 0x72, 0x1B, 0xE9, 0x64, 0x0A, 0x4F, 0xD5, 0x91, 0x26, 0xB8, 0x7C, 0x3E, 0x49, 0x05, 0xAA};

namespace {

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
constexpr Label kSubLabel{0x06, 0x0E, 0x2B, 0x34, 1, 1, 1, 9, 6, 1, 1, 4, 6, 0x10, 0, 0};
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

class HeaderBuilder {
 public:
  explicit HeaderBuilder(const ClipSpec& spec) : spec_(spec), rate_(RowOf(spec.rate)) {}

  HeaderSets Build() {
    AddPrimer();
    AddPreface();
    AddIdentification();
    AddStorage();
    AddPackage(SetKind::kMaterialPackage, Umid(kMaterialUmid));
    AddPackage(SetKind::kSourcePackage, Umid(kSourceUmid));
    AddDescriptors();
    return std::move(sets_);
  }

 private:
  Bytes EditRate() const { return Big32(rate_.numerator) + Big32(rate_.denominator); }
  Bytes Duration() const { return Big64(spec_.frames); }

  MetadataSet& Add(SetKind kind) {
    sets_.push_back(EmptySet(kind, counts_[kind]++));
    return sets_.back();
  }

  // The identity that the set has or is going to get.
  static Bytes Reference(SetKind kind, std::size_t occurrence = 0) {
    return EmptySet(kind, occurrence).items.front().value;
  }

  Bytes Umid(const std::array<std::uint8_t, 32>& basic) const {
    Bytes umid(spec_.umidSize, 0x20);
    std::copy_n(basic.begin(), std::min(basic.size(), umid.size()), umid.begin());
    if (umid.size() > basic.size()) umid[11] = 0x33;
    return umid;
  }

  void AddPrimer() {
    MetadataSet& primer = Add(SetKind::kPrimer);
    primer.SetTag(tag::kInstanceUid, ToBytes(kInstanceUidLabel));
    if (Mpeg(spec_)) {
      primer.SetTag(spec_.bitRateTag, ToBytes(kBitRateLabel));
    } else {
      primer.SetTag(tag::kSubDescriptors, ToBytes(kSubLabel));
      primer.SetTag(tag::kAvcMaximumBitRate, ToBytes(kAvcRateLabel));
    }
  }

  void AddPreface() {
    MetadataSet& preface = Add(SetKind::kPreface);
    preface.SetTag(tag::kLastModifiedDate, kModifiedDate);
    preface.SetTag(tag::kVersion, {1, 3});
    preface.SetTag(tag::kIdentifications, Batch(1, 16, Reference(SetKind::kIdentification)));
    preface.SetTag(tag::kContentStorage, Reference(SetKind::kContentStorage));
    preface.SetTag(tag::kOperationalPattern, ToBytes(kOp1a));
    preface.SetTag(tag::kEssenceContainers, LabelBatch(EssenceContainers(spec_)));
    preface.SetTag(tag::kDescriptiveSchemes, Batch(0, 16, {}));
  }

  void AddIdentification() {
    MetadataSet& set = Add(SetKind::kIdentification);
    set.SetTag(tag::kThisGenerationUid, Bytes(16, 0x47));
    set.SetTag(tag::kCompanyName, Text(spec_.company));
    set.SetTag(tag::kProductName, Text(spec_.product));
    set.SetTag(tag::kVersionString, Text(spec_.version));
    set.SetTag(tag::kProductUid, Bytes(16, 0x50));
    set.SetTag(tag::kModificationDate, kModifiedDate);
    set.SetTag(tag::kPlatform, Text(spec_.platform));
  }

  void AddStorage() {
    MetadataSet& storage = Add(SetKind::kContentStorage);
    storage.SetTag(
        tag::kPackages,
        Batch(2, 16, Reference(SetKind::kMaterialPackage) + Reference(SetKind::kSourcePackage)));
    storage.SetTag(tag::kEssenceContainerData,
                   Batch(1, 16, Reference(SetKind::kEssenceContainerData)));
    MetadataSet& essence = Add(SetKind::kEssenceContainerData);
    essence.SetTag(tag::kLinkedPackageUid, Umid(kSourceUmid));
    essence.SetTag(tag::kIndexSid, Big32(kIndexSid));
    essence.SetTag(tag::kBodySid, Big32(kBodySid));
  }

  void AddPackage(SetKind kind, const Bytes& umid) {
    const std::uint32_t count = spec_.timecodeTracks + 1 + spec_.tracks + (spec_.dataTrack ? 1 : 0);
    Bytes tracks;
    for (std::uint32_t i = 0; i < count; ++i) {
      tracks = std::move(tracks) +
               Reference(SetKind::kTimelineTrack, counts_[SetKind::kTimelineTrack] + i);
    }
    MetadataSet& package = Add(kind);
    package.SetTag(tag::kPackageUid, umid);
    package.SetTag(tag::kPackageCreationDate, kCreationDate);
    package.SetTag(tag::kPackageModifiedDate, kModifiedDate);
    package.SetTag(tag::kTracks, Batch(count, 16, tracks));
    const bool source = kind == SetKind::kSourcePackage;
    if (source) package.SetTag(tag::kDescriptor, Reference(SetKind::kMultipleDescriptor));
    AddTracks(source);
  }

  void AddTracks(bool source) {
    std::uint32_t id = 1;
    for (std::uint32_t i = 0; i < spec_.timecodeTracks; ++i) {
      AddTrack(id++, 0, kTimecodeDef, SetKind::kTimecodeComponent);
      AddTimecodeComponent();
    }
    AddClipTrack(source, id++, kPictureKey, kPictureDef);
    for (std::uint32_t t = 0; t < spec_.tracks; ++t) {
      AddClipTrack(source, id++, AudioElementKey(spec_, t), kSoundDef);
    }
    if (spec_.dataTrack) AddClipTrack(source, id++, kDataKey, kDataDef);
  }

  void AddTrack(std::uint32_t id, std::uint32_t number, const Label& definition,
                SetKind component) {
    MetadataSet& track = Add(SetKind::kTimelineTrack);
    track.SetTag(tag::kTrackId, Big32(id));
    track.SetTag(tag::kTrackNumber, Big32(number));
    track.SetTag(tag::kEditRate, EditRate());
    track.SetTag(tag::kOrigin, Big64(0));
    track.SetTag(tag::kTrackSequence, Reference(SetKind::kSequence, counts_[SetKind::kSequence]));
    MetadataSet& sequence = Add(SetKind::kSequence);
    sequence.SetTag(tag::kDataDefinition, ToBytes(definition));
    sequence.SetTag(tag::kDuration, Duration());
    sequence.SetTag(tag::kStructuralComponents,
                    Batch(1, 16, Reference(component, counts_[component])));
  }

  void AddTimecodeComponent() {
    MetadataSet& component = Add(SetKind::kTimecodeComponent);
    component.SetTag(tag::kDataDefinition, ToBytes(kTimecodeDef));
    component.SetTag(tag::kDuration, Duration());
    component.SetTag(tag::kStartTimecode,
                     Big64(FrameCount(spec_.start, spec_.rate, spec_.dropFrame)));
    component.SetTag(tag::kRoundedTimecodeBase, Big16(static_cast<std::uint16_t>(rate_.base)));
    component.SetTag(tag::kDropFrame, {static_cast<std::uint8_t>(spec_.dropFrame)});
  }

  void AddClipTrack(bool source, std::uint32_t id, const Label& element, const Label& definition) {
    std::uint32_t number = 0;
    for (std::size_t i = 12; source && i < element.size(); ++i)
      number = number << 8 | element[i];
    AddTrack(id, number, definition, SetKind::kSourceClip);
    MetadataSet& clip = Add(SetKind::kSourceClip);
    clip.SetTag(tag::kDataDefinition, ToBytes(definition));
    clip.SetTag(tag::kDuration, Duration());
    clip.SetTag(tag::kStartPosition, Big64(0));
    clip.SetTag(tag::kSourcePackageId, source ? Bytes(spec_.umidSize) : Umid(kSourceUmid));
    clip.SetTag(tag::kSourceTrackId, Big32(source ? 0 : id));
  }

  void AddDescriptors() {
    const SetKind picture = Mpeg(spec_) ? SetKind::kMpegVideoDescriptor : SetKind::kCdciDescriptor;
    const SetKind audio = spec_.waveAudio ? SetKind::kWaveDescriptor : SetKind::kAes3Descriptor;
    Bytes references = Reference(picture);
    for (std::uint32_t t = 0; t < spec_.tracks; ++t) {
      references = std::move(references) + Reference(audio, t);
    }
    if (spec_.dataTrack) references = std::move(references) + Reference(SetKind::kDataDescriptor);
    AddDescriptor(SetKind::kMultipleDescriptor, kMultiple)
        .SetTag(tag::kSubDescriptorUids, Batch(references.size() / 16, 16, references));
    std::uint32_t id = spec_.timecodeTracks + 1;
    AddPicture(picture, id++);
    for (std::uint32_t t = 0; t < spec_.tracks; ++t)
      AddAudio(audio, id++);
    if (spec_.dataTrack) {
      AddDescriptor(SetKind::kDataDescriptor, kDataFrames).SetTag(tag::kLinkedTrackId, Big32(id));
    }
  }

  MetadataSet& AddDescriptor(SetKind kind, const Label& container) {
    MetadataSet& set = Add(kind);
    set.SetTag(tag::kSampleRate, EditRate());
    set.SetTag(tag::kContainerDuration, Duration());
    set.SetTag(tag::kEssenceContainer, ToBytes(container));
    return set;
  }

  void AddPicture(SetKind kind, std::uint32_t id) {
    MetadataSet& set = AddDescriptor(kind, PictureContainer(spec_));
    set.SetTag(tag::kLinkedTrackId, Big32(id));
    set.SetTag(tag::kPictureEssenceCoding, ToBytes(kCodingLabels.at(spec_.codec)));
    set.SetTag(tag::kStoredHeight, Big32(spec_.height));
    set.SetTag(tag::kStoredWidth, Big32(spec_.width));
    set.SetTag(tag::kDisplayHeight, Big32(spec_.height));
    set.SetTag(tag::kDisplayWidth, Big32(spec_.width));
    set.SetTag(tag::kFrameLayout, {spec_.frameLayout});
    set.SetTag(tag::kAspectRatio, Big32(spec_.aspectNumerator) + Big32(spec_.aspectDenominator));
    set.SetTag(tag::kComponentDepth, Big32(8));
    set.SetTag(tag::kHorizontalSubsampling, Big32(2));
    if (Mpeg(spec_)) {
      set.SetTag(spec_.bitRateTag, Big32(spec_.bitRate));
      return;
    }
    set.SetTag(tag::kSubDescriptors, Batch(1, 16, Reference(SetKind::kAvcSubDescriptor)));
    Add(SetKind::kAvcSubDescriptor).SetTag(tag::kAvcMaximumBitRate, Big32(spec_.bitRate));
  }

  void AddAudio(SetKind kind, std::uint32_t id) {
    const std::uint32_t blockAlign = spec_.bits / 8;
    MetadataSet& set = AddDescriptor(kind, AudioContainer(spec_));
    set.SetTag(tag::kLinkedTrackId, Big32(id));
    set.SetTag(tag::kQuantizationBits, Big32(spec_.bits));
    set.SetTag(tag::kLocked, {1});
    set.SetTag(tag::kAudioSamplingRate, Big32(kSampleRate) + Big32(1));
    set.SetTag(tag::kChannelCount, Big32(1));
    set.SetTag(tag::kAvgBps, Big32(kSampleRate * blockAlign));
    set.SetTag(tag::kBlockAlign, Big16(static_cast<std::uint16_t>(blockAlign)));
  }

  const ClipSpec& spec_;
  const RateRow& rate_;
  HeaderSets sets_;
  std::map<SetKind, std::size_t> counts_;
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
