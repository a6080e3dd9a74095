#include "rewrite/verify.h"

#include <algorithm>
#include <array>
#include <new>

#include "mxf/analysis.h"
#include "mxf/essence/row_reader.h"
#include "platform/text.h"
#include "rewrite/rewrap_file_io.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/source_blocks.h"
#include "rewrite/source_files.h"
#include "state/wav_buffer.h"

namespace quorvan {
namespace {

constexpr std::uint32_t kMostSampleBytes = 4;

VerifyResult Same() {
  return {VerifyState::kSame, {}, kSuccess};
}

// The value of the little-endian signed sample of `width` bytes (1 to 4) at `bytes`.
std::int32_t SampleAt(const std::uint8_t* bytes, std::uint32_t width) {
  std::uint32_t word = 0;
  for (std::uint32_t b = 0; b < width; ++b)
    word |= std::uint32_t{bytes[b]} << (8 * (kMostSampleBytes - width + b));
  return static_cast<std::int32_t>(word) >> (8 * (kMostSampleBytes - width));
}

// One comparison, from its plan to its end. The destructor closes all files.
class Verification {
 public:
  Verification(const RewrapPlan& plan, AUDIOTRACK_IO_INFO* tracks, const MXF_BASE_INFO& mxf,
               JobProgress* progress)
      : plan_(plan),
        tracks_(*tracks),
        mxf_(mxf),
        progress_(*progress),
        files_(plan, tracks, *mxf.audio),
        blocks_(plan, mxf, files_),
        rows_(clip_, mxf, plan.Tracks(), plan.range.firstEntry, plan.range.total) {}
  Verification(const Verification&) = delete;
  Verification& operator=(const Verification&) = delete;

  VerifyResult Run(const std::u16string& path) {
    progress_.total = plan_.range.total;
    if (const std::int32_t failed = Prepare(path)) return {VerifyState::kFailed, {}, failed};
    for (std::uint32_t done = 0; done < plan_.range.total;) {
      const std::uint32_t frames = std::min(blocks_.frames(), plan_.range.total - done);
      const std::uint32_t firstEntry = plan_.range.firstEntry + done;
      if (const WAV_FILE_INFO* wav = blocks_.MoveTo(firstEntry, frames)) {
        return Failed(kSourceFault, wav);
      }
      for (std::uint32_t i = 0; i < frames; ++i) {
        const VerifyResult compared = CompareFrame(firstEntry + i);
        if (compared.state != VerifyState::kSame) return compared;
        if (progress_.cancel == 1) return {VerifyState::kStopped, {}, kCancelled};
        progress_.done = ++done;
      }
    }
    return Same();
  }

 private:
  std::int32_t Prepare(const std::u16string& path) {
    clip_ = platform::File::Open(path, platform::OpenMode::kReadShared);
    if (!clip_.IsOpen()) return kFileRewrapNoClip;
    if (!blocks_.AllocateBlock(BlockFrames(tracks_.wavBufferIndex, *mxf_.timecode))) {
      return kFileRewrapNoBlock;
    }
    if (const WAV_FILE_INFO* wav = files_.Open()) {
      NameFile(wav);
      return kFileRewrapNoWav;
    }
    if (!blocks_.AllocateTrackBuffers()) return kFileRewrapNoTrackBuffer;
    clip_.ExpectScattered();
    const JobFault fault = Prove();
    return fault == kNoFault ? kSuccess : static_cast<std::int32_t>(kStageRewrapFileIo) + fault;
  }

  JobFault Prove() {
    if (const JobFault fault = CheckClipSize(clip_, mxf_)) return fault;
    if (const JobFault fault = CheckClipFormat(plan_, mxf_)) return fault;
    if (!rows_.Allocate()) return kOutOfMemory;
    const SourceCheck sources = files_.Check();
    NameFile(sources.wav);
    return sources.fault;
  }

  VerifyResult Failed(JobFault fault, const WAV_FILE_INFO* wav = nullptr) const {
    NameFile(wav);
    return {VerifyState::kFailed, {}, static_cast<std::int32_t>(kStageRewrapFileIo) + fault};
  }

  VerifyResult FailedAt(JobFault fault, std::uint32_t entryIndex) const {
    tracks_.fault.frame = entryIndex;
    return Failed(fault);
  }

  void NameFile(const WAV_FILE_INFO* wav) const {
    if (wav == nullptr) return;
    platform::CopyText(tracks_.fault.path, std::size(tracks_.fault.path), wav->filePath);
  }

  VerifyResult CompareFrame(std::uint32_t entryIndex) {
    const INDEX_ENTRY_ARRAY& entry = (*mxf_.indexEntries)[entryIndex];
    const ElementState state = rows_.Read(entryIndex);
    if (state != ElementState::kProven) return FailedAt(FaultOfFrame(state), entryIndex);
    if (!blocks_.Take(entry, &samples_)) return Failed(kSourceFault, files_.Check().wav);
    for (std::uint32_t n = 0; n < plan_.trackCount; ++n) {
      const VerifyResult compared = CompareValue(plan_.track[n], entryIndex, samples_[n]);
      if (compared.state != VerifyState::kSame) return compared;
    }
    return Same();
  }

  VerifyResult CompareValue(std::uint32_t track, std::uint32_t entryIndex,
                            const std::uint8_t* wanted) const {
    const auto value = LocateElementValue(mxf_, (*mxf_.indexEntries)[entryIndex], track);
    if (!value) return FailedAt(kMisplacedFrame, entryIndex);
    const std::uint8_t* found = rows_.At(value->fileOffset(), value->bytes());
    if (found == nullptr) return FailedAt(kMisplacedFrame, entryIndex);
    const std::uint8_t* end = wanted + value->bytes();
    const std::uint8_t* place = std::mismatch(wanted, end, found).first;
    if (place == end) return Same();
    const std::uint32_t width = mxf_.audio->blockAlign;
    const auto sample = static_cast<std::uint32_t>(place - wanted) / width;
    const std::uint32_t at = sample * width;
    return {VerifyState::kDiffers,
            {track, entryIndex, sample, value->fileOffset() + at, SampleAt(wanted + at, width),
             SampleAt(found + at, width)},
            kSuccess};
  }

  const RewrapPlan& plan_;
  AUDIOTRACK_IO_INFO& tracks_;
  const MXF_BASE_INFO& mxf_;
  JobProgress& progress_;
  SourceFiles files_;
  SourceBlocks blocks_;
  platform::File clip_;
  RowReader rows_;
  std::array<const std::uint8_t*, kMaxTracks> samples_{};
};

}  // namespace

VerifyResult VerifyRewrap(const char16_t* path, AUDIOTRACK_IO_INFO* tracks,
                          const MXF_BASE_INFO* mxf, JobProgress* progress) {
  const auto failed = [](JobFault fault) -> VerifyResult {
    return {VerifyState::kFailed, {}, static_cast<std::int32_t>(kStageRewrapFileIo) + fault};
  };
  if (tracks != nullptr) BeginJob(tracks);
  RewrapPlan plan{};
  if (const JobFault fault = PlanRewrap(path, tracks, mxf, &plan)) return failed(fault);
  try {
    return Verification(plan, tracks, *mxf, progress).Run(path);
  } catch (const std::bad_alloc&) {
    return failed(kOutOfMemory);
  }
}

}  // namespace quorvan
