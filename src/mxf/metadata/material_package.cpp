#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>

#include "mxf/analysis.h"
#include "mxf/metadata/local_tags.h"
#include "mxf/metadata/metadata_set.h"
#include "mxf/metadata/package_uid.h"
#include "mxf/metadata/readers.h"
#include "timecode/timecode.h"

namespace quorvan {
namespace {

constexpr KlvKey kTimecodeDefinition = {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01,
                                        0x01, 0x03, 0x02, 0x01, 0x01, 0x00, 0x00, 0x00};
constexpr KlvKey kSoundDefinition = {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01,
                                     0x01, 0x03, 0x02, 0x02, 0x02, 0x00, 0x00, 0x00};
constexpr KlvKey kDataDefinition = {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01,
                                    0x01, 0x03, 0x02, 0x02, 0x03, 0x00, 0x00, 0x00};

constexpr std::uint32_t kRoundedBases[kTimecodeBases] = {24, 25, 30, 50, 60};
constexpr std::uint64_t kUnknownDuration = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint32_t kMostTracksCounted = std::numeric_limits<std::uint8_t>::max();

// The searches of this stage, and what they have found. Each search starts at the file pointer, so
// behind the set that was read last, and looks for keys in front of `limit`.
struct TrackWalk {
  platform::File* file;
  MXF_BASE_INFO* mxf;
  std::uint64_t limit;  // file offset
  std::uint32_t soundTracks;
  bool startKnown;  // a timecode component has told the start

