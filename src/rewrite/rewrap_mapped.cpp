#include "rewrite/rewrap_mapped.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "mxf/analysis.h"
#include "platform/clock.h"
#include "platform/mapping.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/rewrap_run.h"
#include "rewrite/umid.h"

namespace quorvan {
namespace {

constexpr char16_t kClipMappingName[] = u"fmMXF";

constexpr RunCodes kCodes = {.unfit = kRewrapUnfit,
                             .sourceChanged = kRewrapNoWav,
                             .sourceCutShort = kRewrapWavFault,
                             .noMemory = kRewrapNoTrackBuffer,
                             .clipFault = kRewrapClipFault,
                             .wavFault = kRewrapWavFault};

// One rewrite from its plan to its end. Everything it opens goes with it.
class MappedRewrite {
 public:
  MappedRewrite(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf)
      : plan_(plan), tracks_(*tracks), mxf_(*mxf), run_(plan, tracks, mxf, kCodes) {}
  MappedRewrite(const MappedRewrite&) = delete;
  MappedRewrite& operator=(const MappedRewrite&) = delete;

  std::int32_t Run(const std::u16string& path) {
    if (const std::int32_t failed = Prepare(path)) return failed;
    if (const std::int32_t failed = run_.ProveAndWrite(&view_)) return failed;
    return Finish();
  }

 private:
  // What is looked at here and there costs least through a view. What is written does not: the
  // system makes each page ready by itself then, and takes all that it keeps together with a page
  // for changed.
  std::int32_t Prepare(const std::u16string& path) {
    run_.clip = platform::File::Open(path, platform::OpenMode::kRewrite);
    if (!run_.clip.IsOpen()) return kRewrapNoClip;
    mapping_ = platform::FileMapping::Create(run_.clip, kClipMappingName);
    if (!mapping_.IsOpen()) return kRewrapNoClipMapping;
    if (!run_.files.Open()) return kRewrapNoWav;
    if (!run_.files.Map()) return kRewrapNoWavMapping;
    tracks_.totalFrames = plan_.range.total;
    if (const std::int32_t failed = AllocateBuffers()) return failed;
    run_.Start();
    view_ = mapping_.View(0, mapping_.size());
    if (!view_.IsMapped()) return kRewrapClipFault;
    view_.ExpectScattered();
    return kSuccess;
  }

  // A segment whose audio would not fit 31 bits is refused as ever.
  std::int32_t AllocateBuffers() {
    if (!run_.blocks.AllocateAhead(plan_.range.total)) return kRewrapNoSilence;
    const std::uint64_t frameBytes = std::uint64_t{mxf_.audio->blockAlign} * kLargestFrameSamples;
    const bool tooLarge = frameBytes * mxf_.timecode->maxIndexDuration >
                          std::uint64_t{std::numeric_limits<std::int32_t>::max()};
    const bool allocated = run_.blocks.AllocateTrackBuffers();
    return !allocated || (tooLarge && UsesFiles()) ? kRewrapNoTrackBuffer : kSuccess;
  }

  bool UsesFiles() const {
    return std::any_of(plan_.sources.begin(), plan_.sources.begin() + plan_.sourceCount,
                       [](const TrackSource& source) { return source.wav != nullptr; });
  }

  std::int32_t Finish() {
    const auto times = StampTimes();
    view_.Unmap();
    run_.files.Close();
    if (!RenewUmids(&run_.clip, &mxf_)) return kRewrapLongUmid;
    // Writing the UMIDs has moved the times on; the file keeps those of the end of its audio.
    if (times) run_.clip.SetTimes(*times);
    return run_.clip.Close() ? kSuccess : kRewrapClipFault;
  }

  // Sets last access and last write to now; the creation stays.
  std::optional<platform::FileTimes> StampTimes() {
    auto times = run_.clip.Times();
    if (times) {
      times->lastAccess = times->lastWrite = platform::FileTimeNow();
      run_.clip.SetTimes(*times);
    }
    return times;
  }

  const RewrapPlan& plan_;
  AUDIOTRACK_IO_INFO& tracks_;
  MXF_BASE_INFO& mxf_;
  RewrapRun run_;
  platform::FileMapping mapping_;
  platform::MappedView view_;
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
