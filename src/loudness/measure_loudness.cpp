#include "loudness/measure_loudness.h"

#include <ebur128.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <new>
#include <optional>
#include <span>

#include "loudness/sample_reader.h"
#include "mxf/analysis.h"
#include "mxf/essence/audio_element.h"
#include "mxf/sample_pattern.h"
#include "state/frame_range.h"

namespace quorvan {
namespace {

constexpr std::uint32_t kPadSeconds = 5;
constexpr int kMode = EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA |
                      EBUR128_MODE_SAMPLE_PEAK | EBUR128_MODE_TRUE_PEAK;

struct DestroyState {
  void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};
using LibraryState = std::unique_ptr<ebur128_state, DestroyState>;

constexpr std::int32_t Failed(JobFault fault) {
  return static_cast<std::int32_t>(kStageExportMapped) + fault;
}

// One measurement, from the checked range to its results. Destroying it closes what it has opened.
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
    return StoreResults() ? kSuccess : static_cast<std::int32_t>(kLoudnessNoMemory);
  }

 private:
  void SelectTracks(const std::uint8_t* trackSelected) {
    for (std::uint32_t t = 0; t < UsableTracks(*mxf_.audio) && trackCount_ < kLoudnessChannels;
         ++t) {
      if (trackSelected[t] == 1) track_[trackCount_++] = t;
    }
  }

  std::span<const std::uint32_t> Tracks() const { return std::span(track_).first(trackCount_); }

  std::int32_t Prepare(const std::u16string& path) {
    const MXF_AUDIO_INFO& audio = *mxf_.audio;
    if (!SampleReader::CanConvert(audio.blockAlign) || audio.sampleRate != kSampleRate) {
      return Failed(kNoSampleFormat);
    }
    if (!IndexHolds(range_, mxf_)) return Failed(kIndexUnfit);
    if (!MakeLibraryState()) return kLoudnessNoMemory;
    tracks_.currentFrame = 0;
    tracks_.cancel = 0;
    if (!AllocateBuffers()) return kLoudnessNoMemory;
    clip_ = platform::File::Open(path, platform::OpenMode::kReadAlone);
    if (!clip_.IsOpen()) return kLoudnessNoClip;
    const auto size = clip_.Size();
    if (!size) return Failed(kClipFault);
    if (*size == 0) return kLoudnessEmptyClip;
    if (*size != mxf_.fileSize) return Failed(kClipChanged);
    tracks_.phase = kPhaseWriting;
    clip_.ExpectScattered();
    reader_.emplace(clip_, mxf_, Tracks(), range_);
    const JobFault fault = reader_->Start();
    return fault == kNoFault ? kSuccess : Failed(fault);
  }

  bool MakeLibraryState() {
    library_.reset(ebur128_init(kLoudnessChannels, mxf_.audio->sampleRate, kMode));
    return library_ != nullptr &&
           ebur128_set_channel(library_.get(), 0, EBUR128_LEFT) == EBUR128_SUCCESS &&
           ebur128_set_channel(library_.get(), 1, EBUR128_RIGHT) == EBUR128_SUCCESS;
  }

  bool AllocateBuffers() {
    padFrames_ = std::size_t{mxf_.audio->sampleRate} * kPadSeconds;
    pad_.reset(new (std::nothrow) float[padFrames_ * kLoudnessChannels]());
    return pad_ != nullptr;
  }

  bool Feed(const float* frames, std::size_t count) {
    return ebur128_add_frames_float(library_.get(), frames, count) == EBUR128_SUCCESS;
  }

  std::int32_t FeedAll() {
    for (std::uint32_t done = 0; done < range_.total;) {
      const SampleFrame frame = reader_->Next();
      if (const JobFault fault = FaultOfFrame(frame.state)) {
        tracks_.fault.frame = range_.firstEntry + done;
        return Failed(fault);
      }
      if (tracks_.cancel == 1) return Cancel();
      if (!Feed(frame.samples, frame.count)) return kLoudnessNoMemory;
      tracks_.currentFrame = ++done;
    }
    return kSuccess;
  }

  std::int32_t Cancel() {
    tracks_.totalFrames = 0;
    tracks_.cancel = 0;
    return kCancelled;
  }

  bool StoreResults() {
    double integrated = 0.0;
    double range = 0.0;
    if (ebur128_loudness_global(library_.get(), &integrated) != EBUR128_SUCCESS ||
        ebur128_loudness_range(library_.get(), &range) != EBUR128_SUCCESS) {
      return false;
    }
    double peak = 0.0;
    for (std::uint32_t c = 0; c < kLoudnessChannels; ++c) {
      double channelPeak = 0.0;
      if (ebur128_true_peak(library_.get(), c, &channelPeak) == EBUR128_SUCCESS) {
        peak = std::max(peak, channelPeak);
      }
    }
    MXF_AUDIO_INFO& audio = *mxf_.audio;
    audio.integratedLoudness = integrated;
    audio.truePeak = peak > 0.0 ? 20.0 * std::log10(peak) : kSilentTruePeak;
    audio.loudnessRange = range;
    return true;
  }

  const FrameRange& range_;
  AUDIOTRACK_IO_INFO& tracks_;
  MXF_BASE_INFO& mxf_;
  std::uint32_t trackCount_ = 0;
  std::array<std::uint32_t, kLoudnessChannels> track_{};  // left, right
  LibraryState library_;
  platform::File clip_;
  std::optional<SampleReader> reader_;
  std::size_t padFrames_ = 0;
  std::unique_ptr<float[]> pad_;
};

}  // namespace

std::int32_t MeasureLoudness(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf,
                             const std::uint8_t* trackSelected) {
  if (tracks != nullptr) BeginJob(tracks);
  FrameRange range{};
  if (const JobFault fault = FindRange(path, tracks, mxf, kLoudnessRange, &range)) {
    return Failed(fault);
  }
  if (trackSelected == nullptr) return Failed(kNoTracks);
  try {
    return Measurement(range, tracks, mxf).Run(path, trackSelected);
  } catch (const std::bad_alloc&) {
    return Failed(kOutOfMemory);
  }
}

}  // namespace quorvan
