#include "rewrite/source_blocks.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "mxf/sample_pattern.h"
#include "platform/fault_guard.h"
#include "state/wav_buffer.h"

namespace quorvan {
namespace {

// Copies one channel out of interleaved sample frames, each sample into the upper bytes of a target
// sample. The widths are compile-time constants so that each copy is one or two instructions.
template <std::uint32_t kSampleBytes, std::uint32_t kTargetBytes>
void Split(const std::uint8_t* source, std::uint32_t frames, std::uint32_t blockAlign,
           std::uint8_t* target) {
  constexpr std::uint32_t low = kTargetBytes - kSampleBytes;
  for (std::uint32_t i = 0; i < frames; ++i) {
    if constexpr (low > 0) std::memset(target, 0, low);
    std::memcpy(target + low, source, kSampleBytes);
    source += blockAlign;
    target += kTargetBytes;
  }
}

}  // namespace

void FillChannel(const WAV_FILE_INFO& wav, std::uint32_t channel, const std::uint8_t* interleaved,
                 std::uint32_t held, std::uint32_t wanted, std::uint32_t width,
                 std::uint8_t* target) {
  const std::uint32_t sampleBytes = wav.bytesPerChannelSample;
  const std::uint8_t* source = interleaved + channel * sampleBytes;
  if (sampleBytes == 3 && width == 3) Split<3, 3>(source, held, wav.blockAlign, target);
  if (sampleBytes == 2 && width == 3) Split<2, 3>(source, held, wav.blockAlign, target);
  if (sampleBytes == 2 && width == 2) Split<2, 2>(source, held, wav.blockAlign, target);
  std::memset(target + held * width, 0, (wanted - held) * width);
}

std::uint64_t SamplesLeft(const WAV_FILE_INFO& wav, std::uint64_t consumed, std::uint64_t wanted) {
  const std::uint64_t held = wav.dataSize / wav.blockAlign;
  return std::min(held > consumed ? held - consumed : 0, wanted);
}

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

// Bytes of memory for one block of `source`; 0 for a source that is mapped.
std::uint64_t SourceBlocks::BlockBytes(const TrackSource& source) const {
  return files_.ViewOf(source).IsMapped() ? 0 : RegionBytes(source, blockFrames_);
}

bool SourceBlocks::AllocateTrackBuffers() {
  trackBuffers_.reset(new (std::nothrow) std::uint8_t[kFrameRoom * plan_.trackCount + 1]);
  return trackBuffers_ != nullptr;
}

// Prefetches the samples of the next `aheadFrames_` frames of every source file, when `firstEntry`
// has reached the end of the stretch that was prefetched last.
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

const WAV_FILE_INFO* SourceBlocks::MoveTo(std::uint32_t firstEntry, std::uint32_t frames) {
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
