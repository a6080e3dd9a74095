#include "rewrite/rewrap_mapped.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <new>
#include <optional>

#include "mxf/analysis.h"
#include "mxf/segment_run.h"
#include "platform/clock.h"
#include "platform/fault_guard.h"
#include "platform/mapping.h"
#include "platform/text.h"
#include "rewrite/element_gate.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/rewrap_proof.h"
#include "rewrite/umid.h"
#include "rewrite/wav_source.h"

namespace quorvan {
namespace {

constexpr char16_t kClipMappingName[] = u"fmMXF";

std::int32_t CodeOf(GateResult result) {
  switch (result) {
    case GateResult::kDone:
      return kSuccess;
    case GateResult::kRefused:
      return kRewrapUnfit;
    case GateResult::kClipFault:
      return kRewrapClipFault;
    case GateResult::kSourceFault:
      return kRewrapWavFault;
  }
  return kRewrapUnfit;
}

std::int32_t CodeOf(ElementState state) {
  switch (state) {
    case ElementState::kSound:
      return kSuccess;
    case ElementState::kMisplaced:
      return kRewrapUnfit;
    case ElementState::kFault:
      return kRewrapClipFault;
  }
  return kRewrapUnfit;
}

std::int32_t CodeOf(SourceState state) {
  switch (state) {
    case SourceState::kSound:
      return kSuccess;
    case SourceState::kChanged:
      return kRewrapNoWav;
    case SourceState::kCutShort:
      return kRewrapWavFault;
  }
  return kRewrapNoWav;
}

std::u16string WavMappingName(std::uint32_t track) {
  char name[16];
  std::snprintf(name, sizeof name, "IDWAVTRK%02u", track + 1);
  return platform::ToUtf16(name);
}

// One rewrite from its plan to its end. Everything it opens goes with it.
class MappedRewrite {
 public:
  MappedRewrite(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf)
      : plan_(plan), tracks_(*tracks), mxf_(*mxf), files_(plan, tracks) {}
  MappedRewrite(const MappedRewrite&) = delete;
  MappedRewrite& operator=(const MappedRewrite&) = delete;

  std::int32_t Run(const std::u16string& path) {
    if (const std::int32_t failed = Prepare(path)) return failed;
    if (const std::int32_t failed = ProveValues()) return failed;
    if (tracks_.cancel == 1) return Cancel();
    if (const std::int32_t failed = WriteAll()) return failed;
    return Finish();
  }

 private:
  // One source with what is mapped of it for the running segment.
  struct OpenSource {
    platform::FileMapping mapping;
    platform::MappedView view;
    std::uint64_t consumed = 0;  // sample frames used up to now
  };

  std::int32_t Prepare(const std::u16string& path) {
    clip_ = platform::File::Open(path, platform::OpenMode::kRewrite);
    if (!clip_.IsOpen()) return kRewrapNoClip;
    clipMapping_ =
        platform::FileMapping::Create(clip_, platform::MapAccess::kReadWrite, kClipMappingName);
    if (!clipMapping_.IsOpen()) return kRewrapNoClipMapping;
    if (const std::int32_t failed = OpenSources()) return failed;
    tracks_.totalFrames = plan_.range.total;
    if (const std::int32_t failed = AllocateBuffers()) return failed;
    tracks_.currentFrame = 0;
    tracks_.cancel = 0;
    return kSuccess;
  }

  std::int32_t OpenSources() {
    if (!files_.Open()) return kRewrapNoWav;
    for (std::uint32_t i = 0; i < plan_.sourceCount; ++i) {
      const TrackSource& source = plan_.sources[i];
      if (source.wav == nullptr) continue;
      sources_[i].mapping = platform::FileMapping::Create(
          files_.Of(source), platform::MapAccess::kRead, WavMappingName(source.firstTrack));
      if (!sources_[i].mapping.IsOpen()) return kRewrapNoWavMapping;
    }
    return kSuccess;
  }

