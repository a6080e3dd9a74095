#include <algorithm>
#include <array>
#include <cstring>

#include "mxf/analysis.h"
#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/metadata_set.h"
#include "mxf/metadata/package_uid.h"
#include "mxf/metadata/readers.h"
#include "mxf/sample_pattern.h"
#include "platform/text.h"

namespace quorvan {
namespace {

constexpr std::uint32_t kUhdWidth = 3840;

constexpr KlvKey kMultipleWrappings = {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x03,
                                       0x0D, 0x01, 0x03, 0x01, 0x02, 0x7F, 0x01, 0x00};
constexpr KlvKey kBitRateLabel = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x05,
                                  0x04, 0x01, 0x06, 0x02, 0x01, 0x0B, 0x00, 0x00};

struct VideoCoding {
  KlvKey label;
  const char16_t* name;
};

// The video codings of clips that can be rewritten. codecIndex is the row.
constexpr std::array<VideoCoding, 7> kVideoCodings = {{
    {{0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x03, 0x04, 0x01, 0x02, 0x02, 0x01, 0x03, 0x03,
      0x00},
     u"MPEG2 HD MP@HL"},
    {{0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x03, 0x04, 0x01, 0x02, 0x02, 0x01, 0x04, 0x03,
      0x00},
     u"MPEG2 HD422P@HL"},
    {{0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x03, 0x04, 0x01, 0x02, 0x02, 0x01, 0x03, 0x02,
      0x00},
     u"MPEG2 i HD MP@HL"},
    {{0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x03, 0x04, 0x01, 0x02, 0x02, 0x01, 0x04, 0x02,
      0x00},
     u"MPEG2 i HD422P@HL"},
    {{0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x08, 0x04, 0x01, 0x02, 0x02, 0x01, 0x05, 0x02,
      0x00},
     u"MPEG2 i MP@H14L"},
    {{0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x0A, 0x04, 0x01, 0x02, 0x02, 0x01, 0x32, 0x30,
      0x01},
     u"XAVC Intra"},
    {{0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x0D, 0x04, 0x01, 0x02, 0x02, 0x01, 0x31, 0x60,
      0x01},
     u"XAVC L422 QFHD"},
}};
constexpr std::uint8_t kXavcIntra = 5;
constexpr std::uint8_t kXavcLong = 6;
constexpr char16_t kUnlistedCoding[] = u"not in list";

struct EditRate {
  std::uint32_t numerator;
  std::uint32_t denominator;
};

// The edit rates that have a number. rateIndex is the row.
constexpr std::array<EditRate, 8> kEditRates = {
    {{24, 1}, {25, 1}, {30, 1}, {50, 1}, {60, 1}, {24000, 1001}, {30000, 1001}, {60000, 1001}}};

// Items of a picture descriptor. The first row of the tag table with the tag of an item decides
// which item it is.
enum class PictureItem {
  kCoding,
  kHeight,
  kWidth,
  kAspectRatio,
  kFrameLayout,
  kPassedOver,
  kBitRate,
  kEditRate,
};
struct PictureRow {
  std::uint16_t tag;
  PictureItem item;
};
using PictureTags = std::array<PictureRow, 10>;

constexpr PictureTags PictureTagsWith(std::uint16_t bitRateTag) {
  return {{{tags::kPictureCoding, PictureItem::kCoding},
           {tags::kStoredHeight, PictureItem::kHeight},
           {tags::kStoredWidth, PictureItem::kWidth},
           {tags::kAspectRatio, PictureItem::kAspectRatio},
           {tags::kFrameLayout, PictureItem::kFrameLayout},
           {0x800C, PictureItem::kPassedOver},
           {tags::kAvcBitRate, PictureItem::kPassedOver},
           {0x800E, PictureItem::kPassedOver},
           {bitRateTag, PictureItem::kBitRate},
           {tags::kSampleRate, PictureItem::kEditRate}}};
}

std::int32_t StoreCoding(std::span<const std::uint8_t> value, MXF_VIDEO_INFO* video) {
  video->codingLabel.fill(0);
  std::copy_n(value.begin(), std::min<std::size_t>(value.size(), 16), video->codingLabel.begin());
  const auto row =
      std::find_if(kVideoCodings.begin(), kVideoCodings.end(),
                   [&](const VideoCoding& coding) { return coding.label == video->codingLabel; });
  const bool listed = row != kVideoCodings.end();
  platform::CopyText(video->codecName, std::size(video->codecName),
                     listed ? row->name : kUnlistedCoding);
  if (!listed) return kUnknownVideoCoding;
  video->codecIndex = static_cast<std::uint8_t>(row - kVideoCodings.begin());
  return kSuccess;
}

void StoreEditRate(const std::uint8_t* p, MXF_TIMECODE_INFO* timecode) {
  timecode->editRateNumerator = ReadBe32(p);
  timecode->editRateDenominator = ReadBe32(p + 4);
  const auto row = std::find_if(kEditRates.begin(), kEditRates.end(), [&](const EditRate& rate) {
    return rate.numerator == timecode->editRateNumerator &&
           rate.denominator == timecode->editRateDenominator;
  });
  if (row != kEditRates.end()) {
    timecode->rateIndex = static_cast<std::uint32_t>(row - kEditRates.begin());
  }
}

std::int32_t StorePictureItem(PictureItem kind, std::span<const std::uint8_t> value, bool isMpeg,
                              MXF_BASE_INFO* mxf) {
  MXF_VIDEO_INFO* video = mxf->video;
  const std::uint8_t* p = value.data();
  switch (kind) {
    case PictureItem::kCoding:
      return StoreCoding(value, video);
    case PictureItem::kHeight:
      if (value.size() >= 4) video->height = ReadBe32(p);
      break;
    case PictureItem::kWidth:
      if (value.size() >= 4) video->width = ReadBe32(p);
      break;
    case PictureItem::kAspectRatio:
      if (value.size() < 8) break;
      video->aspectNumerator = ReadBe32(p);
      video->aspectDenominator = ReadBe32(p + 4);
      break;
    case PictureItem::kFrameLayout:
      if (isMpeg && !value.empty()) video->frameLayout = *p;
      break;
    case PictureItem::kBitRate:
      if (isMpeg && value.size() >= 4) video->bitRate = ReadBe32(p);
      break;
    case PictureItem::kEditRate:
      if (value.size() >= 8) StoreEditRate(p, mxf->timecode);
      break;
    case PictureItem::kPassedOver:
      break;
  }
  return kSuccess;
}

std::int32_t ReadPictureTags(std::span<const std::uint8_t> set, const PictureTags& rows,
                             bool isMpeg, MXF_BASE_INFO* mxf) {
  LocalItem item;
  for (LocalSetWalk walk(set); walk.Next(&item);) {
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&](const PictureRow& r) { return r.tag == item.tag; });
    if (row == rows.end()) continue;
    if (const std::int32_t refused = StorePictureItem(row->item, item.value, isMpeg, mxf)) {
      return refused;
    }
  }
  return kSuccess;
}

