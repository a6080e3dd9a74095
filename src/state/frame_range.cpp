#include "state/frame_range.h"

#include "mxf/essence/segment_run.h"
#include "mxf/sample_pattern.h"

namespace quorvan {
namespace {

bool HasRecords(const MXF_BASE_INFO* mxf) {
  return mxf != nullptr && mxf->timecode != nullptr && mxf->audio != nullptr &&
         mxf->partitionTable != nullptr && *mxf->partitionTable != nullptr &&
         mxf->indexEntries != nullptr && *mxf->indexEntries != nullptr;
}

}  // namespace

JobFault CheckClip(const MXF_BASE_INFO& mxf) {
  if (!HasRange(*mxf.timecode)) return kNoRange;
  if (!HasKnownRate(*mxf.timecode)) return kUnknownRate;
  if (!HasSampleFormat(*mxf.audio)) return kNoSampleFormat;
  return HasOtherPattern(*mxf.audio) ? kOtherPattern : kNoFault;
}

JobFault CheckClipSize(const platform::File& clip, const MXF_BASE_INFO& mxf) {
  const auto size = clip.Size();
  if (!size) return kClipFault;
  return *size == mxf.fileSize ? kNoFault : kClipChanged;
}

JobFault FindRange(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks, const MXF_BASE_INFO* mxf,
                   const RangeFields& fields, FrameRange* range) {
  if (path == nullptr || *path == 0) return kNoPath;
  if (tracks == nullptr) return kNoTracks;
  if (!HasRecords(mxf)) return kNoRecords;
  const MXF_TIMECODE_INFO& timecode = *mxf->timecode;
  if (const JobFault fault = CheckClip(*mxf)) return fault;

  const std::size_t slot = CountedSlot(timecode);
  const std::int64_t in = (tracks->*fields.in)[slot];
  const std::int64_t out = (tracks->*fields.out)[slot];
  const std::int64_t start = WorkingStart(timecode);
  const std::int64_t last = WorkingLast(timecode);
  const std::int64_t total = out - in + 1;
  if (total < (slot == 0 ? 1 : 0) || in < start || out > last) return kBadRange;
  range->firstEntry = static_cast<std::uint32_t>(in - start);
  range->total = static_cast<std::uint32_t>(total);
  return kNoFault;
}

bool IndexHolds(const FrameRange& range, const MXF_BASE_INFO& mxf) {
  const std::uint32_t frames = mxf.timecode->frameCount;
  return range.firstEntry <= frames && range.total <= frames - range.firstEntry &&
         CountsEveryFrame(mxf);
}

}  // namespace quorvan
