#include "rewrite/source_views.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include "platform/fault_guard.h"
#include "platform/text.h"
#include "rewrite/wav_source.h"

namespace quorvan {
namespace {

// Sample frames that are made ready at one go: some hundred kilobytes, which stay in the
// processor's cache until they are written.
constexpr std::uint64_t kReadyFrames = 65536;

std::u16string MappingName(std::uint32_t track) {
  char name[16];
  std::snprintf(name, sizeof name, "IDWAVTRK%02u", track + 1);
  return platform::ToUtf16(name);
}

}  // namespace

bool SourceViews::Map() {
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
    const TrackSource& source = plan_.sources[s];
    if (source.wav == nullptr) continue;
    sources_[s].mapping = platform::FileMapping::Create(
        files_.Of(source), platform::MapAccess::kRead, MappingName(source.firstTrack));
    if (!sources_[s].mapping.IsOpen()) return false;
  }
  return true;
}

bool SourceViews::AllocateSilence() {
  silence_.reset(new (std::nothrow) std::uint8_t[kFrameRoom]());
  return silence_ != nullptr;
}

bool SourceViews::AllocateTrackBuffers() {
  trackBuffers_.reset(new (std::nothrow) std::uint8_t[kFrameRoom * plan_.trackCount + 1]);
  return trackBuffers_ != nullptr;
}

bool SourceViews::Enter(const SegmentRun& run) {
  std::uint64_t samples = 0;
  for (std::uint32_t i = 0; i < run.frames; ++i)
    samples += (*mxf_.indexEntries)[run.firstEntry + i].audioSamples;
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
    const WAV_FILE_INFO* wav = plan_.sources[s].wav;
    if (wav == nullptr) continue;
    Source& source = sources_[s];
    source.view.Unmap();
    source.ready = source.consumed;
    const std::uint64_t wanted = SamplesLeft(*wav, source.consumed, samples);
    if (wanted == 0) continue;
    source.view = source.mapping.ViewCovering(wav->dataOffset + source.consumed * wav->blockAlign,
                                              wanted * wav->blockAlign);
    if (!source.view.IsMapped()) return false;
  }
  return true;
}

void SourceViews::MakeReady(const WAV_FILE_INFO& wav, Source* source, std::uint64_t wanted) {
  if (source->consumed + wanted <= source->ready) return;
  source->view.Populate(wav.dataOffset + source->consumed * wav.blockAlign,
                        kReadyFrames * wav.blockAlign);
  source->ready = source->consumed + kReadyFrames;
}

bool SourceViews::Take(const INDEX_ENTRY_ARRAY& entry,
                       std::array<const std::uint8_t*, kMaxTracks>* samples) {
  std::uint32_t n = 0;
  for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
    const TrackSource& source = plan_.sources[s];
    const std::uint32_t wanted = entry.audioSamples;
    const WAV_FILE_INFO* wav = source.wav;
    const auto held =
        wav == nullptr
            ? 0
            : static_cast<std::uint32_t>(SamplesLeft(*wav, sources_[s].consumed, wanted));
    if (held == 0) {
      for (std::uint32_t c = 0; c < source.trackCount; ++c)
        (*samples)[n++] = silence_.get();
      continue;
    }
    Source& open = sources_[s];
    MakeReady(*wav, &open, held);
    const std::uint64_t place = wav->dataOffset + open.consumed * wav->blockAlign;
    const std::uint8_t* interleaved = open.view.data() + (place - open.view.fileOffset());
    const bool straight = held == wanted && wav->blockAlign == mxf_.audio->blockAlign;
    for (std::uint32_t c = 0; c < source.trackCount; ++c, ++n) {
      std::uint8_t* target = trackBuffers_.get() + kFrameRoom * n;
      (*samples)[n] = straight ? interleaved : target;
      if (!straight && !Split(source, c, interleaved, held, wanted, target)) return false;
    }
    open.consumed += held;
  }
  return true;
}

// One channel into the memory of its track; false when the storage behind the view fails.
bool SourceViews::Split(const TrackSource& source, std::uint32_t c, const std::uint8_t* interleaved,
                        std::uint32_t held, std::uint32_t wanted, std::uint8_t* target) const {
  auto fill = [&] {
    FillChannel(*source.wav, source.firstChannel + c, interleaved, held, wanted,
                mxf_.audio->blockAlign, target);
  };
  return platform::RunGuarded(fill).completed;
}

void SourceViews::Close() {
  for (Source& source : sources_)
    source = {};
}

}  // namespace quorvan
