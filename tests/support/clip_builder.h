// Small synthetic clips for the tests: an OP1a frame wrapped file (SMPTE 377, 379, 381, 382, 385)
// written from a short description, with a map that tells where everything lies in it.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "support/mxf_tags.h"
#include "timecode/timecode.h"

namespace quorvan::test {

using Bytes = std::vector<std::uint8_t>;
using Label = std::array<std::uint8_t, 16>;

enum class Rate { k24, k25, k30, k50, k60, k23_98, k29_97, k59_94 };

enum class IndexPlacement {
  kFollowingPartition,  // the segment of a body partition stands in the partition behind it
  kOwnPartition,        // the segment stands in front of the essence that it describes
  kFooter,              // all segments stand in the footer
  kFollowingAndFooter,  // as the first, with all segments once more in the footer
};

// Some of them, by byte 14 of their keys; the Primer Pack and the index table segment have keys of
// their own.
enum class SetKind : std::uint8_t {
  kPrimer = 0x00,
  kPreface = 0x2F,
  kIdentification = 0x30,
  kContentStorage = 0x18,
  kEssenceContainerData = 0x23,
  kMaterialPackage = 0x36,
  kTimelineTrack = 0x3B,
  kSequence = 0x0F,
  kTimecodeComponent = 0x14,
  kSourcePackage = 0x37,
  kMultipleDescriptor = 0x44,
  kMpegVideoDescriptor = 0x51,
  kAvcSubDescriptor = 0x6E,
  kAes3Descriptor = 0x47,
  kIndexTableSegment = 0xFF,
};

struct MetadataItem {
  std::uint16_t tag = 0;
  Bytes value{};
};

// A local set before it is written. The Primer Pack is one too: its items are written as a batch
// of tag and label.
struct MetadataSet {
  SetKind kind = SetKind::kPrimer;
  Label key{};
  std::vector<MetadataItem> items{};

  // Replaces the first item of that tag, or adds one at the end.
  void SetTag(std::uint16_t tag, Bytes value);
};

using HeaderSets = std::vector<MetadataSet>;

// The `occurrence`-th set of a kind, from 0; throws when there is none.
MetadataSet& SetOf(HeaderSets& sets, SetKind kind, std::size_t occurrence = 0);

struct DeltaEntry {
  std::uint8_t posTableIndex = 0;
  std::uint8_t slice = 0;
  std::uint32_t elementDelta = 0;
};

struct IndexEntry {
  std::uint8_t temporalOffset = 0, keyFrameOffset = 0, flags = 0;
  std::uint64_t streamOffset = 0;
  std::uint32_t sliceOffset = 0;  // to the first audio element; any before it lead to the picture
  std::vector<std::uint32_t> laterSlices{};  // the offsets behind it
};

// An index table segment before it is written.
struct IndexSegment {
  std::int64_t startPosition = 0;
  std::int64_t duration = 0;
  std::vector<DeltaEntry> deltas{};
  std::vector<IndexEntry> entries{};
  std::uint32_t editUnitByteCount = 0;
  // Items that the head of a batch claims beyond those that it has.
  std::size_t missingDeltas = 0, missingEntries = 0;
};

using ClipTimecode = TimeFields;

// What to build. The defaults give a good clip of two body partitions, about 250 kB.
struct ClipSpec {
  Rate rate = Rate::k25;
  bool dropFrame = false;  // takes effect on the bases 30 and 60 only
  ClipTimecode start{10, 0, 0, 0};
  std::uint32_t frames = 10;
  std::uint32_t framesPerPartition = 5;  // 0: all; at most what a segment can list if it has one
  std::uint32_t framesPerSegment = 0;  // 0: an index segment for each body partition. At most what
                                       // its 64 kB item can list
  std::uint32_t patternStart = 0;      // position of frame 0 in the five-frame sample pattern

  std::uint32_t tracks = 4;  // 0 to 30
  std::uint32_t bits = 24;   // 16 or 24
  bool waveAudio = false;    // Wave elements and descriptors instead of AES3
  // Byte `i` of the audio value; a pattern when empty.
  std::function<std::uint8_t(std::uint32_t track, std::uint32_t frame, std::uint32_t i)> audio{};

  std::uint32_t kagSize = 512;     // 256 or more: a partition pack with its fill takes one; or 1:
                                   // no fill outside of the frames
  std::uint32_t elementKag = 512;  // fill behind each element up to this; 0: no fill. Without fill
                                   // an uneven sample pattern departs from the delta entries,
                                   // unless each element has a slice
  bool noFill = false;             // the same as kagSize 1 and elementKag 0
  bool systemElement = true;       // false: a frame begins with the picture
  std::uint32_t pictureSize = 300;
  std::uint32_t pictureStep = 400;  // added 0, 1, 2 times in turn; unused with SliceCount 0
  bool dataTrack = false;           // a data track in the packages
  bool dataElement = false;         // an ancillary data element in each frame
  std::uint32_t dataSize = 40;      // bytes of its value
  std::map<std::uint32_t, std::uint32_t> timecodeWords{};  // by frame; lowest byte written first

  std::uint32_t codec = 3;  // coding: 0 to 4 MPEG-2, 5 and 6 AVC
  std::uint32_t height = 540, width = 1920;
  std::uint8_t frameLayout = 1;
  std::uint32_t bitRate = 50000000;
  std::uint16_t bitRateTag = 0x8000;  // the dynamic tag that the Primer gives to BitRate

