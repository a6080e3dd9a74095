#include "rewrite/rewrap_file_io.h"

#include <algorithm>
#include <string>

#include "mxf/analysis.h"
#include "rewrite/element_gate.h"
#include "rewrite/rewrap_mapped.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/rewrap_proof.h"
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
        blocks_(plan, *mxf, files_) {}
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
    if (!blocks_.AllocateTrackBuffer()) return kFileRewrapNoTrackBuffer;
    tracks_.currentFrame = 0;
    tracks_.cancel = 0;
    return kSuccess;
  }

  // Nothing is written before all of this holds; see RewrapMapped.
  std::int32_t ProveValues() {
    if (!IsPlannedClip(clip_, plan_, mxf_)) return kFileRewrapUnfit;
    if (files_.Check() != SourceState::kSound) return kFileRewrapNoWav;
    for (std::uint32_t i = 0; i < plan_.range.total; ++i) {
      if (tracks_.cancel == 1) return Cancel();
      const std::int32_t failed =
          CodeOf(ProveElements(clip_, mxf_, plan_.range.firstEntry + i, plan_.Tracks()));
      if (failed != kSuccess) return failed;
    }
    return kSuccess;
  }

  std::int32_t WriteAll() {
    for (std::uint32_t done = 0; done < plan_.range.total;) {
      const std::uint32_t frames = std::min(blocks_.frames(), plan_.range.total - done);
      const std::uint32_t firstEntry = plan_.range.firstEntry + done;
      if (!blocks_.Read(firstEntry, frames)) return kFileRewrapWavFault;
      for (std::uint32_t i = 0; i < frames; ++i) {
        if (const std::int32_t failed = WriteFrame(firstEntry + i)) return failed;
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

  std::int32_t WriteFrame(std::uint32_t entryIndex) {
    const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[entryIndex];
    for (std::uint32_t s = 0; s < plan_.sourceCount; ++s) {
      const TrackSource& source = plan_.sources[s];
      for (std::uint32_t c = 0; c < source.trackCount; ++c) {
        const auto value = LocateElementValue(mxf_, entry, source.firstTrack + c);
        if (!value) return kFileRewrapUnfit;
        const std::uint8_t* samples = blocks_.Samples(s, c, entry);
        const GateResult written = WriteElement(&clip_, *value, {samples, value->bytes()});
        if (written != GateResult::kDone) return CodeOf(written);
      }
    }
    blocks_.Advance(entry);
    return kSuccess;
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
