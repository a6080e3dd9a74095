#include "rewrite/source_blocks.h"

#include <algorithm>
#include <new>

#include "mxf/audio_element.h"
#include "rewrite/wav_source.h"
#include "state/wav_buffer.h"

namespace quorvan {
namespace {

// Room for one frame of one track, whatever its width: the largest frame in samples of four bytes.
constexpr std::uint64_t kFrameRoom = std::uint64_t{kLargestFrameSamples} * 4;

std::uint64_t RegionBytes(const TrackSource& source, std::uint32_t frames) {
  if (source.wav == nullptr) return 0;
  return std::uint64_t{source.wav->blockAlign} * kLargestFrameSamples * frames;
}

}  // namespace

bool SourceBlocks::AllocateBlock(std::uint32_t blockFrames) {
  if (blockFrames == 0 || !FitsBlock(UsableTracks(*mxf_.audio) * kFrameRoom, blockFrames)) {
    return false;
  }
  std::uint64_t frameBytes = 0;
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s)
    frameBytes += RegionBytes(plan_.sources[s], 1);
  blockFrames_ = std::min(FramesInMemory(blockFrames, frameBytes), plan_.range.total);
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

bool SourceBlocks::AllocateTrackBuffer() {
  trackBuffer_.reset(new (std::nothrow) std::uint8_t[kFrameRoom]);
  return trackBuffer_ != nullptr;
}

bool SourceBlocks::Read(std::uint32_t firstEntry, std::uint32_t frames) {
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

const std::uint8_t* SourceBlocks::Samples(std::uint32_t s, std::uint32_t c,
                                          const INDEX_ENTRY_ARRAY& entry) {
  const TrackSource& source = plan_.sources[s];
  const Region& region = regions_[s];
  const std::uint32_t held = std::min(region.held, entry.audioSamples);
  if (held == 0) return silence_.get();
  const std::uint32_t width = mxf_.audio->blockAlign;
  if (held == entry.audioSamples && source.wav->blockAlign == width) return region.readPos;
  FillChannel(*source.wav, source.firstChannel + c, region.readPos, held, entry.audioSamples, width,
              trackBuffer_.get());
  return trackBuffer_.get();
}

void SourceBlocks::Advance(const INDEX_ENTRY_ARRAY& entry) {
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
    Region& region = regions_[s];
    const std::uint32_t held = std::min(region.held, entry.audioSamples);
    if (held == 0) continue;
    region.readPos += std::size_t{held} * plan_.sources[s].wav->blockAlign;
    region.held -= held;
  }
}

}  // namespace quorvan