  // The largest frame's bytes of one track, as zeros and as working memory. A segment whose audio
  // would not fit 31 bits is refused as ever.
  std::int32_t AllocateBuffers() {
    const std::uint64_t frameBytes = std::uint64_t{mxf_.audio->blockAlign} * kLargestFrameSamples;
    silence_.reset(new (std::nothrow) std::uint8_t[frameBytes + 1]());
    if (silence_ == nullptr) return kRewrapNoSilence;
    const bool tooLarge = frameBytes * mxf_.timecode->maxIndexDuration >
                          std::uint64_t{std::numeric_limits<std::int32_t>::max()};
    trackBuffer_.reset(new (std::nothrow) std::uint8_t[frameBytes + 1]());
    return trackBuffer_ == nullptr || (tooLarge && UsesFiles()) ? kRewrapNoTrackBuffer : kSuccess;
  }

  bool UsesFiles() const {
    return std::any_of(plan_.sources.begin(), plan_.sources.begin() + plan_.sourceCount,
                       [](const TrackSource& source) { return source.wav != nullptr; });
  }

  // Nothing is written before all of this holds: the clip is the one that was analysed, every value
  // is the one of its track in its frame, and every source is what it was and holds what it claims.
  std::int32_t ProveValues() {
    if (clipMapping_.size() != mxf_.fileSize || !IsPlannedClip(clip_, plan_, mxf_)) {
      return kRewrapUnfit;
    }
    if (const std::int32_t failed = CodeOf(files_.Check())) return failed;
    for (std::uint32_t done = 0; done < plan_.range.total;) {
      const SegmentRun run = RunBehind(done);
      const platform::MappedView view = clipMapping_.ViewCovering(run.start, run.length);
      if (!view.IsMapped()) return kRewrapClipFault;
      for (std::uint32_t i = 0; i < run.frames; ++i) {
        if (tracks_.cancel == 1) return Cancel();
        const std::int32_t failed =
            CodeOf(ProveElements(view, mxf_, run.firstEntry + i, plan_.Tracks()));
        if (failed != kSuccess) return failed;
      }
      done += run.frames;
    }
    return kSuccess;
  }

  SegmentRun RunBehind(std::uint32_t done) const {
    return NextRun(mxf_, plan_.range.firstEntry + done, plan_.range.total - done);
  }

  std::int32_t WriteAll() {
    for (std::uint32_t done = 0; done < plan_.range.total;) {
      const SegmentRun run = RunBehind(done);
      platform::MappedView view = clipMapping_.ViewCovering(run.start, run.length);
      if (!view.IsMapped()) return kRewrapClipFault;
      if (const std::int32_t failed = MapSources(run)) return failed;
      for (std::uint32_t i = 0; i < run.frames; ++i) {
        if (const std::int32_t failed = WriteFrame(view, run.firstEntry + i)) return failed;
        if (tracks_.cancel == 1) return Cancel();
        tracks_.currentFrame = ++done;
      }
    }
    return kSuccess;
  }

  std::int32_t Cancel() {
    tracks_.cancel = 0;
    return kCancelled;
  }

  // A view of what each file gives to the run.
  std::int32_t MapSources(const SegmentRun& run) {
    std::uint64_t samples = 0;
    for (std::uint32_t i = 0; i < run.frames; ++i) {
      samples += (*mxf_.indexEntries)[run.firstEntry + i].audioSamples;
    }
    for (std::uint32_t i = 0; i < plan_.sourceCount; ++i) {
      const WAV_FILE_INFO* wav = plan_.sources[i].wav;
      if (wav == nullptr) continue;
      OpenSource& source = sources_[i];
      source.view.Unmap();
      const std::uint64_t wanted = SamplesLeft(*wav, source.consumed, samples);
      if (wanted == 0) continue;
      source.view = source.mapping.ViewCovering(wav->dataOffset + source.consumed * wav->blockAlign,
                                                wanted * wav->blockAlign);
      if (!source.view.IsMapped()) return kRewrapWavFault;
    }
    return kSuccess;
  }

