#include "export/export_mapped.h"

#include <algorithm>
#include <span>
#include <string>

#include "export/export_batch.h"
#include "export/export_files.h"
#include "export/export_plan.h"
#include "mxf/analysis.h"
#include "mxf/essence/audio_element.h"
#include "mxf/essence/read_ahead.h"
#include "mxf/essence/segment_run.h"
#include "platform/mapping.h"

namespace quorvan {
namespace {

constexpr char16_t kMappingName[] = u"fmMXF_2";
constexpr std::uint16_t kMappedExtensionSize = 22;

// One export through views, from its plan to its end. The destructor closes all files and views.
class MappedExport {
 public:
  MappedExport(const ExportPlan& plan, AUDIOTRACK_IO_INFO* tracks, const MXF_BASE_INFO& mxf)
      : plan_(plan),
        tracks_(*tracks),
        mxf_(mxf),
        outcome_(tracks, kStageExportMapped, files_),
        ahead_(clip_, mxf, plan.Tracks(), plan.range.firstEntry, plan.range.total) {}
  MappedExport(const MappedExport&) = delete;
  MappedExport& operator=(const MappedExport&) = delete;

  std::int32_t Run(const std::u16string& path) {
    tracks_.totalFrames = plan_.range.total;
    if (const std::int32_t failed = Prepare(path)) return failed;
    if (const std::int32_t failed = WriteAll()) return failed;
    // When the clip was cut short during the job, the rest of its last page reads as zeros without
    // a fault.
    if (clip_.Size() != mxf_.fileSize) return outcome_.Of(kClipFault);
    return outcome_.Finish(&files_);
  }

 private:
  std::int32_t Prepare(const std::u16string& path) {
    if (const JobFault fault = CheckClipFormat(plan_, mxf_)) return outcome_.Of(fault);
    clip_ = platform::File::Open(path, platform::OpenMode::kReadAlone);
    if (!clip_.IsOpen()) return kExportNoClip;
    mapping_ = platform::FileMapping::Create(clip_, kMappingName);
    if (!mapping_.IsOpen()) return kExportNoClipMapping;
    if (mapping_.size() != mxf_.fileSize) return outcome_.Of(kClipChanged);
    tracks_.currentFrame = 0;
    tracks_.cancel = 0;
    if (const std::int32_t failed = ProveAll()) return failed;
    if (files_.Create(plan_, tracks_, HeaderOf(plan_, mxf_, kMappedExtensionSize))) return kSuccess;
    outcome_.NameFile();
    return kExportNoFile;
  }

  // Calls `take(view, first, frames)` for one stretch of frames after the other, at most
  // kMostFrames frames at a time. `first` counts from 0 in the export, and `view` covers the
  // stretch. Returns 0, kExportNoView, or the first result of `take` that is not 0.
  template <typename Take>
  std::int32_t WalkRuns(Take take) const {
    for (std::uint32_t done = 0; done < plan_.range.total;) {
      const SegmentRun run = NextRun(mxf_, plan_.range.firstEntry + done, plan_.range.total - done);
      const platform::MappedView view = mapping_.ViewCovering(run.start, run.length);
      if (!view.IsMapped()) return kExportNoView;
      view.ExpectScattered();
      for (const std::uint32_t end = done + run.frames; done < end;) {
        const std::uint32_t frames = std::min(end - done, ExportFiles::kMostFrames);
        if (const std::int32_t failed = take(view, done, frames)) return failed;
        done += frames;
      }
    }
    return kSuccess;
  }

  // Proves every value of every frame, before the first file is made.
  std::int32_t ProveAll() {
    const std::int32_t proven =
        WalkRuns([&](const platform::MappedView& view, std::uint32_t first, std::uint32_t frames) {
          return ProveFrames(&tracks_, first, frames, [&](std::uint32_t frame) {
            const std::uint32_t entryIndex = plan_.range.firstEntry + frame;
            ahead_.LookAndAsk(entryIndex);
            return outcome_.Of(ProveElements(view, mxf_, entryIndex, plan_.Tracks()), entryIndex);
          });
        });
    ahead_.Rewind(plan_.range.firstEntry);
    return proven;
  }

  std::int32_t WriteAll() {
    tracks_.phase = kPhaseWriting;
    return WalkRuns([&](const platform::MappedView& view, std::uint32_t first,
                        std::uint32_t frames) { return WriteFrames(view, first, frames); });
  }

  // Writes the valid frames in front of the first invalid one.
  std::int32_t WriteFrames(const platform::MappedView& view, std::uint32_t first,
                           std::uint32_t frames) {
    const std::int32_t taken = TakeFrames(&tracks_, first, frames, [&](std::uint32_t frame) {
      return TakeFrame(view, plan_.range.firstEntry + frame);
    });
    const std::int32_t written = outcome_.Of(files_.WriteTaken());
    return written != kSuccess ? written : taken;
  }

  std::int32_t TakeFrame(const platform::MappedView& view, std::uint32_t entryIndex) {
    ahead_.LookAndAsk(entryIndex);
    const ElementState state = ProveElements(view, mxf_, entryIndex, plan_.Tracks());
    if (state != ElementState::kProven) return outcome_.Of(state, entryIndex);
    const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[entryIndex];
    for (std::uint32_t n = 0; n < plan_.trackCount; ++n) {
      const auto value = LocateElementValue(mxf_, entry, plan_.track[n]);
      if (!value || !view.Covers(value->fileOffset(), value->bytes())) {
        return outcome_.Of(ElementState::kMisplaced, entryIndex);
      }
      files_.Take(n, {view.data() + (value->fileOffset() - view.fileOffset()), value->bytes()});
    }
    return kSuccess;
  }

  const ExportPlan& plan_;
  AUDIOTRACK_IO_INFO& tracks_;
  const MXF_BASE_INFO& mxf_;
  platform::File clip_;
  platform::FileMapping mapping_;
  ExportFiles files_;
  ExportOutcome outcome_;
  ReadAhead ahead_;
};

}  // namespace

std::int32_t ExportMapped(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf) {
  return RunPlannedExport(path, tracks, mxf, kStageExportMapped, [&](const ExportPlan& plan) {
    return MappedExport(plan, tracks, *mxf).Run(path);
  });
}

}  // namespace quorvan
