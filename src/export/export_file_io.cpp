#include "export/export_file_io.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "export/export_files.h"
#include "export/export_plan.h"
#include "mxf/analysis.h"
#include "mxf/row_reader.h"
#include "state/wav_buffer.h"

namespace quorvan {
namespace {

constexpr std::uint16_t kExtensionSize = 0;
constexpr std::uint64_t kMostRowBytes = std::uint64_t{1} << 24;

// The audio of one frame: from the first value that is wanted to the end of the last one.
struct Row {
  std::uint64_t start;  // file offset
  std::uint64_t bytes;
};

// False when the index does not lead to a row of elements.
bool LocateRow(const ExportPlan& plan, const MXF_BASE_INFO& mxf, const INDEX_ENTRY_ARRAY& entry,
               Row* row) {
  *row = {};
  std::uint64_t end = 0;
  for (const std::uint32_t track : plan.Tracks()) {
    const auto value = LocateElementValue(mxf, entry, track);
    if (!value || (end > 0 && value->fileOffset() < end)) return false;
    if (end == 0) row->start = value->fileOffset();
    end = value->end();
  }
  row->bytes = end - row->start;
  return row->bytes <= kMostRowBytes;
}

// What a row of all the clip's tracks takes in the first frame, as the size of a block is reckoned.
std::uint64_t NominalRowBytes(const ExportPlan& plan, const MXF_BASE_INFO& mxf) {
  const INDEX_ENTRY_ARRAY& entry = (*mxf.indexEntries)[plan.range.firstEntry];
  const std::uint64_t elementBytes = entry.deltaCount > kDeltasBeforeAudio + 1
                                         ? entry.delta[kDeltasBeforeAudio + 1].elementDelta
                                         : mxf.audio->elementSize;
  return UsableTracks(*mxf.audio) * elementBytes;
}

// One export from its plan to its end. Everything it opens goes with it.
class FileIoExport {
 public:
  FileIoExport(const ExportPlan& plan, AUDIOTRACK_IO_INFO* tracks, const MXF_BASE_INFO& mxf)
      : plan_(plan),
        tracks_(*tracks),
        mxf_(mxf),
        rows_(clip_, mxf, plan.Tracks(), plan.range.firstEntry, plan.range.total) {}
  FileIoExport(const FileIoExport&) = delete;
  FileIoExport& operator=(const FileIoExport&) = delete;

  std::int32_t Run(const std::u16string& path) {
    tracks_.totalFrames = plan_.range.total;
    if (const std::int32_t failed = Prepare(path)) return failed;
    if (const std::int32_t failed = WriteAll()) return failed;
    return files_.Close() ? kSuccess : static_cast<std::int32_t>(kFileExportNoFile);
  }

 private:
  std::int32_t Prepare(const std::u16string& path) {
    if (!CanBeExported(plan_, mxf_) || !MeasureRows()) return kFileExportUnfit;
    if (!AllocateBlock()) return kFileExportNoBlock;
    clip_ = platform::File::Open(path, platform::OpenMode::kReadAlone);
    if (!clip_.IsOpen()) return kFileExportNoClip;
    if (clip_.Size() != mxf_.fileSize) return kFileExportUnfit;
    clip_.ExpectScattered();
    if (!rows_.Allocate()) return kFileExportNoBlock;
    tracks_.currentFrame = 0;
    tracks_.cancel = 0;
    const BwfHeader header = HeaderOf(plan_, mxf_, kExtensionSize);
    return files_.Create(plan_, tracks_, header) ? kSuccess
                                                 : static_cast<std::int32_t>(kFileExportNoFile);
  }

  // Room for the largest row of the range.
  bool MeasureRows() {
    Row row;
    for (std::uint32_t i = 0; i < plan_.range.total; ++i) {
      if (!LocateRow(plan_, mxf_, Entry(i), &row)) return false;
      rowBytes_ = std::max(rowBytes_, row.bytes);
    }
    return true;
  }

