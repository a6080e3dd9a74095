#include "rewrite/source_blocks.h"

#include <algorithm>
#include <new>

#include "platform/fault_guard.h"
#include "rewrite/wav_source.h"
#include "state/wav_buffer.h"

namespace quorvan {
namespace {

std::uint64_t RegionBytes(const TrackSource& source, std::uint32_t frames) {
  if (source.wav == nullptr) return 0;
  return std::uint64_t{source.wav->blockAlign} * kLargestFrameSamples * frames;
}

}  // namespace

bool SourceBlocks::AllocateBlock(std::uint32_t blockFrames) {
  if (blockFrames == 0 || !FitsBlock(UsableTracks(*mxf_.audio) * kFrameRoom, blockFrames)) {
    return false;
  }
  return AllocateAhead(blockFrames);
}

bool SourceBlocks::AllocateAhead(std::uint32_t aheadFrames) {
  std::uint64_t frameBytes = 0;
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s)
    frameBytes += RegionBytes(plan_.sources[s], 1);
  aheadFrames_ = std::min(FramesInMemory(aheadFrames, frameBytes), plan_.range.total);
  blockFrames_ = FramesInCache(aheadFrames_, frameBytes);
  std::uint64_t blockBytes = 0;
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s)
    blockBytes += BlockBytes(plan_.sources[s]);
  wavBlock_.reset(new (std::nothrow) std::uint8_t[blockBytes + 1]);
  silence_.reset(new (std::nothrow) std::uint8_t[kFrameRoom]());
  if (wavBlock_ == nullptr || silence_ == nullptr) return false;
  std::uint8_t* start = wavBlock_.get();
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
    regions_[s].start = start;
    start += BlockBytes(plan_.sources[s]);
  }
  return true;
}

// Memory for what is read of a source: none where it is mapped.
std::uint64_t SourceBlocks::BlockBytes(const TrackSource& source) const {
  return files_.ViewOf(source).IsMapped() ? 0 : RegionBytes(source, blockFrames_);
}

bool SourceBlocks::AllocateTrackBuffers() {
  trackBuffers_.reset(new (std::nothrow) std::uint8_t[kFrameRoom * plan_.trackCount + 1]);
  return trackBuffers_ != nullptr;
}

// Asks for what the files give to the frames ahead, when the last such stretch is used up.
void SourceBlocks::AskFor(std::uint32_t firstEntry) {
  if (firstEntry < askedUpTo_) return;
  const std::uint32_t end = plan_.range.firstEntry + plan_.range.total;
  const std::uint32_t frames = std::min(aheadFrames_, end - firstEntry);
  std::uint64_t samples = 0;
  for (std::uint32_t i = 0; i < frames; ++i)
    samples += (*mxf_.indexEntries)[firstEntry + i].audioSamples;
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
    const WAV_FILE_INFO* wav = plan_.sources[s].wav;
    if (wav == nullptr) continue;
    const std::uint64_t consumed = regions_[s].consumed;
    files_.Of(plan_.sources[s])
        .Prefetch(wav->dataOffset + consumed * wav->blockAlign,
                  SamplesLeft(*wav, consumed, samples) * wav->blockAlign);
  }
  askedUpTo_ = firstEntry + frames;
}

const WAV_FILE_INFO* SourceBlocks::Read(std::uint32_t firstEntry, std::uint32_t frames) {
  AskFor(firstEntry);
  std::uint64_t samples = 0;
  for (std::uint32_t i = 0; i < frames; ++i)
    samples += (*mxf_.indexEntries)[firstEntry + i].audioSamples;
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
    const TrackSource& source = plan_.sources[s];
    if (source.wav == nullptr) continue;
    const WAV_FILE_INFO& wav = *source.wav;
    Region& region = regions_[s];
    const std::uint64_t held = SamplesLeft(wav, region.consumed, samples);
    const auto bytes = static_cast<std::size_t>(held * wav.blockAlign);
    const std::uint64_t place = wav.dataOffset + region.consumed * wav.blockAlign;
    const platform::MappedView& view = files_.ViewOf(source);
    if (view.IsMapped()) {
      if (!view.Covers(place, bytes)) return &wav;
      region.readPos = view.data() + (place - view.fileOffset());
    } else {
      if (files_.Of(source).ReadAt(place, region.start, bytes) != bytes) return &wav;
      region.readPos = region.start;
    }
    region.consumed += held;
    region.held = static_cast<std::uint32_t>(held);
  }
  return nullptr;
}

bool SourceBlocks::Take(const INDEX_ENTRY_ARRAY& entry,
                        std::array<const std::uint8_t*, kMaxTracks>* samples) {
  auto split = [&] { Split(entry, samples); };
  return platform::RunGuarded(split).completed;
}

void SourceBlocks::Split(const INDEX_ENTRY_ARRAY& entry,
                         std::array<const std::uint8_t*, kMaxTracks>* samples) {
  const std::uint32_t width = mxf_.audio->blockAlign;
  std::uint32_t n = 0;
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
    const TrackSource& source = plan_.sources[s];
    Region& region = regions_[s];
    const std::uint32_t held = std::min(region.held, entry.audioSamples);
    const bool straight = held > 0 && held == entry.audioSamples && source.wav->blockAlign == width;
    for (std::uint32_t c = 0; c < source.trackCount; ++c, ++n) {
      std::uint8_t* target = trackBuffers_.get() + kFrameRoom * n;
      (*samples)[n] = held == 0 ? silence_.get() : straight ? region.readPos : target;
      if (held == 0 || straight) continue;
      FillChannel(*source.wav, source.firstChannel + c, region.readPos, held, entry.audioSamples,
                  width, target);
    }
    if (held == 0) continue;
    region.readPos += std::size_t{held} * source.wav->blockAlign;
    region.held -= held;
  }
}

}  // namespace quorvan
