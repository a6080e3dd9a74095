#include "job/job_steps.h"

#include <string_view>

#include "export/export_plan.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "report/rewrap_log.h"
#include "rewrite/rewrap_plan.h"
#include "rewrite/umid.h"

namespace quorvan {
namespace {

JobFault CheckEngine(JobKind kind, const APP_STATE_INFO& app, FrameRange* range) {
  switch (kind) {
    case kRewriteJob: {
      RewrapPlan plan{};
      const JobFault fault = PlanRewrap(app.mxfPath, app.tracks, app.mxf, &plan);
      *range = plan.range;
      return fault;
    }
    case kExportJob: {
      ExportPlan plan{};
      const JobFault fault = PlanExport(app.mxfPath, app.tracks, app.mxf, &plan);
      *range = plan.range;
      return fault;
    }
    case kLoudnessJob:
      return FindRange(app.mxfPath, app.tracks, app.mxf, kLoudnessRange, range);
    case kAnalysisJob:
      break;
  }
  return kNoRecords;
}

JobRefusal RefusalOf(JobKind kind, const APP_STATE_INFO& app, JobFault fault) {
  if (fault == kNoFault) return {};
  const std::uint32_t stage = JobProcessCode(kind, app.useFileIo);
  // A measurement adds its faults to the process code of the export by memory mapping.
  const std::uint32_t base = stage == kStageLoudness ? kStageExportMapped : stage;
  const std::int32_t result = static_cast<std::int32_t>(base) + fault;
  return {result, FailureText(stage, result)};
}

}  // namespace

void PrepareAnalysis(APP_STATE_INFO* app) {
  MXF_TIMECODE_INFO& timecode = *app->mxf->timecode;
  app->jobKind = kAnalysisJob;
  app->analysisOk = 0;
  timecode.progressTotal = 0;
  timecode.progressFrame = 0;
  timecode.stopRequest = 0;
}

JobRefusal PrepareJob(JobKind kind, APP_STATE_INFO* app) {
  AUDIOTRACK_IO_INFO& tracks = *app->tracks;
  app->jobKind = kind;
  FrameRange range{};
  const JobFault fault = CheckEngine(kind, *app, &range);
  if (fault != kNoFault) return RefusalOf(kind, *app, fault);
  if (range.total == 0) return RefusalOf(kind, *app, kBadRange);
  if (kind == kExportJob) ++tracks.exportCount;
  tracks.totalFrames = range.total;
  tracks.currentFrame = 0;
  tracks.cancel = 0;
  tracks.phase = kPhaseProving;
  tracks.provenFrames = 0;
  return {};
}

JobRefusal CheckClipFor(JobKind kind, const APP_STATE_INFO& app) {
  return RefusalOf(kind, app, CheckClip(*app.mxf));
}

std::u16string_view ClipRefusal(const APP_STATE_INFO& app) {
  return CheckClipFor(kRewriteJob, app).text;
}

JobRefusal NoThreadRefusal() {
  constexpr auto result = static_cast<std::int32_t>(kStageRewrapMapped) + kNoThread;
  return {result, FailureText(kStageRewrapMapped, result)};
}

bool NeedsOldIdentity(const APP_STATE_INFO& app) {
  return HasExtendedUmid(*app.mxf);
}

RewriteEnd EndRewrite(std::int32_t result, bool wantsLog, APP_STATE_INFO* app,
                      platform::Language language) {
  const bool noticed = result == kDoneWithNotice;
  const UmidState state = app->tracks->umidState;
  RewriteEnd end;
  if (wantsLog) {
    std::uint32_t error = 0;
    end.logged =
        WriteRewrapLog(app, noticed ? UmidStateText(state) : std::u16string_view(), &error);
    if (!end.logged) end.logFailure = RewrapLogFailureMessage(app->mxfPath, error, language);
  }
  end.text = noticed ? JobNoticeMessage(app->mxfPath, state, end.logged, language)
                     : JobDoneMessage(app->mxfPath, kRewriteJob, app->useFileIo, language);
  return end;
}

}  // namespace quorvan