  bool FindNext(const KlvKey& key, std::uint64_t* length) const {
    return FindKlvKey(file, key, file->Position(), limit, length) == 1;
  }
};

// Writes a date as a text like "2026/11/22  20:54:28". `value` holds the year (16 bits), then
// month, day, hour, minute and second (8 bits each). A shorter value leaves `text` as it is.
void ReadDate(std::span<const std::uint8_t> value, char16_t* text, std::size_t capacity) {
  constexpr std::size_t dateBytes = 7;
  if (value.size() < dateBytes) return;
  char ascii[32];
  std::snprintf(ascii, sizeof ascii, "%04d/%02d/%02d  %02d:%02d:%02d", ReadBe16(value.data()),
                value[2], value[3], value[4], value[5], value[6]);
  const std::size_t length = std::min(std::strlen(ascii), capacity - 1);
  std::copy_n(ascii, length, text);
  text[length] = 0;
}

// Reads the package's own items into `mxf`. Returns the number of tracks that the package lists.
std::uint32_t ReadPackageTags(std::span<const std::uint8_t> set, MXF_BASE_INFO* mxf) {
  std::uint32_t tracks = 0;
  LocalItem item;
  for (LocalSetWalk walk(set); walk.Next(&item);) {
    switch (item.tag) {
      case tags::kPackageUid:
        StorePackageUid(item.value, &mxf->materialUmid, &mxf->materialUmidSize);
        break;
      case tags::kCreationDate:
        ReadDate(item.value, mxf->creationDateText, std::size(mxf->creationDateText));
        break;
      case tags::kModifiedDate:
        ReadDate(item.value, mxf->modifiedDateText, std::size(mxf->modifiedDateText));
        break;
      case tags::kTracks:
        tracks = ReadBatchHeader(item.value).count;
        break;
      default:
        break;
    }
  }
  return tracks;
}

// Reads a Timecode Component into `timecode`. Returns true when the component has a start timecode
// that is not negative.
bool ReadComponentTags(std::span<const std::uint8_t> set, MXF_TIMECODE_INFO* timecode) {
  bool startKnown = false;
  LocalItem item;
  for (LocalSetWalk walk(set); walk.Next(&item);) {
    const std::uint8_t* p = item.value.data();
    if (item.tag == tags::kStartTimecode && item.value.size() >= 8) {
      timecode->startFrames = static_cast<std::uint32_t>(ReadBe64(p));
      timecode->startShifted = timecode->startFrames;
      startKnown = ReadBe64(p) <= std::numeric_limits<std::int64_t>::max();  // the item is signed
    } else if (item.tag == tags::kRoundedBase && item.value.size() >= 2) {
      timecode->roundedBase = ReadBe16(p);
      const auto* row =
          std::find(std::begin(kRoundedBases), std::end(kRoundedBases), timecode->roundedBase);
      if (row != std::end(kRoundedBases)) {
        timecode->fpsIndex = static_cast<std::uint32_t>(row - kRoundedBases);
      }
    } else if (item.tag == tags::kDropFrame && !item.value.empty()) {
      timecode->dropFrame = *p;
    } else if (item.tag == tags::kDuration && item.value.size() >= 8) {
      const std::uint64_t duration = ReadBe64(p);
      timecode->duration = duration == kUnknownDuration ? 0 : static_cast<std::uint32_t>(duration);
    }
  }
  return startKnown;
}

// Decides which slot of the frame counts the jobs use (startHour23; for the slots see
// MXF_TIMECODE_INFO), and calculates the counts that the file does not state: the first frame in
// slot 1 and the last frame in both slots.
void FixWorkingDomain(MXF_TIMECODE_INFO* timecode) {
  const std::uint32_t fps = timecode->fpsIndex;
  const std::uint32_t drop = timecode->dropFrame;
  const std::uint32_t hourFrames = FramesPerHour(fps);
  const std::uint32_t labels = FramesToLabelCount(fps, drop, timecode->startFrames);
  timecode->startHour23 = hourFrames != 0 && labels / hourFrames == 23 ? 1 : 0;
  timecode->startShifted =
      static_cast<std::uint32_t>(ShiftHours(fps, drop, timecode->startFrames, 1, '+'));
  timecode->lastShifted = timecode->duration + timecode->startShifted - 1;
  timecode->lastFrames =
      static_cast<std::uint32_t>(ShiftHours(fps, drop, timecode->lastShifted, 1, '-'));
}

std::int32_t ReadTimecodeComponent(TrackWalk* walk) {
  std::uint64_t length = 0;
  if (!walk->FindNext(keys::kTimecodeComponent, &length)) return kTimecodeComponentMissing;
  const auto set = MetadataSet::Read(walk->file, length);
  if (!set) return kTimecodeComponentMissing;
  MXF_TIMECODE_INFO* timecode = walk->mxf->timecode;
  walk->startKnown = ReadComponentTags(set->value(), timecode) || walk->startKnown;
  if (timecode->duration == 0) return kDurationZero;
  FixWorkingDomain(timecode);
  timecode->rangeKnown = walk->startKnown && timecode->fpsIndex < kTimecodeBases ? 1 : 0;
  return kSuccess;
}

// Reads one track of the package: finds its Timeline Track and its Sequence, and notes the kind of
// the track. Of a timecode track it also reads the Timecode Component.
std::int32_t ReadTrack(TrackWalk* walk) {
  std::uint64_t length = 0;
  if (!walk->FindNext(keys::kTimelineTrack, nullptr)) return kTimelineTrackMissing;
  if (!walk->FindNext(keys::kSequence, &length)) return kSequenceMissing;
  const auto set = MetadataSet::Read(walk->file, length);
  if (!set) return kSequenceMissing;

  LocalItem item;
  for (LocalSetWalk tags(set->value()); tags.Next(&item);) {
    if (item.tag != tags::kDataDefinition) continue;
    if (EqualsLabel(item.value, kTimecodeDefinition)) return ReadTimecodeComponent(walk);
    if (EqualsLabel(item.value, kSoundDefinition)) ++walk->soundTracks;
    if (EqualsLabel(item.value, kDataDefinition)) walk->mxf->hasAncillaryData = 1;
  }
  return kSuccess;
}

// Finds and reads the Material Package set, and leaves the file pointer behind it. Nothing when
// there is none.
std::optional<MetadataSet> FindPackage(platform::File* file, const MXF_PARTITION_INFO& header) {
  std::uint64_t length = 0;
  const bool found = FindKlvKey(file, keys::kMaterialPackage, header.kagSize,
                                header.headerByteCount, &length) != 0;
  return found ? MetadataSet::Read(file, length) : std::nullopt;
}

}  // namespace

void RefreshMaterialPackage(std::span<const std::uint8_t> set, MXF_BASE_INFO* mxf) {
  ReadPackageTags(set, mxf);
}

std::int32_t ReadMaterialPackage(platform::File* file, MXF_BASE_INFO* mxf) {
  if (!IsUsable(file)) return kMaterialNoFile;
  if (mxf == nullptr) return kMaterialNoBaseInfo;
  if (mxf->partitionTable == nullptr || *mxf->partitionTable == nullptr) return kMaterialNoCell;
  if (mxf->audio == nullptr || mxf->timecode == nullptr) return kMaterialNoAudioInfo;

  const MXF_PARTITION_INFO& first = (*mxf->partitionTable)[0];
  TrackWalk walk{file, mxf, first.headerByteCount, 0, false};
  const auto set = FindPackage(file, first);
  if (!set) return kMaterialPackageNotFound;
  mxf->materialPackageSet = {set->fileOffset(), set->value().size()};
  const std::uint32_t tracks = ReadPackageTags(set->value(), mxf);
  for (std::uint32_t i = 0; i < tracks; ++i) {
    if (const std::int32_t refused = ReadTrack(&walk)) return refused;
  }
  mxf->audio->trackCount =
      static_cast<std::uint8_t>(std::min(walk.soundTracks, kMostTracksCounted));
  return walk.soundTracks == 0 ? kNoSoundTrack : kSuccess;
}

}  // namespace quorvan
