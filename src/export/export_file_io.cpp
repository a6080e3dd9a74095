#include "export/export_file_io.h"

#include <algorithm>
#include <string>

#include "export/export_batch.h"
#include "export/export_files.h"
#include "export/export_plan.h"
#include "mxf/analysis.h"
#include "mxf/essence/row_reader.h"
#include "state/wav_buffer.h"

namespace quorvan {
namespace {

constexpr std::uint16_t kFileIoExtensionSize = 0;

// Bytes of one row of all tracks of the clip, for the check of the block size: the number of tracks
// times the distance from the first audio element to the second in the first frame of the range, or
// times the element's size when the index has only one audio element.
std::uint64_t NominalRowBytes(const ExportPlan& plan, const MXF_BASE_INFO& mxf) {
  const INDEX_ENTRY_ARRAY& entry = (*mxf.indexEntries)[plan.range.firstEntry];
  const std::uint64_t elementBytes =
      entry.deltaCount > kDeltasBeforeAudio + 1
          ? std::uint64_t{entry.delta[kDeltasBeforeAudio + 1].elementDelta} -
                entry.delta[kDeltasBeforeAudio].elementDelta
          : mxf.audio->elementSize;
  return UsableTracks(*mxf.audio) * elementBytes;
}

// One export with plain file access, from its plan to its end. The destructor closes all files.
class FileIoExport {
 public:
  FileIoExport(const ExportPlan& plan, AUDIOTRACK_IO_INFO* tracks, const MXF_BASE_INFO& mxf)
      : plan_(plan),
        tracks_(*tracks),
        mxf_(mxf),
        rows_(clip_, mxf, plan.Tracks(), plan.range.firstEntry, plan.range.total),
        outcome_(tracks, kStageExportFileIo, files_) {}
  FileIoExport(const FileIoExport&) = delete;
  FileIoExport& operator=(const FileIoExport&) = delete;

  std::int32_t Run(const std::u16string& path) {
    tracks_.totalFrames = plan_.range.total;
    if (const std::int32_t failed = Prepare(path)) return failed;
    if (const std::int32_t failed = WriteAll()) return failed;
    if (clip_.Size() != mxf_.fileSize) return outcome_.Of(kClipFault);
    return outcome_.Finish(&files_);
  }

 private:
  std::int32_t Prepare(const std::u16string& path) {
    if (const JobFault fault = CheckClipFormat(plan_, mxf_)) return outcome_.Of(fault);
    if (const std::int32_t failed = MeasureRows()) return failed;
    if (!AllocateRows()) return kFileExportNoBlock;
    clip_ = platform::File::Open(path, platform::OpenMode::kReadAlone);
    if (!clip_.IsOpen()) return kFileExportNoClip;
    if (const JobFault fault = CheckClipSize(clip_, mxf_)) return outcome_.Of(fault);
    clip_.ExpectScattered();
    tracks_.currentFrame = 0;
    tracks_.cancel = 0;
    const std::int32_t proven =
        ProveFrames(&tracks_, 0, plan_.range.total, [&](std::uint32_t frame) {
          const std::uint32_t entryIndex = plan_.range.firstEntry + frame;
          return outcome_.Of(rows_.Read(entryIndex), entryIndex);
        });
    if (proven != kSuccess) return proven;
    rows_.Rewind(plan_.range.firstEntry);
    if (files_.Create(plan_, tracks_, HeaderOf(plan_, mxf_, kFileIoExtensionSize))) return kSuccess;
    outcome_.NameFile();
    return kFileExportNoFile;
  }

  // Takes memory for the rows of one block: as many frames as the buffer duration has, but at most
  // kMostFrames and at most as many as stay in the processor's cache. False when memory is out or
  // the buffer duration is invalid or too long.
  bool AllocateRows() {
    const std::uint32_t blockFrames = BlockFrames(tracks_.wavBufferIndex, *mxf_.timecode);
    if (blockFrames == 0) return false;
    if (plan_.range.total == 0) return rows_.Allocate();
    if (!FitsBlock(NominalRowBytes(plan_, mxf_), blockFrames)) return false;
    frames_ = FramesInCache(std::min(blockFrames, ExportFiles::kMostFrames), largestRow_);
    return rows_.Allocate(frames_);
  }

  // Finds the size of the largest row. Fails when the index does not lead to the row of a frame.
  std::int32_t MeasureRows() {
    for (std::uint32_t i = 0; i < plan_.range.total; ++i) {
      const auto row = LocateRow(mxf_, Entry(i), plan_.Tracks());
      if (!row) return outcome_.Of(ElementState::kMisplaced, plan_.range.firstEntry + i);
      largestRow_ = std::max(largestRow_, row->bytes);
    }
    return kSuccess;
  }

  // Index entry of frame `i`, counted from 0 in the range.
  const INDEX_ENTRY_ARRAY& Entry(std::uint32_t i) const {
    return (*mxf_.indexEntries)[plan_.range.firstEntry + i];
  }

  // Writes the valid frames in front of the first invalid one.
  std::int32_t WriteAll() {
    tracks_.phase = kPhaseWriting;
    for (std::uint32_t done = 0; done < plan_.range.total; done += frames_) {
      const std::uint32_t frames = std::min(frames_, plan_.range.total - done);
      const std::int32_t taken =
          TakeFrames(&tracks_, done, frames, [&](std::uint32_t frame) { return TakeFrame(frame); });
      if (const std::int32_t failed = outcome_.Of(files_.WriteTaken())) return failed;
      if (taken != kSuccess) return taken;
    }
    return kSuccess;
  }

  std::int32_t TakeFrame(std::uint32_t frame) {
    const std::uint32_t entryIndex = plan_.range.firstEntry + frame;
    const ElementState state = rows_.Read(entryIndex);
    if (state != ElementState::kProven) return outcome_.Of(state, entryIndex);
    for (std::uint32_t n = 0; n < plan_.trackCount; ++n) {
      const auto value = LocateElementValue(mxf_, Entry(frame), plan_.track[n]);
      const std::uint8_t* samples = value ? rows_.At(value->fileOffset(), value->bytes()) : nullptr;
      if (samples == nullptr) return outcome_.Of(ElementState::kMisplaced, entryIndex);
      files_.Take(n, {samples, value->bytes()});
    }
    return kSuccess;
  }

  const ExportPlan& plan_;
  AUDIOTRACK_IO_INFO& tracks_;
  const MXF_BASE_INFO& mxf_;
  platform::File clip_;
  RowReader rows_;
  ExportFiles files_;
  ExportOutcome outcome_;
  std::uint64_t largestRow_ = 0;
  std::uint32_t frames_ = 1;  // frames of a block
};

}  // namespace

std::int32_t ExportFileIo(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf) {
  return RunPlannedExport(path, tracks, mxf, kStageExportFileIo, [&](const ExportPlan& plan) {
    return FileIoExport(plan, tracks, *mxf).Run(path);
  });
}

}  // namespace quorvan
