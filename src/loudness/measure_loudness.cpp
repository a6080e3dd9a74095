#include "loudness/measure_loudness.h"

#include <ebur128.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <span>

#include "mxf/analysis.h"
#include "mxf/audio_element.h"
#include "mxf/sample_pattern.h"
#include "mxf/segment_run.h"
#include "platform/fault_guard.h"
#include "platform/mapping.h"
#include "state/frame_range.h"

namespace quorvan {
namespace {

constexpr char16_t kMappingName[] = u"fmMXF_2";
constexpr std::uint32_t kChannels = 2;
constexpr std::uint32_t kPadSeconds = 5;
constexpr std::size_t kRawBytes = 9600;  // of one frame and channel
constexpr std::size_t kSampleFloats = 19200;
constexpr int kMode = EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA |
                      EBUR128_MODE_SAMPLE_PEAK | EBUR128_MODE_TRUE_PEAK;

static_assert(kLargestFrameSamples * 4 <= kRawBytes);
static_assert(kLargestFrameSamples * kChannels <= kSampleFloats);

struct DestroyState {
  void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};
using LibraryState = std::unique_ptr<ebur128_state, DestroyState>;

// Turns `count` little-endian signed samples of kWidth bytes into every second float from `target`
// on.
template <std::uint32_t kWidth>
void Convert(const std::uint8_t* bytes, std::uint32_t count, float* target) {
  constexpr float factor = 1.0F / static_cast<float>(std::uint32_t{1} << (8 * kWidth - 1));
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t word = 0;
    for (std::uint32_t b = 0; b < kWidth; ++b)
      word |= std::uint32_t{bytes[i * kWidth + b]} << (8 * (4 - kWidth + b));
    const std::int32_t sample = static_cast<std::int32_t>(word) >> (8 * (4 - kWidth));
    target[i * kChannels] = static_cast<float>(sample) * factor;
  }
}

using Converter = void (*)(const std::uint8_t*, std::uint32_t, float*);

Converter ConverterOf(std::uint32_t blockAlign) {
  switch (blockAlign) {
    case 2:
      return Convert<2>;
    case 3:
      return Convert<3>;
    case 4:
      return Convert<4>;
    default:
      return nullptr;
  }
}

std::int32_t CodeOf(ElementState state) {
  switch (state) {
    case ElementState::kSound:
      return kSuccess;
    case ElementState::kMisplaced:
      return kLoudnessUnfit;
    case ElementState::kFault:
      return kLoudnessNoView;
  }
  return kLoudnessUnfit;
}

// One measurement from its range to its results. Everything it opens goes with it.
class Measurement {
 public:
  Measurement(const FrameRange& range, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf)
      : range_(range), tracks_(*tracks), mxf_(*mxf) {}
  Measurement(const Measurement&) = delete;
  Measurement& operator=(const Measurement&) = delete;

  std::int32_t Run(const std::u16string& path, const std::uint8_t* trackSelected) {
    SelectTracks(trackSelected);
    tracks_.totalFrames = range_.total;
    if (const std::int32_t failed = Prepare(path)) return failed;
    if (!Feed(pad_.get(), padFrames_)) return kLoudnessNoMemory;
    if (const std::int32_t failed = FeedAll()) return failed;
    if (!Feed(pad_.get(), padFrames_)) return kLoudnessNoMemory;
    StoreResults();
    return kSuccess;
  }

 private:
  void SelectTracks(const std::uint8_t* trackSelected) {
    for (std::uint32_t t = 0; t < UsableTracks(*mxf_.audio) && trackCount_ < kChannels; ++t) {
      if (trackSelected[t] == 1) track_[trackCount_++] = t;
    }
  }

  std::span<const std::uint32_t> Tracks() const { return std::span(track_).first(trackCount_); }

  std::int32_t Prepare(const std::u16string& path) {
    const MXF_AUDIO_INFO& audio = *mxf_.audio;
    convert_ = ConverterOf(audio.blockAlign);
    if (convert_ == nullptr || audio.sampleRate != kSampleRate || !IndexHolds(range_, mxf_)) {
      return kLoudnessUnfit;
    }
    if (!MakeLibraryState()) return kLoudnessNoMemory;
    tracks_.currentFrame = 0;
    tracks_.cancel = 0;
    if (!AllocateBuffers()) return kLoudnessNoMemory;
    clip_ = platform::File::Open(path, platform::OpenMode::kReadAlone);
    if (!clip_.IsOpen()) return kLoudnessNoClip;
    mapping_ = platform::FileMapping::Create(clip_, platform::MapAccess::kRead, kMappingName);
    if (!mapping_.IsOpen()) return kLoudnessNoMapping;
    return mapping_.size() == mxf_.fileSize ? kSuccess : static_cast<std::int32_t>(kLoudnessUnfit);
  }

  bool MakeLibraryState() {
    library_.reset(ebur128_init(kChannels, mxf_.audio->sampleRate, kMode));
    return library_ != nullptr &&
           ebur128_set_channel(library_.get(), 0, EBUR128_LEFT) == EBUR128_SUCCESS &&
           ebur128_set_channel(library_.get(), 1, EBUR128_RIGHT) == EBUR128_SUCCESS;
  }

