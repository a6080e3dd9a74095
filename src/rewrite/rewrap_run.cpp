#include "rewrite/rewrap_run.h"

#include <algorithm>
#include <span>

#include "mxf/analysis.h"

namespace quorvan {

void RewrapRun::Start() {
  tracks_.currentFrame = 0;
  tracks_.cancel = 0;
}

std::int32_t RewrapRun::ProveAndWrite(const platform::MappedView* view) {
  if (const std::int32_t failed = Prove(view)) return failed;
  if (tracks_.cancel == 1) return Cancel();
  if (const std::int32_t failed = Write()) return failed;
  if (clip.Size() != mxf_.fileSize) return codes_.clipFault;
  // One that was written to meanwhile has given something of both.
  return files.Check() == SourceState::kSound ? kSuccess : codes_.wavFault;
}

// Nothing is written before all of this holds: the clip is the one that was analysed, every value
// is the one of its track in its frame, and every source is what it was and holds what it claims.
std::int32_t RewrapRun::Prove(const platform::MappedView* view) {
  if (!IsPlannedClip(clip, plan_, mxf_)) return codes_.unfit;
  if (const std::int32_t failed = CheckSources()) return failed;
  if (!rows_.Allocate()) return codes_.noMemory;
  if (view != nullptr) rows_.ProveThrough(view);
  for (std::uint32_t i = 0; i < plan_.range.total; ++i) {
    if (tracks_.cancel == 1) return Cancel();
    if (const std::int32_t failed = CodeOf(rows_.Prove(i))) return failed;
  }
  return kSuccess;
}

std::int32_t RewrapRun::CheckSources() const {
  switch (files.Check()) {
    case SourceState::kSound:
      return kSuccess;
    case SourceState::kChanged:
      return codes_.sourceChanged;
    case SourceState::kNotPcm:
      return codes_.unfit;
    case SourceState::kCutShort:
      return codes_.sourceCutShort;
  }
  return codes_.sourceChanged;
}

std::int32_t RewrapRun::Write() {
  rows_.StartWriting();
  for (std::uint32_t done = 0; done < plan_.range.total;) {
    const std::uint32_t frames = std::min(blocks.frames(), plan_.range.total - done);
    const std::uint32_t firstEntry = plan_.range.firstEntry + done;
    if (!blocks.Read(firstEntry, frames)) return codes_.wavFault;
    for (std::uint32_t i = 0; i < frames; ++i) {
      if (!blocks.Take((*mxf_.indexEntries)[firstEntry + i], &samples_)) return codes_.wavFault;
      const GateResult written = rows_.Write(done, std::span(samples_).first(plan_.trackCount));
      if (written != GateResult::kDone) return CodeOf(written);
      if (tracks_.cancel == 1) return Cancel();
      tracks_.currentFrame = ++done;
    }
  }
  return kSuccess;
}

std::int32_t RewrapRun::Cancel() {
  tracks_.cancel = 0;
  return kCancelled;
}

std::int32_t RewrapRun::CodeOf(ElementState state) const {
  if (state == ElementState::kSound) return kSuccess;
  return state == ElementState::kMisplaced ? codes_.unfit : codes_.clipFault;
}

std::int32_t RewrapRun::CodeOf(GateResult result) const {
  switch (result) {
    case GateResult::kDone:
      return kSuccess;
    case GateResult::kRefused:
      return codes_.unfit;
    case GateResult::kClipFault:
      return codes_.clipFault;
    case GateResult::kSampleFault:
      return codes_.wavFault;
  }
  return codes_.clipFault;
}

}  // namespace quorvan
