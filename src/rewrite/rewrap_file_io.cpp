#include "rewrite/rewrap_file_io.h"

#include <algorithm>
#include <string>

#include "mxf/analysis.h"
#include "rewrite/rewrap_mapped.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/rewrap_proof.h"
#include "rewrite/row_writer.h"
#include "rewrite/source_blocks.h"
#include "rewrite/umid.h"
#include "state/wav_buffer.h"

namespace quorvan {
namespace {

std::int32_t CodeOf(GateResult result) {
  if (result == GateResult::kDone) return kSuccess;
  return result == GateResult::kRefused ? kFileRewrapUnfit : kFileRewrapClipFault;
}

std::int32_t CodeOf(ElementState state) {
  if (state == ElementState::kSound) return kSuccess;
  return state == ElementState::kMisplaced ? kFileRewrapUnfit : kFileRewrapClipFault;
}

// One rewrite from its plan to its end. Everything it opens goes with it.
class FileIoRewrite {
 public:
  FileIoRewrite(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf)
      : plan_(plan),
        tracks_(*tracks),
        mxf_(*mxf),
        files_(plan, tracks),
        blocks_(plan, *mxf, files_),
        rows_(plan, *mxf, &clip_) {}
  FileIoRewrite(const FileIoRewrite&) = delete;
  FileIoRewrite& operator=(const FileIoRewrite&) = delete;

  std::int32_t Run(const std::u16string& path) {
    tracks_.totalFrames = plan_.range.total;
    if (const std::int32_t failed = Prepare(path)) return failed;
    if (const std::int32_t failed = ProveValues()) return failed;
    if (tracks_.cancel == 1) return Cancel();
    if (const std::int32_t failed = WriteAll()) return failed;
    return Finish();
  }

 private:
  std::int32_t Prepare(const std::u16string& path) {
    clip_ = platform::File::Open(path, platform::OpenMode::kRewrite);
    if (!clip_.IsOpen()) return kFileRewrapNoClip;
    if (!blocks_.AllocateBlock(BlockFrames(tracks_.wavBufferIndex, *mxf_.timecode))) {
      return kFileRewrapNoBlock;
    }
    if (!files_.Open()) return kFileRewrapNoWav;
    if (!blocks_.AllocateTrackBuffers()) return kFileRewrapNoTrackBuffer;
    tracks_.currentFrame = 0;
    tracks_.cancel = 0;
    return kSuccess;
  }

  // Nothing is written before all of this holds; see RewrapMapped.
  std::int32_t ProveValues() {
    if (!IsPlannedClip(clip_, plan_, mxf_)) return kFileRewrapUnfit;
    const SourceState sources = files_.Check();
    if (sources == SourceState::kNotPcm) return kFileRewrapUnfit;
    if (sources != SourceState::kSound) return kFileRewrapNoWav;
    if (!rows_.Allocate()) return kFileRewrapNoTrackBuffer;
    for (std::uint32_t i = 0; i < plan_.range.total; ++i) {
      if (tracks_.cancel == 1) return Cancel();
      if (const std::int32_t failed = CodeOf(rows_.Prove(i))) return failed;
    }
    return kSuccess;
  }

  std::int32_t WriteAll() {
    rows_.StartWriting();
    for (std::uint32_t done = 0; done < plan_.range.total;) {
      const std::uint32_t frames = std::min(blocks_.frames(), plan_.range.total - done);
      const std::uint32_t firstEntry = plan_.range.firstEntry + done;
      if (!blocks_.Read(firstEntry, frames)) return kFileRewrapWavFault;
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
    if (clip_.Size() != mxf_.fileSize) return kFileRewrapClipFault;
    files_.Close();
    return RenewUmids(&clip_, &mxf_) ? kSuccess : static_cast<std::int32_t>(kRewrapLongUmid);
  }

  const RewrapPlan& plan_;
  AUDIOTRACK_IO_INFO& tracks_;
  MXF_BASE_INFO& mxf_;
  SourceFiles files_;
  platform::File clip_;
  SourceBlocks blocks_;
  RowWriter rows_;
  std::array<const std::uint8_t*, kMaxTracks> samples_{};
};

}  // namespace

std::int32_t RewrapFileIo(const char16_t* path, AUDIOTRACK_IO_INFO* tracks, MXF_BASE_INFO* mxf) {
  RewrapPlan plan{};
  if (const ArgumentFault fault = PlanRewrap(path, tracks, mxf, &plan)) {
    return static_cast<std::int32_t>(kStageRewrapFileIo) + fault;
  }
  return FileIoRewrite(plan, tracks, mxf).Run(path);
}

}  // namespace quorvan
