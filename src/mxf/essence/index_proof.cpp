#include "mxf/essence/index_proof.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>

#include "mxf/essence/audio_element.h"
#include "mxf/essence/header_window.h"
#include "mxf/essence/read_ahead.h"
#include "mxf/metadata/klv.h"

namespace quorvan {
namespace {

using TrackNumbers = std::array<std::uint32_t, kMaxTracks>;

// The tracks to which the index entry leads, among the tracks that the jobs use.
std::uint32_t IndexedTracks(const MXF_BASE_INFO& mxf, const INDEX_ENTRY_ARRAY& entry) {
  const std::uint32_t elements = entry.deltaCount - std::min(entry.deltaCount, kDeltasBeforeAudio);
  return std::min(elements, UsableTracks(*mxf.audio));
}

// Reads the header of the audio element of `track` into `*header`. Returns the number of its bytes,
// at least those of a key; 0 when no audio element stands where the index says.
std::size_t ReadElementHeader(const platform::File& file, const MXF_BASE_INFO& mxf,
                              const INDEX_ENTRY_ARRAY& entry, std::uint32_t track,
                              std::array<std::uint8_t, kMostKlvHeaderBytes>* header) {
  const auto value = LocateElementValue(mxf, entry, track);
  if (!value) return 0;
  const std::size_t held = file.ReadAt(value->keyOffset(), header->data(), header->size());
  return held >= kKlvKeyBytes && KindOfElement(header->data()) != kNoAudioElement ? held : 0;
}

// True when the deltas of the first `tracks` tracks can lead to elements in the order of the
// tracks. With audio in several slices they cannot: the deltas of each slice count from its own
// start.
bool HaveOwnElements(const INDEX_ENTRY_ARRAY& entry, std::uint32_t tracks) {
  const DELTA_ENTRY* first = &entry.delta[kDeltasBeforeAudio];
  return std::adjacent_find(first, first + tracks, [](const DELTA_ENTRY& a, const DELTA_ENTRY& b) {
           return b.elementDelta <= a.elementDelta;
         }) == first + tracks;
}

bool KeysAgree(const platform::File& file, const MXF_BASE_INFO& mxf,
               const INDEX_ENTRY_ARRAY& entry) {
  std::array<std::uint8_t, kUlPrefix.size()> prefix{};
  if (file.ReadAt(entry.fileOffset, prefix.data(), prefix.size()) != prefix.size() ||
      prefix != kUlPrefix) {
    return false;
  }
  const std::uint32_t tracks = IndexedTracks(mxf, entry);
  if (tracks == 0) return true;
  if (!HaveOwnElements(entry, tracks)) return false;
  std::array<std::uint8_t, kMostKlvHeaderBytes> header;
  return ReadElementHeader(file, mxf, entry, 0, &header) != 0 &&
         ReadElementHeader(file, mxf, entry, tracks - 1, &header) != 0;
}

// A walk over the headers of a clip's frames.
class FrameWalk {
 public:
  FrameWalk(const platform::File& file, const MXF_BASE_INFO& mxf,
            std::span<const std::uint32_t> tracks, ColdWalk cold)
      : mxf_(mxf),
        tracks_(tracks),
        window_(file,
                cold == ColdWalk::kReadsAll ? HeaderWindow::kBlockBytes : ReadAhead::kHeadBytes) {
    if (cold == ColdWalk::kPrefetches) {
      ahead_.emplace(file, mxf, tracks, 0, mxf.timecode->frameCount);
    }
  }