// The file, and the file offsets between which the sets of this stage start.
struct SearchRange {
  platform::File* file;
  std::uint64_t start;
  std::uint64_t limit;
};

// The result of a search for a set with either of two keys. A set with the second key is taken only
// when no set with the first key is in the whole range.
struct EitherSet {
  bool found;
  bool isFirst;          // the set has the first key
  std::uint64_t length;  // length of the value in bytes; the file pointer is on the value
};

EitherSet FindEither(const SearchRange& range, std::uint64_t from, const KlvKey& first,
                     const KlvKey& second) {
  EitherSet result{};
  result.isFirst = FindKlvKey(range.file, first, from, range.limit, &result.length) == 1;
  result.found =
      result.isFirst || FindKlvKey(range.file, second, from, range.limit, &result.length) == 1;
  return result;
}

std::int32_t ReadPackageIdentity(const SearchRange& range, MXF_BASE_INFO* mxf) {
  std::uint64_t length = 0;
  if (FindKlvKey(range.file, keys::kSourcePackage, range.start, range.limit, &length) == 0) {
    return kSourcePackageNotFound;
  }
  const auto set = MetadataSet::Read(range.file, length);
  if (!set) return kSourcePackageNotFound;
  mxf->sourcePackageSet = {set->fileOffset(), set->value().size()};
  LocalItem item;
  for (LocalSetWalk walk(set->value()); walk.Next(&item);) {
    if (item.tag == tags::kPackageUid) {
      StorePackageUid(item.value, &mxf->sourceUmid, &mxf->sourceUmidSize);
    }
  }
  return kSuccess;
}

