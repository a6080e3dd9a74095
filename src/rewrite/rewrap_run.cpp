#include "rewrite/rewrap_run.h"

#include <algorithm>
#include <span>

#include "platform/clock.h"
#include "platform/text.h"

namespace quorvan {
namespace {

JobFault FaultOf(GateResult result) {
  switch (result) {
    case GateResult::kDone:
      return kNoFault;
    case GateResult::kRefused:
      return kMisplacedFrame;
    case GateResult::kClipFault:
      return kClipFault;
    case GateResult::kSampleFault:
      return kSourceFault;
  }
  return kClipFault;
}

}  // namespace

std::int32_t RewrapRun::Failed(JobFault fault, const WAV_FILE_INFO* wav) {
  if (wav != nullptr) NameFile(*wav);
  return static_cast<std::int32_t>(stage_) + fault;
}

void RewrapRun::NameFile(const WAV_FILE_INFO& wav) {
  platform::CopyText(tracks_.fault.path, std::size(tracks_.fault.path), wav.filePath);
}

void RewrapRun::Start() {
  tracks_.currentFrame = 0;
  tracks_.cancel = 0;
}

std::int32_t RewrapRun::ProveAndWrite(const platform::MappedView* view) {
  if (const std::int32_t failed = Prove(view)) return failed;
  if (tracks_.cancel == 1) return Cancel();
  if (const std::int32_t failed = Write()) return failed;
  if (clip.Size() != mxf_.fileSize) return Failed(kClipFault);
  // A source file that changed during the job may have supplied a mix of old and new audio.
  const SourceCheck sources = files.Check();
  return sources.fault == kNoFault ? kSuccess : Failed(kSourceFault, sources.wav);
}

// Proves everything that must hold before the first write: the clip is the clip that was analysed,
// every source file is the file that was added and holds the audio that it claims, and every audio
// element to be overwritten belongs to the track and frame for which the index gives it.
std::int32_t RewrapRun::Prove(const platform::MappedView* view) {
  if (const std::int32_t failed = ProveClip()) return failed;
  const SourceCheck sources = files.Check();
  if (sources.fault != kNoFault) return Failed(sources.fault, sources.wav);
  if (!rows_.Allocate()) return Failed(kOutOfMemory);
  if (view != nullptr) rows_.ProveThrough(view);
  for (std::uint32_t i = 0; i < plan_.range.total; ++i) {
    if (tracks_.cancel == 1) return Cancel();
    if (const JobFault fault = FaultOfFrame(rows_.Prove(i))) {
      tracks_.fault.frame = plan_.range.firstEntry + i;
      return Failed(fault);
    }
    tracks_.provenFrames = i + 1;
  }
  return kSuccess;
}

std::int32_t RewrapRun::ProveClip() {
  if (const JobFault fault = CheckClipSize(clip, mxf_)) return Failed(fault);
  if (const JobFault fault = CheckClipFormat(plan_, mxf_)) return Failed(fault);
  if (const JobFault fault = identity_.Locate()) return Failed(fault);
  const bool renewable = !HasExtendedUmid(mxf_);
  return renewable || tracks_.keepUmids == 1 ? kSuccess : kUmidTooLong;
}

std::int32_t RewrapRun::Write() {
  tracks_.phase = kPhaseWriting;
  rows_.StartWriting();
  for (std::uint32_t done = 0; done < plan_.range.total;) {
    const std::uint32_t frames = std::min(blocks.frames(), plan_.range.total - done);
    const std::uint32_t firstEntry = plan_.range.firstEntry + done;
    if (const WAV_FILE_INFO* wav = blocks.MoveTo(firstEntry, frames)) {
      return Failed(kSourceFault, wav);
    }
    for (std::uint32_t i = 0; i < frames; ++i) {
      if (!blocks.Take((*mxf_.indexEntries)[firstEntry + i], &samples_)) return SourceFailed();
      tracks_.fault.framesBegun = done + 1;
      const GateResult written = rows_.Write(done, std::span(samples_).first(plan_.trackCount));
      if (written == GateResult::kSampleFault) return SourceFailed();
      if (written != GateResult::kDone) return Failed(FaultOf(written));
      if (tracks_.cancel == 1) return Cancel();
      tracks_.currentFrame = ++done;
    }
  }
  return kSuccess;
}

// A fault in a view does not tell which source file has failed. Names the first source file that
// does not pass its check now.
std::int32_t RewrapRun::SourceFailed() {
  return Failed(kSourceFault, files.Check().wav);
}

std::int32_t RewrapRun::Finish(bool stampTimes) {
  const platform::FileTime audioEnd = platform::FileTimeNow();
  tracks_.phase = kPhaseFlushing;
  if (!Flush()) return Failed(kNotFlushed);
  if (tracks_.cancel == 1) return Cancel();
  files.Close();
  // A clip that was moved or replaced during the job is no longer the file at the path.
  if (!clip.IsStillAtItsPath()) return Failed(kClipChanged);
  return RenewIdentity(audioEnd, stampTimes);
}

// Renews the UMIDs, brings them onto the medium and reads them back. The job is done only then.
std::int32_t RewrapRun::RenewIdentity(platform::FileTime audioEnd, bool stampTimes) {
  const bool renewable = !HasExtendedUmid(mxf_);
  if (renewable) identity_.Renew();
  // Writing the UMIDs has changed the file's times, which must tell when the audio was complete.
  if (stampTimes) StampTimes(audioEnd);
  const bool flushed = Flush();
  tracks_.umidState = renewable ? identity_.ReadBack() : kUmidsKept;
  if (!flushed || !clip.Close()) return Failed(kUmidsNotFlushed);
  return tracks_.umidState == kUmidsRenewed ? kSuccess : kDoneWithNotice;
}

bool RewrapRun::Flush() {
  return tracks_.noFlush == 1 || clip.Flush();
}

// Sets the times of the last access and the last write, and keeps the creation time. When the
// system cannot set times, the file keeps the times of the UMID write.
void RewrapRun::StampTimes(platform::FileTime time) {
  auto times = clip.Times();
  if (!times) return;
  times->lastAccess = times->lastWrite = time;
  clip.SetTimes(*times);
}

std::int32_t RewrapRun::Cancel() {
  tracks_.cancel = 0;
  return kCancelled;
}

}  // namespace quorvan