  // True when the frame `entryIndex` stands where the index says.
  bool Stands(std::uint32_t entryIndex) {
    const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[entryIndex];
    const std::uint64_t end = FrameEnd(mxf_, entryIndex);
    const bool isLast = entryIndex + 1 == mxf_.timecode->frameCount;
    const bool joins = !isLast && (*mxf_.indexEntries)[entryIndex + 1].partition == entry.partition;
    Prefetch(entryIndex);
    FrameElements elements;
    KlvKey opener{};
    std::uint64_t at = entry.fileOffset;
    while (at < end) {
      const auto header = window_.At(at);
      if (header.size() < std::min<std::uint64_t>(kMostKlvHeaderBytes, end - at)) return false;
      const std::uint8_t* key = header.data();
      if (header.size() < kKlvKeyBytes || !IsOfFrame(key)) break;
      if (at == entry.fileOffset) {
        std::copy_n(key, opener.size(), opener.begin());
      } else if (!isLast && IsContainerElement(key) &&
                 std::equal(opener.begin(), opener.end(), key)) {
        return false;  // a frame that the index skips
      }
      // No room for more elements is needed: the last wanted element has been found then.
      FrameElements others;
      FrameElements* found = elements.count < tracks_.size() ? &elements : &others;
      const auto step = TakeElement(key, at, end - at, found);
      if (!step) return false;
      at += *step;
    }
    if (joins && at != end) return false;
    // Track by track, for a track with another length ends a comparison of several.
    return std::none_of(tracks_.begin(), tracks_.end(), [&](const std::uint32_t& track) {
      return CompareWithIndex(elements, mxf_, entry, {&track, 1}) == ElementState::kMisplaced;
    });
  }

 private:
  void Prefetch(std::uint32_t entryIndex) {
    if (!ahead_) return;
    if (window_.IsCold()) ahead_->SetCold();
    ahead_->Ask(entryIndex);
  }

  static bool IsOfFrame(const std::uint8_t* key) {
    return IsContainerElement(key) || KeyMatches(key, keys::kFill);
  }

  const MXF_BASE_INFO& mxf_;
  std::span<const std::uint32_t> tracks_;
  HeaderWindow window_;
  std::optional<ReadAhead> ahead_;
};

}  // namespace

bool BorderKeysAgree(const platform::File& file, const MXF_BASE_INFO& mxf) {
  const std::uint32_t count = mxf.timecode->frameCount;
  const INDEX_ENTRY_ARRAY* entries = mxf.indexEntries->get();
  const auto sameSegment = [entries](std::uint32_t a, std::uint32_t b) {
    return entries[a].segmentStart == entries[b].segmentStart &&
           entries[a].partition == entries[b].partition;
  };
  for (std::uint32_t i = 0; i < count; ++i) {
    const bool inner = i != 0 && i + 1 != count && sameSegment(i - 1, i) && sameSegment(i, i + 1);
    if (!inner && !KeysAgree(file, mxf, entries[i])) return false;
  }
  return true;
}

bool EveryFrameStands(const platform::File& file, const MXF_BASE_INFO& mxf, ColdWalk cold) {
  TrackNumbers tracks;
  std::iota(tracks.begin(), tracks.end(), 0);
  const std::uint32_t count = IndexedTracks(mxf, (*mxf.indexEntries)[0]);
  if (count == 0) return false;
  FrameWalk walk(file, mxf, std::span(tracks).first(count), cold);
  for (std::uint32_t i = 0; i < mxf.timecode->frameCount; ++i) {
    if (!walk.Stands(i)) return false;
  }
  return true;
}

std::uint32_t CountIndexedElements(const platform::File& file, const MXF_BASE_INFO& mxf) {
  const INDEX_ENTRY_ARRAY& first = (*mxf.indexEntries)[0];
  std::array<std::uint8_t, kMostKlvHeaderBytes> header;
  std::uint32_t count = 0;
  for (std::uint32_t track = 0; track < kMaxTracks; ++track) {
    if (ReadElementHeader(file, mxf, first, track, &header) != 0) ++count;
  }
  return count;
}

std::optional<std::uint64_t> FirstElementBytes(const platform::File& file, const MXF_BASE_INFO& mxf,
                                               std::uint32_t entryIndex) {
  std::array<std::uint8_t, kMostKlvHeaderBytes> header;
  const std::size_t held =
      ReadElementHeader(file, mxf, (*mxf.indexEntries)[entryIndex], 0, &header);
  std::uint64_t length = 0;
  if (held == 0 || ReadKlvHeader(std::span(header).first(held), &length) == 0) return std::nullopt;
  return length;
}

}  // namespace quorvan
