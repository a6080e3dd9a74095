#include "mxf/essence/segment_run.h"

#include <algorithm>

namespace quorvan {
namespace {

// Length of a frame in bytes, estimated from the index: up to the end of its last element, which is
// taken to hold at least the audio of one track, but not beyond the end of the file.
std::uint64_t FrameBytes(const MXF_BASE_INFO& mxf, const INDEX_ENTRY_ARRAY& entry) {
  const std::uint64_t rest = mxf.fileSize - entry.fileOffset;
  if (entry.deltaCount == 0) return rest;
  const std::uint64_t audio =
      kElementHeaderBytes + std::uint64_t{mxf.audio->blockAlign} * entry.audioSamples;
  const std::uint64_t trailing =
      mxf.hasAncillaryData != 0 ? mxf.ancillaryElementSize : mxf.audio->elementSize;
  std::uint32_t farthest = 0;  // largest delta; in a valid index, the delta of the last entry
  for (std::uint32_t k = 0; k < entry.deltaCount; ++k)
    farthest = std::max(farthest, entry.delta[k].elementDelta);
  const std::uint64_t lastElement = std::uint64_t{entry.sliceOffset} + farthest;
  return std::min(lastElement + std::max(audio, trailing), rest);
}

}  // namespace

SegmentRun NextRun(const MXF_BASE_INFO& mxf, std::uint32_t firstEntry, std::uint32_t most) {
  const INDEX_ENTRY_ARRAY* entries = mxf.indexEntries->get() + firstEntry;
  const std::uint32_t rest = std::min(most, mxf.timecode->frameCount - firstEntry);
  const std::uint64_t segmentEnd = entries->segmentStart + entries->segmentDuration;
  const std::uint64_t claimed = segmentEnd > firstEntry ? segmentEnd - firstEntry : 1;
  const auto longest = static_cast<std::uint32_t>(std::min<std::uint64_t>(claimed, rest));

  std::uint32_t frames = 1;
  std::uint64_t end = entries->fileOffset + FrameBytes(mxf, *entries);
  while (frames < longest && entries[frames].segmentStart == entries->segmentStart &&
         entries[frames].partition == entries->partition &&
         entries[frames].fileOffset > entries[frames - 1].fileOffset) {
    end = std::max(end, entries[frames].fileOffset + FrameBytes(mxf, entries[frames]));
    ++frames;
  }
  return {firstEntry, frames, entries->fileOffset, end - entries->fileOffset};
}

// With a gap in the index, a frame twice or frames out of order, a job would use other frames than
// the frames that were chosen.
bool CountsEveryFrame(const MXF_BASE_INFO& mxf) {
  const INDEX_ENTRY_ARRAY* entries = mxf.indexEntries->get();
  const std::uint32_t count = mxf.timecode->frameCount;
  const bool endsEarly = count < mxf.timecode->duration;
  std::uint32_t first = 0;  // first frame of the segment
  for (std::uint32_t i = 0; i < count; ++i) {
    if (i > 0 && entries[i].fileOffset <= entries[i - 1].fileOffset) return false;
    if (i == 0 || entries[i].segmentStart != entries[i - 1].segmentStart) first = i;
    if (entries[first].segmentStart != first) return false;
    const bool closes = i + 1 == count || entries[i + 1].segmentStart != entries[i].segmentStart;
    // When a segment has fewer entries than frames, the frame without an entry is unknown.
    if (endsEarly && closes && entries[i].segmentDuration != i + 1 - first) return false;
  }
  return true;
}

}  // namespace quorvan