std::int32_t CheckMultipleDescriptor(const SearchRange& range) {
  std::uint64_t length = 0;
  if (FindKlvKey(range.file, keys::kMultipleDescriptor, range.file->Position(), range.limit,
                 &length) == 0) {
    return kMultipleDescriptorNotFound;
  }
  const auto set = MetadataSet::Read(range.file, length);
  if (!set) return kMultipleDescriptorNotFound;
  LocalItem item;
  for (LocalSetWalk walk(set->value()); walk.Next(&item);) {
    if (item.tag == tags::kEssenceContainer && !EqualsLabel(item.value, kMultipleWrappings)) {
      return kNotMultipleEssence;
    }
  }
  return kSuccess;
}

// The tag of the bit rate in the picture descriptor. In an MPEG descriptor it is the tag that the
// Primer Pack gives to kBitRateLabel; 0 when the Primer Pack does not list this label. Leaves the
// file pointer where it was.
std::uint16_t BitRateTag(const SearchRange& range, bool isMpeg) {
  if (!isMpeg) return tags::kCdciBitRate;
  const std::uint64_t value = range.file->Position();
  std::uint16_t tag = 0;
  LookupPrimerTag(range.file, &kBitRateLabel, &tag, range.start, range.limit);
  range.file->Seek(value);
  return tag;
}

std::int32_t ReadPictureDescriptor(const SearchRange& range, std::uint64_t from,
                                   MXF_BASE_INFO* mxf) {
  const EitherSet found =
      FindEither(range, from, keys::kMpegVideoDescriptor, keys::kCdciDescriptor);
  if (!found.found) return kPictureDescriptorNotFound;
  const PictureTags rows = PictureTagsWith(BitRateTag(range, found.isFirst));
  const auto set = MetadataSet::Read(range.file, found.length);
  if (!set) return kPictureDescriptorNotFound;
  return ReadPictureTags(set->value(), rows, found.isFirst, mxf);
}

void ReadAvcBitRate(const SearchRange& range, MXF_VIDEO_INFO* video) {
  std::uint64_t length = 0;
  if (FindKlvKey(range.file, keys::kAvcSubDescriptor, range.file->Position(), range.limit,
                 &length) == 0) {
    return;
  }
  const auto set = MetadataSet::Read(range.file, length);
  if (!set) return;
  LocalItem item;
  for (LocalSetWalk walk(set->value()); walk.Next(&item);) {
    if (item.tag != tags::kAvcBitRate || item.value.size() < 4) continue;
    video->bitRate = ReadBe32(item.value.data());
    if (video->codecIndex == kXavcIntra && video->width >= kUhdWidth) video->bitRate *= 2;
  }
}

void FinishPicture(const SearchRange& range, MXF_VIDEO_INFO* video) {
  if (video->codecIndex == kXavcIntra || video->codecIndex == kXavcLong) {
    ReadAvcBitRate(range, video);
  } else if (video->frameLayout != 0) {
    video->height *= video->frameLayout + 1u;  // from lines of a field to lines of a frame
  }
}