  bool AllocateBuffers() {
    padFrames_ = std::size_t{mxf_.audio->sampleRate} * kPadSeconds;
    pad_.reset(new (std::nothrow) float[padFrames_ * kChannels]());
    samples_.reset(new (std::nothrow) float[kSampleFloats]());
    bool allocated = pad_ != nullptr && samples_ != nullptr;
    for (auto& raw : raw_) {
      raw.reset(new (std::nothrow) std::uint8_t[kRawBytes]());
      allocated = allocated && raw != nullptr;
    }
    return allocated;
  }

  bool Feed(const float* frames, std::size_t count) {
    return ebur128_add_frames_float(library_.get(), frames, count) == EBUR128_SUCCESS;
  }

  std::int32_t FeedAll() {
    for (std::uint32_t done = 0; done < range_.total;) {
      const SegmentRun run = NextRun(mxf_, range_.firstEntry + done, range_.total - done);
      const platform::MappedView view = mapping_.ViewCovering(run.start, run.length);
      if (!view.IsMapped()) return kLoudnessNoView;
      for (std::uint32_t i = 0; i < run.frames; ++i) {
        if (const std::int32_t failed = FeedFrame(view, run.firstEntry + i)) return failed;
        tracks_.currentFrame = ++done;
      }
    }
    return kSuccess;
  }

  std::int32_t FeedFrame(const platform::MappedView& view, std::uint32_t entryIndex) {
    const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[entryIndex];
    // Without a selected track no element speaks for the count.
    if (entry.audioSamples > kLargestFrameSamples) return kLoudnessUnfit;
    const ElementState state = ProveElements(view, mxf_, entryIndex, Tracks());
    if (state != ElementState::kSound) return CodeOf(state);
    for (std::uint32_t c = 0; c < trackCount_; ++c) {
      if (const std::int32_t failed = CopyValue(view, entry, c)) return failed;
    }
    if (tracks_.cancel == 1) return Cancel();
    for (std::uint32_t c = 0; c < kChannels; ++c)
      convert_(raw_[c].get(), entry.audioSamples, samples_.get() + c);
    return Feed(samples_.get(), entry.audioSamples) ? kSuccess
                                                    : static_cast<std::int32_t>(kLoudnessNoMemory);
  }

  std::int32_t CopyValue(const platform::MappedView& view, const INDEX_ENTRY_ARRAY& entry,
                         std::uint32_t channel) {
    const auto value = LocateElementValue(mxf_, entry, track_[channel]);
    if (!value || value->bytes() > kRawBytes || !view.Covers(value->fileOffset(), value->bytes())) {
      return kLoudnessUnfit;
    }
    std::uint8_t* target = raw_[channel].get();
    const std::uint8_t* source = view.data() + (value->fileOffset() - view.fileOffset());
    const std::size_t bytes = value->bytes();
    auto copy = [&] { std::memcpy(target, source, bytes); };
    return platform::RunGuarded(copy).completed ? kSuccess
                                                : static_cast<std::int32_t>(kLoudnessNoView);
  }

  std::int32_t Cancel() {
    tracks_.totalFrames = 0;
    tracks_.cancel = 0;
    return kCancelled;
  }

  void StoreResults() {
    double integrated = 0.0;
    if (ebur128_loudness_global(library_.get(), &integrated) != EBUR128_SUCCESS) return;
    double peak = 0.0;
    for (std::uint32_t c = 0; c < kChannels; ++c) {
      double channelPeak = 0.0;
      if (ebur128_true_peak(library_.get(), c, &channelPeak) == EBUR128_SUCCESS) {
        peak = std::max(peak, channelPeak);
      }
    }
    MXF_AUDIO_INFO& audio = *mxf_.audio;
    audio.integratedLoudness = integrated;
    audio.truePeak = peak > 0.0 ? 20.0 * std::log10(peak) : kSilentTruePeak;
    ebur128_loudness_range(library_.get(), &audio.loudnessRange);
  }

  const FrameRange& range_;
  AUDIOTRACK_IO_INFO& tracks_;
  MXF_BASE_INFO& mxf_;
  std::uint32_t trackCount_ = 0;
  std::array<std::uint32_t, kChannels> track_{};  // left, right
  Converter convert_ = nullptr;
  LibraryState library_;
  platform::File clip_;
  platform::FileMapping mapping_;
  std::size_t padFrames_ = 0;
  std::unique_ptr<float[]> pad_;
  std::array<std::unique_ptr<std::uint8_t[]>, kChannels> raw_;  // left, right
  std::unique_ptr<float[]> samples_;
};

}  // namespace

std::int32_t MeasureLoudness(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf,
                             const std::uint8_t* trackSelected) {
  FrameRange range{};
  if (const ArgumentFault fault = CheckArguments(path, tracks, mxf, kLoudnessRange, &range)) {
    return static_cast<std::int32_t>(kStageExportMapped) + fault;
  }
  if (trackSelected == nullptr) return kLoudnessNoTracks;
  return Measurement(range, tracks, mxf).Run(path, trackSelected);
}

}  // namespace quorvan