  std::int32_t WriteFrame(const platform::MappedView& view, std::uint32_t entryIndex) {
    const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[entryIndex];
    for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
      const TrackSource& source = plan_.sources[s];
      for (std::uint32_t c = 0; c < source.trackCount; ++c) {
        const auto value = LocateElementValue(mxf_, entry, source.firstTrack + c);
        if (!value) return kRewrapUnfit;
        const std::uint8_t* samples =
            ChannelSamples(source, sources_[s], source.firstChannel + c, entry.audioSamples);
        if (samples == nullptr) return kRewrapWavFault;
        const GateResult written = WriteElement(view, *value, {samples, value->bytes()});
        if (written != GateResult::kDone) return CodeOf(written);
      }
      if (source.wav != nullptr) sources_[s].consumed += entry.audioSamples;
    }
    return kSuccess;
  }

  // The audio of one channel for one frame of `wanted` samples, in the clip's sample width:
  // straight from the view where its bytes are just those, else split into the buffer. Silence
  // where the file has ended. Null when the storage of the file fails.
  const std::uint8_t* ChannelSamples(const TrackSource& source, const OpenSource& open,
                                     std::uint32_t channel, std::uint32_t wanted) {
    if (source.wav == nullptr) return silence_.get();
    const WAV_FILE_INFO& wav = *source.wav;
    const auto held = static_cast<std::uint32_t>(SamplesLeft(wav, open.consumed, wanted));
    if (held == 0) return silence_.get();
    const std::uint32_t width = mxf_.audio->blockAlign;
    const std::uint64_t place = wav.dataOffset + open.consumed * wav.blockAlign;
    const std::uint8_t* interleaved = open.view.data() + (place - open.view.fileOffset());
    if (held == wanted && wav.blockAlign == width) return interleaved;

    std::uint8_t* target = trackBuffer_.get();
    auto fill = [&] { FillChannel(wav, channel, interleaved, held, wanted, width, target); };
    if (!platform::RunGuarded(fill).completed) return nullptr;
    return target;
  }

  std::int32_t Finish() {
    if (clip_.Size() != mxf_.fileSize) return kRewrapClipFault;
    const auto times = StampTimes();
    clipMapping_ = {};
    for (OpenSource& source : sources_)
      source = {};
    files_.Close();
    if (!RenewUmids(&clip_, &mxf_)) return kRewrapLongUmid;
    // Writing the UMIDs has moved the times on; the file keeps those of the end of its audio.
    if (times) clip_.SetTimes(*times);
    return kSuccess;
  }

  // Sets last access and last write to now; the creation stays.
  std::optional<platform::FileTimes> StampTimes() {
    auto times = clip_.Times();
    if (times) {
      times->lastAccess = times->lastWrite = platform::FileTimeNow();
      clip_.SetTimes(*times);
    }
    return times;
  }

  const RewrapPlan& plan_;
  AUDIOTRACK_IO_INFO& tracks_;
  MXF_BASE_INFO& mxf_;
  SourceFiles files_;
  platform::File clip_;
  platform::FileMapping clipMapping_;
  std::array<OpenSource, kMaxTracks> sources_;
  std::unique_ptr<std::uint8_t[]> silence_;
  std::unique_ptr<std::uint8_t[]> trackBuffer_;
};

}  // namespace

std::int32_t RewrapMapped(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf) {
  RewrapPlan plan{};
  if (const ArgumentFault fault = PlanRewrap(path, tracks, mxf, &plan)) {
    return static_cast<std::int32_t>(kStageRewrapMapped) + fault;
  }
  return MappedRewrite(plan, tracks, mxf).Run(path);
}

}  // namespace quorvan