std::int32_t StoreAudioItem(const LocalItem& item, MXF_AUDIO_INFO* audio) {
  const std::uint8_t* p = item.value.data();
  const std::size_t size = item.value.size();
  switch (item.tag) {
    case tags::kQuantizationBits:
      audio->quantizationBits = size >= 4 ? ReadBe32(p) : 0;
      return audio->quantizationBits == 16 || audio->quantizationBits == 24 ? kSuccess
                                                                            : kAudioDescriptorUnfit;
    case tags::kAudioSamplingRate:
      audio->sampleRate = size >= 4 ? ReadBe32(p) : 0;
      return audio->sampleRate == kSampleRate ? kSuccess : kSamplingRateUnfit;
    case tags::kAvgBps:
      if (size >= 4) audio->avgBytesPerSecond = ReadBe32(p);
      return kSuccess;
    case tags::kBlockAlign:
      if (size >= 2) audio->blockAlign = ReadBe16(p);
      return kSuccess;
    default:
      return kSuccess;
  }
}

std::int32_t ReadAudioDescriptor(const SearchRange& range, std::uint64_t from,
                                 MXF_AUDIO_INFO* audio) {
  const EitherSet found =
      FindEither(range, from, keys::kAes3AudioDescriptor, keys::kWaveAudioDescriptor);
  if (!found.found) return kAudioDescriptorUnfit;
  audio->hasDescriptor = 1;
  const auto set = MetadataSet::Read(range.file, found.length);
  if (!set) return kAudioDescriptorUnfit;
  LocalItem item;
  for (LocalSetWalk walk(set->value()); walk.Next(&item);) {
    if (const std::int32_t refused = StoreAudioItem(item, audio)) return refused;
  }
  return kSuccess;
}

}  // namespace

bool LookupPrimerTag(platform::File* file, const KlvKey* label, std::uint16_t* outTag,
                     std::uint64_t startOffset, std::uint64_t limitOffset) {
  if (!IsUsable(file) || label == nullptr || outTag == nullptr) return false;
  std::uint64_t length = 0;
  if (FindKlvKey(file, keys::kPrimerPack, startOffset, limitOffset, &length) == 0) return false;
  const auto set = MetadataSet::Read(file, length);
  if (!set) return false;

  constexpr std::size_t tagBytes = 2;
  constexpr std::size_t primerItemBytes = 18;
  const std::uint32_t count = ReadBatchHeader(set->value()).count;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint8_t* candidate =
        LabelAt(set->value(), kBatchHeaderBytes + tagBytes, primerItemBytes, i);
    if (candidate == nullptr) return false;
    if (std::memcmp(candidate, label->data(), label->size()) == 0) {
      *outTag = ReadBe16(candidate - tagBytes);
      return true;
    }
  }
  return false;
}

std::int32_t ReadSourcePackage(platform::File* file, MXF_BASE_INFO* mxf) {
  if (!IsUsable(file)) return kSourceNoFile;
  if (mxf == nullptr) return kSourceNoBaseInfo;
  if (mxf->partitionTable == nullptr || *mxf->partitionTable == nullptr) return kSourceNoCell;
  if (mxf->audio == nullptr || mxf->video == nullptr || mxf->timecode == nullptr) {
    return kSourceNoAudioInfo;
  }

  const MXF_PARTITION_INFO& first = (*mxf->partitionTable)[0];
  const SearchRange range{file, first.kagSize, first.headerByteCount};
  if (const std::int32_t refused = ReadPackageIdentity(range, mxf)) return refused;
  if (const std::int32_t refused = CheckMultipleDescriptor(range)) return refused;
  const std::uint64_t descriptors = file->Position();
  if (const std::int32_t refused = ReadPictureDescriptor(range, descriptors, mxf)) return refused;
  FinishPicture(range, mxf->video);
  return ReadAudioDescriptor(range, descriptors, mxf->audio);
}

}  // namespace quorvan
