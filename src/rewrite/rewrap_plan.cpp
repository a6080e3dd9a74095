#include "rewrite/rewrap_plan.h"

#include <algorithm>

#include "mxf/sample_pattern.h"

namespace quorvan {
namespace {

bool HasRecords(const MXF_BASE_INFO* mxf) {
  return mxf != nullptr && mxf->timecode != nullptr && mxf->audio != nullptr &&
         mxf->partitionTable != nullptr && *mxf->partitionTable != nullptr &&
         mxf->indexEntries != nullptr && *mxf->indexEntries != nullptr;
}

bool SetRange(const AUDIOTRACK_IO_INFO& tracks, const MXF_TIMECODE_INFO& timecode,
              RewrapPlan* plan) {
  const std::size_t slot = timecode.startHour23 == 1 ? 1 : 0;
  const std::int64_t in = tracks.inFrame[slot];
  const std::int64_t out = tracks.outFrame[slot];
  const std::int64_t start = WorkingStart(timecode);
  const std::int64_t last = WorkingLast(timecode);
  // In the shifted slot an OUT directly before IN stands for no frame at all.
  const std::int64_t total = out - in + 1;
  if (total < (slot == 0 ? 1 : 0) || in < start || out > last) return false;
  plan->firstEntry = static_cast<std::uint32_t>(in - start);
  plan->total = static_cast<std::uint32_t>(total);
  return true;
}

TrackSource SourceOf(const AUDIOTRACK_IO_INFO& tracks, const MXF_AUDIO_INFO& audio,
                     std::uint32_t track) {
  TrackSource source{tracks.wav[track], track, 1, 0, false};
  if (source.wav == nullptr) return source;
  const std::uint32_t group = tracks.wavGroup[track];
  const std::uint32_t channels = source.wav->channels;
  if (channels > 1) {
    const bool grouped = group >= kWavGroupBase && track >= group - kWavGroupBase;
    const std::uint32_t channel = grouped ? track - (group - kWavGroupBase) : 0;
    source.firstChannel = std::min(channel, channels - 1);
    source.trackCount = std::min(channels - source.firstChannel, UsableTracks(audio) - track);
  }
  source.widen = source.wav->bitsPerSample == 16 && source.wav->bytesPerChannelSample == 2 &&
                 audio.quantizationBits == 24;
  return source;
}

void WalkTracks(const AUDIOTRACK_IO_INFO& tracks, const MXF_AUDIO_INFO& audio, RewrapPlan* plan) {
  plan->sourceCount = 0;
  for (std::uint32_t track = 0; track < UsableTracks(audio);) {
    if (tracks.rewrapSwitch[track] != kSwitchOn) {
      ++track;
      continue;
    }
    const TrackSource source = SourceOf(tracks, audio, track);
    plan->sources[plan->sourceCount++] = source;
    track += source.trackCount;
  }
}

bool FitsSampleWidth(const TrackSource& source, const MXF_AUDIO_INFO& audio) {
  const WAV_FILE_INFO* wav = source.wav;
  if (wav == nullptr) return true;
  const std::uint32_t held = std::uint32_t{wav->bytesPerChannelSample} * wav->channels;
  if (wav->blockAlign == 0 || wav->channels == 0 || held != wav->blockAlign) return false;
  return source.widen || wav->bytesPerChannelSample == audio.blockAlign;
}

// A table with a gap, a frame twice or frames out of order would put the sound into other frames
// than those that were asked for.
bool CountsEveryFrame(const MXF_BASE_INFO& mxf) {
  const INDEX_ENTRY_ARRAY* entries = mxf.indexEntries->get();
  // Fewer entries than the clip lasts: nobody can tell which frame has lost its own.
  if (mxf.timecode->frameCount < mxf.timecode->duration) return false;
  if (entries[0].segmentStart != 0) return false;
  for (std::uint32_t i = 1; i < mxf.timecode->frameCount; ++i) {
    const bool sameSegment = entries[i].segmentStart == entries[i - 1].segmentStart;
    if (!sameSegment && entries[i].segmentStart != i) return false;
    if (entries[i].fileOffset <= entries[i - 1].fileOffset) return false;
  }
  return true;
}

// Bytes of a frame from its first byte, with the last element's audio at the least, as far as the
// file holds them.
std::uint64_t FrameBytes(const MXF_BASE_INFO& mxf, const INDEX_ENTRY_ARRAY& entry) {
  const std::uint64_t rest = mxf.fileSize - entry.fileOffset;
  if (entry.deltaCount == 0) return rest;
  const std::uint64_t audio =
      kElementHeaderBytes + std::uint64_t{mxf.audio->blockAlign} * entry.audioSamples;
  const std::uint64_t trailing =
      mxf.hasAncillaryData != 0 ? mxf.ancillaryElementSize : mxf.audio->elementSize;
  const std::uint64_t lastElement =
      std::uint64_t{entry.sliceOffset} + entry.delta[entry.deltaCount - 1].elementDelta;
  return std::min(lastElement + std::max(audio, trailing), rest);
}

}  // namespace

PlanResult PlanRewrap(const AUDIOTRACK_IO_INFO* tracks, const MXF_BASE_INFO* mxf,
                      RewrapPlan* plan) {
  if (tracks == nullptr) return PlanResult::kNoTracks;
  if (!HasRecords(mxf)) return PlanResult::kNoRecords;
  if (mxf->timecode->rateIndex >= kRateCount) return PlanResult::kUnknownRate;
  if (!SetRange(*tracks, *mxf->timecode, plan)) return PlanResult::kBadRange;
  WalkTracks(*tracks, *mxf->audio, plan);
  return PlanResult::kReady;
}

bool CanBeWritten(const RewrapPlan& plan, const MXF_BASE_INFO& mxf) {
  const std::uint32_t frames = mxf.timecode->frameCount;
  if (plan.firstEntry > frames || plan.total > frames - plan.firstEntry) return false;
  if (!CountsEveryFrame(mxf)) return false;
  if (mxf.audio->sampleRate != kSampleRate ||
      mxf.audio->quantizationBits != mxf.audio->blockAlign * 8u) {
    return false;
  }
  return std::all_of(plan.sources.begin(), plan.sources.begin() + plan.sourceCount,
                     [&](const TrackSource& s) { return FitsSampleWidth(s, *mxf.audio); });
}

std::uint32_t TracksUpToLast(const RewrapPlan& plan) {
  if (plan.sourceCount == 0) return 0;
  const TrackSource& last = plan.sources[plan.sourceCount - 1];
  return last.firstTrack + last.trackCount;
}

SegmentRun NextRun(const RewrapPlan& plan, const MXF_BASE_INFO& mxf, std::uint32_t done) {
  const INDEX_ENTRY_ARRAY* entries = mxf.indexEntries->get() + plan.firstEntry + done;
  const std::uint32_t rest = plan.total - done;
  const std::uint64_t position = std::uint64_t{plan.firstEntry} + done;
  const std::uint64_t segmentEnd = entries->segmentStart + entries->segmentDuration;
  const std::uint64_t claimed = segmentEnd > position ? segmentEnd - position : 1;
  const auto most = static_cast<std::uint32_t>(std::min<std::uint64_t>(claimed, rest));

  std::uint32_t frames = 1;
  std::uint64_t end = entries->fileOffset + FrameBytes(mxf, *entries);
  while (frames < most && entries[frames].segmentStart == entries->segmentStart &&
         entries[frames].partition == entries->partition) {
    end = entries[frames].fileOffset + FrameBytes(mxf, entries[frames]);
    ++frames;
  }
  return {plan.firstEntry + done, frames, entries->fileOffset, end - entries->fileOffset};
}

}  // namespace quorvan
