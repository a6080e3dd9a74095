#include "rewrite/rewrap_mapped.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "mxf/analysis.h"
#include "platform/clock.h"
#include "platform/mapping.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/rewrap_proof.h"
#include "rewrite/row_writer.h"
#include "rewrite/source_blocks.h"
#include "rewrite/umid.h"

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
    case SourceState::kNotPcm:
      return kRewrapUnfit;
    case SourceState::kCutShort:
      return kRewrapWavFault;
  }
  return kRewrapNoWav;
}

// One rewrite from its plan to its end. Everything it opens goes with it.
class MappedRewrite {
 public:
  MappedRewrite(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf)
      : plan_(plan),
        tracks_(*tracks),
        mxf_(*mxf),
        files_(plan, tracks),
        blocks_(plan, *mxf, files_),
        rows_(plan, *mxf, &clip_) {}
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
  std::int32_t Prepare(const std::u16string& path) {
    clip_ = platform::File::Open(path, platform::OpenMode::kRewrite);
    if (!clip_.IsOpen()) return kRewrapNoClip;
    mapping_ =
        platform::FileMapping::Create(clip_, platform::MapAccess::kReadWrite, kClipMappingName);
    if (!mapping_.IsOpen()) return kRewrapNoClipMapping;
    if (!files_.Open()) return kRewrapNoWav;
    tracks_.totalFrames = plan_.range.total;
    if (const std::int32_t failed = AllocateBuffers()) return failed;
    tracks_.currentFrame = 0;
    tracks_.cancel = 0;
    return kSuccess;
  }

  // A segment whose audio would not fit 31 bits is refused as ever.
  std::int32_t AllocateBuffers() {
    if (!blocks_.AllocateAhead(plan_.range.total)) return kRewrapNoSilence;
    const std::uint64_t frameBytes = std::uint64_t{mxf_.audio->blockAlign} * kLargestFrameSamples;
    const bool tooLarge = frameBytes * mxf_.timecode->maxIndexDuration >
                          std::uint64_t{std::numeric_limits<std::int32_t>::max()};
    const bool allocated = blocks_.AllocateTrackBuffers();
    return !allocated || (tooLarge && UsesFiles()) ? kRewrapNoTrackBuffer : kSuccess;
  }

  bool UsesFiles() const {
    return std::any_of(plan_.sources.begin(), plan_.sources.begin() + plan_.sourceCount,
                       [](const TrackSource& source) { return source.wav != nullptr; });
  }

  // Nothing is written before all of this holds: the clip is the one that was analysed, every value
  // is the one of its track in its frame, and every source is what it was and holds what it claims.
  std::int32_t ProveValues() {
    if (!IsPlannedClip(clip_, plan_, mxf_)) return kRewrapUnfit;
    if (const std::int32_t failed = CodeOf(files_.Check())) return failed;
    if (!rows_.Allocate()) return kRewrapNoTrackBuffer;
    view_ = mapping_.View(0, mapping_.size());
    if (!view_.IsMapped()) return kRewrapClipFault;
    view_.ExpectScattered();
    rows_.ProveThrough(&view_);
    for (std::uint32_t i = 0; i < plan_.range.total; ++i) {
      if (tracks_.cancel == 1) return Cancel();
      if (const std::int32_t failed = CodeOf(rows_.Prove(i))) return failed;
    }
    return kSuccess;
  }

  // What is looked at here and there costs least through a view. What is written does not: the
  // system makes each page ready by itself then, and takes all that it keeps together with a page
  // for changed.
  std::int32_t WriteAll() {
    rows_.StartWriting();
    for (std::uint32_t done = 0; done < plan_.range.total;) {
      const std::uint32_t frames = std::min(blocks_.frames(), plan_.range.total - done);
      const std::uint32_t firstEntry = plan_.range.firstEntry + done;
      if (!blocks_.Read(firstEntry, frames)) return kRewrapWavFault;
      for (std::uint32_t i = 0; i < frames; ++i) {
        blocks_.Take((*mxf_.indexEntries)[firstEntry + i], &samples_);
        const GateResult written = rows_.Write(done, std::span(samples_).first(plan_.trackCount));
        if (written != GateResult::kDone) return CodeOf(written);
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

  std::int32_t Finish() {
    if (clip_.Size() != mxf_.fileSize) return kRewrapClipFault;
    const auto times = StampTimes();
    view_.Unmap();
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
  SourceBlocks blocks_;
  platform::FileMapping mapping_;
  platform::MappedView view_;
  RowWriter rows_;
  std::array<const std::uint8_t*, kMaxTracks> samples_{};
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
