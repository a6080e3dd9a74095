#include "rewrite/rewrap_mapped.h"

#include <algorithm>
#include <limits>

#include "mxf/analysis.h"
#include "mxf/sample_pattern.h"
#include "platform/mapping.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/rewrap_run.h"

namespace quorvan {
namespace {

constexpr char16_t kClipMappingName[] = u"fmMXF";

// One rewrite through views, from its plan to its end. The destructor closes all files and views.
class MappedRewrite {
 public:
  MappedRewrite(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf)
      : plan_(plan), tracks_(*tracks), mxf_(*mxf), run_(plan, tracks, mxf, kStageRewrapMapped) {}
  MappedRewrite(const MappedRewrite&) = delete;
  MappedRewrite& operator=(const MappedRewrite&) = delete;

  std::int32_t Run(const std::u16string& path) {
    if (const std::int32_t failed = Prepare(path)) return failed;
    if (const std::int32_t failed = run_.ProveAndWrite(&view_)) return failed;
    view_.Unmap();
    return run_.Finish(true);
  }

 private:
  // Opens and maps the clip and the source files and allocates the buffers. The proof reads the
  // clip through a view, because scattered bytes cost least there. The rows are written through the
  // file: for a write through a view the system would prepare each page separately. It would also
  // count a page as changed together with all pages that it caches as one unit with that page.
  std::int32_t Prepare(const std::u16string& path) {
    run_.clip = platform::File::Open(path, platform::OpenMode::kRewrite);
    if (!run_.clip.IsOpen()) return kRewrapNoClip;
    mapping_ = platform::FileMapping::Create(run_.clip, kClipMappingName);
    if (!mapping_.IsOpen()) return kRewrapNoClipMapping;
    if (const auto* wav = run_.files.Open()) return NoWav(kRewrapNoWav, *wav);
    if (const auto* wav = run_.files.Map()) return NoWav(kRewrapNoWavMapping, *wav);
    tracks_.totalFrames = plan_.range.total;
    if (const std::int32_t failed = AllocateBuffers()) return failed;
    run_.Start();
    view_ = mapping_.View(0, mapping_.size());
    if (!view_.IsMapped()) return kRewrapNoView;
    view_.ExpectScattered();
    return kSuccess;
  }

  // Refuses a clip when a track gets a source file and the audio of one track in the longest index
  // table segment needs more bytes than fit a signed 32-bit number.
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

  std::int32_t NoWav(RewrapMappedCode code, const WAV_FILE_INFO& wav) {
    run_.NameFile(wav);
    return code;
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
  return RunPlanned(path, tracks, mxf, kStageRewrapMapped, [&](const RewrapPlan& plan) {
    return MappedRewrite(plan, tracks, mxf).Run(path);
  });
}

}  // namespace quorvan
