#include "rewrite/source_blocks.h"

#include <algorithm>
#include <new>

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
  wavBlock_.reset(new (std::nothrow) std::uint8_t[frameBytes * blockFrames_ + 1]);
  silence_.reset(new (std::nothrow) std::uint8_t[kFrameRoom]());
  if (wavBlock_ == nullptr || silence_ == nullptr) return false;
  std::uint8_t* start = wavBlock_.get();
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
    regions_[s].start = start;
    start += RegionBytes(plan_.sources[s], blockFrames_);
  }
  return true;
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

bool SourceBlocks::Read(std::uint32_t firstEntry, std::uint32_t frames) {
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
    if (files_.Of(source).ReadAt(place, region.start, bytes) != bytes) return false;
    region.consumed += held;
    region.held = static_cast<std::uint32_t>(held);
    region.readPos = region.start;
  }
  return true;
}

void SourceBlocks::Take(const INDEX_ENTRY_ARRAY& entry,
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
