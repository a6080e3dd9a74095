#include "export/export_plan.h"

namespace quorvan {

JobFault PlanExport(const char16_t* path, const AUDIOTRACK_IO_INFO* tracks,
                    const MXF_BASE_INFO* mxf, ExportPlan* plan) {
  const JobFault fault = FindRange(path, tracks, mxf, kExportRange, &plan->range);
  if (fault != kNoFault) return fault;
  plan->trackCount = 0;
  for (std::uint32_t t = 0; t < UsableTracks(*mxf->audio); ++t) {
    if (tracks->exportSwitch[t] == kSwitchOn) plan->track[plan->trackCount++] = t;
  }
  return plan->trackCount == 0 ? kNothingOn : kNoFault;
}

JobFault CheckClipFormat(const ExportPlan& plan, const MXF_BASE_INFO& mxf) {
  if (!IndexHolds(plan.range, mxf)) return kIndexUnfit;
  const MXF_AUDIO_INFO& audio = *mxf.audio;
  const bool fits = audio.sampleRate > 0 && audio.blockAlign > 0 &&
                    audio.quantizationBits == audio.blockAlign * 8u;
  return fits ? kNoFault : kNoSampleFormat;
}

BwfHeader HeaderOf(const ExportPlan& plan, const MXF_BASE_INFO& mxf, std::uint16_t extensionSize) {
  const MXF_TIMECODE_INFO& timecode = *mxf.timecode;
  std::uint64_t samples = 0;
  for (std::uint32_t i = 0; i < plan.range.total; ++i)
    samples += (*mxf.indexEntries)[plan.range.firstEntry + i].audioSamples;
  const std::uint64_t inFrame = std::uint64_t{timecode.startFrames} + plan.range.firstEntry;
  return MakeBwfHeader(*mxf.audio, {samples * mxf.audio->blockAlign,
                                    SamplesInFrames(inFrame, timecode.rateIndex), extensionSize});
}

}  // namespace quorvan
