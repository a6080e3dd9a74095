#include "conform/picture_type.h"

#include <algorithm>
#include <array>
#include <bit>
#include <map>

namespace quorvan {
namespace {

using Bytes = std::span<const std::uint8_t>;
using enum PictureType;

constexpr std::array<std::uint8_t, 3> kStartCodePrefix = {0, 0, 1};

// First bytes behind a start code prefix of MPEG-2.
constexpr std::uint8_t kPictureHeader = 0x00, kSequenceHeader = 0xB3, kGopHeader = 0xB8;

// Types of AVC NAL units.
constexpr std::uint8_t kSlice = 1, kIdrSlice = 5, kSequenceParameterSet = 7, kDelimiter = 9;

// By picture_coding_type.
constexpr std::array<PictureType, 8> kMpeg2Types = {kUnknown, kIntra, kPredicted, kBidirectional};

// By primary_pic_type, which lists the slice types that may occur. The last one allows all.
constexpr std::array<PictureType, 8> kDelimiterTypes = {
    kIntra, kPredicted, kBidirectional, kIntra, kPredicted, kIntra, kPredicted, kUnknown};

// By slice_type modulo 5: P, B, I, SP, SI.
constexpr std::array<PictureType, 5> kSliceTypes = {kPredicted, kBidirectional, kIntra, kPredicted,
                                                    kIntra};

// Flags of an index entry.
constexpr std::uint8_t kRandomAccess = 0x80, kHasSequenceHeader = 0x40;
constexpr std::uint8_t kBackwardOnly = 0x13;
constexpr std::array<std::uint8_t, 4> kTypeFlags = {0x00, 0x00, 0x22, 0x33};  // by PictureType

// The bytes behind the next start code prefix; empty without one.
Bytes NextUnit(Bytes bytes) {
  const auto& wanted = kStartCodePrefix;
  const auto prefix = std::search(bytes.begin(), bytes.end(), wanted.begin(), wanted.end());
  if (prefix == bytes.end()) return {};
  return bytes.subspan(static_cast<std::size_t>(prefix - bytes.begin()) + wanted.size());
}

PictureFacts ReadMpeg2(Bytes head) {
  PictureFacts facts;
  for (Bytes unit = NextUnit(head); !unit.empty(); unit = NextUnit(unit)) {
    if (unit[0] == kSequenceHeader) facts.hasSequenceHeader = true;
    if (unit[0] == kGopHeader && unit.size() > 4) {
      facts.startsGop = true;
      facts.closedGop = (unit[4] & 0x40) != 0;
    }
    if (unit[0] == kPictureHeader && unit.size() > 2) {
      facts.type = kMpeg2Types[unit[2] >> 3 & 7];
      facts.temporalReference = static_cast<std::uint16_t>(unit[1] << 2 | unit[2] >> 6);
      break;
    }
  }
  return facts;
}

// The type of a slice by the first byte of its header; unknown unless it is the picture's first
// slice. The byte is the bit 1 (first_mb_in_slice 0) and slice_type, both in the Exp-Golomb code.
PictureType SliceType(std::uint8_t first) {
  constexpr int kCodeBits = 7;
  const std::uint8_t code = first & 0x7F;
  const int zeros = std::countl_zero(code) - 1;
  if ((first & 0x80) == 0 || zeros > kCodeBits / 2) return kUnknown;
  const std::size_t sliceType = (code >> (kCodeBits - 1 - 2 * zeros)) - 1u;
  return kSliceTypes[sliceType % kSliceTypes.size()];
}

PictureFacts ReadAvc(Bytes head) {
  PictureFacts facts;
  for (Bytes unit = NextUnit(head); unit.size() > 1; unit = NextUnit(unit)) {
    const std::uint8_t nal = unit[0] & 0x1F;
    if (nal == kDelimiter) facts.type = kDelimiterTypes[unit[1] >> 5];
    if (nal == kSequenceParameterSet) facts.hasSequenceHeader = facts.startsGop = true;
    if (nal == kIdrSlice) {
      facts.startsGop = facts.closedGop = true;
      facts.type = kIntra;
    }
    if (nal == kSlice && facts.type == kUnknown) facts.type = SliceType(unit[1]);
    if (nal == kSlice || nal == kIdrSlice) break;
  }
  return facts;
}

std::int8_t Clamped(std::ptrdiff_t offset) {
  return static_cast<std::int8_t>(std::clamp<std::ptrdiff_t>(offset, INT8_MIN, INT8_MAX));
}

void SetKeysAndFlags(std::span<const PictureFacts> facts, std::vector<IndexPicture>* pictures) {
  const bool allIntra =
      std::ranges::all_of(facts, [](const PictureFacts& f) { return f.type == kIntra; });
  std::size_t key = 0, keyBefore = 0;  // frame numbers of the last two intra pictures
  bool isLeading = false;              // no predicted picture since the last intra picture
  for (std::size_t i = 0; i < facts.size(); ++i) {
    const PictureFacts& f = facts[i];
    if (f.type == kUnknown) continue;
    std::uint8_t flags = kTypeFlags[static_cast<std::size_t>(f.type)];
    std::size_t start = key;  // frame number where the decoding of this picture starts
    if (f.type == kIntra) {
      const bool needsGopBefore =
          !f.closedGop && i + 1 < facts.size() && facts[i + 1].type == kBidirectional;
      if (allIntra || (f.startsGop && !needsGopBefore)) flags |= kRandomAccess;
      keyBefore = key;
      key = start = i;
      isLeading = true;
    } else if (f.type == kPredicted) {
      isLeading = false;
    } else if (isLeading && facts[key].closedGop) {
      // AVC displays nothing of a closed GOP before its intra picture.
      if (f.temporalReference) flags = kBackwardOnly;
    } else if (isLeading) {
      start = keyBefore;
    }
    if (f.hasSequenceHeader) flags |= kHasSequenceHeader;
    (*pictures)[i].flags = flags;
    (*pictures)[i].keyFrameOffset = Clamped(-static_cast<std::ptrdiff_t>(i - start));
  }
}

// The frame number behind the GOP that starts at frame `gop`.
std::size_t GopEnd(std::span<const PictureFacts> facts, std::size_t gop) {
  std::size_t end = gop + 1;
  while (end < facts.size() && !facts[end].startsGop)
    ++end;
  return end;
}

constexpr std::size_t kReferenceModulus = 1024;

// The frame number at whose display place the picture of frame `stored` belongs, whose temporal
// reference counts from the start of its GOP, the frame `gop`. The reference is modulo 1024; the
// place nearest to `stored` is meant. May lie in front of frame 0 and behind the last frame.
std::ptrdiff_t DisplayPlace(std::uint16_t reference, std::size_t gop, std::size_t stored) {
  constexpr std::size_t kHalf = kReferenceModulus / 2;
  const std::size_t delay = (reference - (stored - gop) + kHalf) % kReferenceModulus;
  return static_cast<std::ptrdiff_t>(stored + delay) - static_cast<std::ptrdiff_t>(kHalf);
}

void Show(std::size_t stored, std::ptrdiff_t place, std::vector<IndexPicture>* pictures) {
  (*pictures)[static_cast<std::size_t>(place)].temporalOffset =
      Clamped(static_cast<std::ptrdiff_t>(stored) - place);
}

// Closes the gaps in the display order of the clip's last GOP, which starts at frame `gop`: where
// the clip was cut off, pictures may be missing that are displayed before the last ones.
void CloseGaps(std::span<const PictureFacts> facts, std::size_t gop,
               std::vector<IndexPicture>* pictures) {
  if (facts.size() - gop > kReferenceModulus) return;
  std::map<std::ptrdiff_t, std::size_t> order;  // stored places by display places
  for (std::size_t i = gop; i < facts.size(); ++i) {
    if (!facts[i].temporalReference) return;
    order[DisplayPlace(*facts[i].temporalReference, gop, i)] = i;
  }
  auto place = static_cast<std::ptrdiff_t>(gop);
  if (order.size() != facts.size() - gop || order.begin()->first < place) return;
  for (const auto& [wanted, stored] : order)
    Show(stored, place++, pictures);
}

void SetTemporalOffsets(std::span<const PictureFacts> facts, std::vector<IndexPicture>* pictures) {
  std::size_t end = 0;
  for (std::size_t gop = 0; gop < facts.size(); gop = end) {
    end = GopEnd(facts, gop);
    if (!facts[gop].startsGop) continue;
    for (std::size_t i = gop; i < end; ++i) {
      if (!facts[i].temporalReference) continue;
      const std::ptrdiff_t place = DisplayPlace(*facts[i].temporalReference, gop, i);
      const bool isInGop =
          place >= static_cast<std::ptrdiff_t>(gop) && place < static_cast<std::ptrdiff_t>(end);
      if (isInGop) Show(i, place, pictures);
    }
    if (end == facts.size()) CloseGaps(facts, gop, pictures);
  }
}

}  // namespace

PictureFacts ReadPictureFacts(PictureCoding coding, std::span<const std::uint8_t> head) {
  switch (coding) {
    case PictureCoding::kMpeg2:
      return ReadMpeg2(head);
    case PictureCoding::kAvc:
      return ReadAvc(head);
    case PictureCoding::kOther:
      break;
  }
  return {};
}

std::vector<IndexPicture> IndexPictures(std::span<const PictureFacts> facts) {
  std::vector<IndexPicture> pictures(facts.size());
  SetKeysAndFlags(facts, &pictures);
  SetTemporalOffsets(facts, &pictures);
  return pictures;
}

}  // namespace quorvan