  std::uint32_t umidSize = 32;  // or 64: followed by source information
  std::uint32_t timecodeTracks = 1;
  // The sets refer to each other, and tracks have IDs, numbers and edit rates.
  bool references = false;
  bool setsInTurn = false;          // with references: track n of both packages, then track n + 1
  bool metadataEverywhere = false;  // in the body partitions and the footer, too
  // Length fields of 1, 2, 3, 4, 8 and 9 bytes in turn, where the length fits: of packs and sets,
  // and of the elements. Without element fill, element n of all frames has the same form.
  bool mixedLengths = false, mixedElementLengths = false;

  IndexPlacement indexPlacement = IndexPlacement::kFollowingPartition;
  std::uint8_t sliceCount = 1;    // 0: delta entries count from the start of the frame
  std::uint32_t audioSlices = 1;  // slices for the elements behind the picture; at most as many as
                                  // elements. The last one has all that are left over
  bool constantBytes = false;     // EditUnitByteCount instead of entries; includes sliceCount 0. An
                                  // uneven sample pattern needs element fill
  std::uint8_t posTableCount = 0;
  bool fillBetweenSegments = false;

  // Run in order before anything is laid out.
  std::vector<std::function<void(HeaderSets&)>> headerEdits{};
  std::vector<std::function<void(std::vector<IndexSegment>&)>> indexEdits{};

  // Short forms of header edits; `occurrence` counts the sets of a kind from 0.
  ClipSpec& DropSet(SetKind kind, std::size_t occurrence = 0);
  ClipSpec& SetTag(SetKind kind, std::size_t occurrence, std::uint16_t tag, const Bytes& value);
  ClipSpec& RemoveTag(SetKind kind, std::size_t occurrence, std::uint16_t tag);
};

// Where a KLV lies in the file, in bytes from its start.
struct KlvPlace {
  std::uint64_t key = 0, value = 0, valueBytes = 0;
  std::uint64_t totalBytes = 0;  // with key, length and the fill behind it
};

struct TagPlace {
  std::uint16_t tag = 0;
  std::uint64_t value = 0, valueBytes = 0;
};

struct SetPlace {
  SetKind kind = SetKind::kPrimer;
  KlvPlace klv{};
  std::vector<TagPlace> tags{};
};

struct FramePlace {
  std::uint64_t offset = 0;        // in the file
  std::uint64_t streamOffset = 0;  // in the essence container
  std::uint32_t sliceOffset = 0;   // from the frame to its first element behind the picture
  std::uint32_t bytes = 0;
  std::uint32_t samples = 0;  // per track
  std::size_t partition = 0;  // place in ClipLayout::partitions
  KlvPlace system{}, picture{};
  std::vector<KlvPlace> audio{};  // valueBytes is BlockAlign x samples
  std::optional<KlvPlace> data{};
};

struct PartitionPlace {
  std::uint8_t keyKind = 0;     // byte 13 of the key: 2 header, 3 body, 4 footer
  std::uint64_t offset = 0;     // of the pack's key
  std::uint64_t packValue = 0;  // of its value, behind the length field
  std::uint64_t headerByteCount = 0;
  std::uint64_t indexOffset = 0, indexByteCount = 0;
  std::uint64_t essenceOffset = 0, bodyOffset = 0;
  std::uint32_t indexSid = 0, bodySid = 0;
};

struct ClipLayout {
  std::vector<PartitionPlace> partitions{};
  std::vector<SetPlace> sets{};  // of the header partition's metadata, in file order
  std::vector<FramePlace> frames{};
  std::vector<std::uint64_t> materialUmids{}, sourceUmids{};  // all in these sets
  std::uint64_t headerByteCount = 0;
  KlvPlace randomIndex{};  // all 0 when there is none
  std::uint32_t startFrames = 0, blockAlign = 0;

  // These throw when there is no such set or tag.
  const SetPlace& Set(SetKind kind, std::size_t occurrence = 0) const;
  std::uint64_t TagValueOffset(SetKind kind, std::uint16_t tag, std::size_t occurrence = 0) const;
};

struct Clip {
  Bytes bytes{};
  ClipLayout layout{};
};

// Offsets from the key of a partition pack (SMPTE 377, 4-byte length), for patches.
namespace pack {
inline constexpr std::size_t kKind = 13, kStatus = 14, kMajorVersion = 20, kKagSize = 24;
inline constexpr std::size_t kThisPartition = 28, kPreviousPartition = 36, kFooterPartition = 44;
inline constexpr std::size_t kHeaderByteCount = 52, kIndexByteCount = 60, kIndexSid = 68;
inline constexpr std::size_t kBodyOffset = 72, kBodySid = 80, kOperationalPattern = 84;
}  // namespace pack

// The two UMIDs; in a clip of 64-byte UMIDs their first half.
extern const std::array<std::uint8_t, 32> kMaterialUmid;
extern const std::array<std::uint8_t, 32> kSourceUmid;

Clip BuildClip(const ClipSpec& spec);

// Audio samples per track in a frame (SMPTE 382, five-frame sequence).
std::uint32_t SamplesOfFrame(Rate rate, std::uint32_t frame);

// Frame count of a written timecode, and the word that a frame carries for it (SMPTE 331): packed
// decimal, frames in the lowest byte. On base 60 a value stands in two frames.
std::uint32_t FrameCount(const ClipTimecode& timecode, Rate rate, bool dropFrame);
std::uint32_t TimecodeWord(std::uint32_t frameCount, Rate rate, bool dropFrame);

// Numbers big-endian: as bytes, and over what stands at an offset.
Bytes Big16(std::uint16_t value);
Bytes Big32(std::uint32_t value);
Bytes Big64(std::uint64_t value);
void Patch(Bytes& bytes, std::uint64_t offset, const Bytes& value);

}  // namespace quorvan::test