  bool AllocateBlock() {
    const std::uint32_t blockFrames = BlockFrames(tracks_.wavBufferIndex, *mxf_.timecode);
    const bool hasFrames = plan_.range.total > 0;
    if (blockFrames == 0 || (hasFrames && !FitsBlock(NominalRowBytes(plan_, mxf_), blockFrames))) {
      return false;
    }
    blockFrames_ = std::min(FramesInMemory(blockFrames, rowBytes_), plan_.range.total);
    block_.reset(new (std::nothrow) std::uint8_t[rowBytes_ * blockFrames_ + 1]);
    return block_ != nullptr;
  }

  // Of the range's `i`-th frame.
  const INDEX_ENTRY_ARRAY& Entry(std::uint32_t i) const {
    return (*mxf_.indexEntries)[plan_.range.firstEntry + i];
  }

  std::int32_t WriteAll() {
    for (std::uint32_t done = 0; done < plan_.range.total;) {
      const std::uint32_t frames = std::min(blockFrames_, plan_.range.total - done);
      if (const std::int32_t failed = ReadBlock(done, frames)) return failed;
      for (std::uint32_t i = 0; i < frames; ++i) {
        if (const std::int32_t failed = WriteFrame(Entry(done), RowInBlock(i))) return failed;
        if (tracks_.cancel == 1) {
          tracks_.cancel = 0;
          return kCancelled;
        }
        tracks_.currentFrame = done++;
      }
    }
    return kSuccess;
  }

  std::uint8_t* RowInBlock(std::uint32_t i) const { return block_.get() + i * rowBytes_; }

  std::int32_t ReadBlock(std::uint32_t first, std::uint32_t frames) {
    for (std::uint32_t i = 0; i < frames; ++i) {
      const std::uint32_t entryIndex = plan_.range.firstEntry + first + i;
      const ElementState state = rows_.Read(entryIndex);
      if (state == ElementState::kFault) return kFileExportNoClip;
      Row row;
      if (state != ElementState::kSound || !LocateRow(plan_, mxf_, Entry(first + i), &row)) {
        return kFileExportUnfit;
      }
      const auto bytes = static_cast<std::size_t>(row.bytes);
      const std::uint8_t* found = rows_.At(row.start, bytes);
      if (found == nullptr) return kFileExportUnfit;
      std::memcpy(RowInBlock(i), found, bytes);
    }
    return kSuccess;
  }

  std::int32_t WriteFrame(const INDEX_ENTRY_ARRAY& entry, const std::uint8_t* rowBytes) {
    Row row;
    if (!LocateRow(plan_, mxf_, entry, &row)) return kFileExportUnfit;
    for (std::uint32_t n = 0; n < plan_.trackCount; ++n) {
      const auto value = LocateElementValue(mxf_, entry, plan_.track[n]);
      if (!value) return kFileExportUnfit;
      const std::uint8_t* samples = rowBytes + (value->fileOffset() - row.start);
      if (!files_.Append(n, {samples, value->bytes()})) return kFileExportNoFile;
    }
    return kSuccess;
  }

  const ExportPlan& plan_;
  AUDIOTRACK_IO_INFO& tracks_;
  const MXF_BASE_INFO& mxf_;
  platform::File clip_;
  RowReader rows_;
  ExportFiles files_;
  std::uint64_t rowBytes_ = 0;
  std::uint32_t blockFrames_ = 0;
  std::unique_ptr<std::uint8_t[]> block_;
};

}  // namespace

std::int32_t ExportFileIo(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf) {
  ExportPlan plan{};
  if (const ArgumentFault fault = PlanExport(path, tracks, mxf, &plan)) {
    return static_cast<std::int32_t>(kStageExportFileIo) + fault;
  }
  return FileIoExport(plan, tracks, *mxf).Run(path);
}

}  // namespace quorvan
