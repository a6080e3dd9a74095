#include "job/job_check.h"

#include "export/export_plan.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "rewrite/rewrap_plan.h"

namespace quorvan {
namespace {

JobFault CheckArgumentsOf(const APP_STATE_INFO& app, FrameRange* range) {
  switch (app.jobKind) {
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
      return CheckArguments(app.mxfPath, app.tracks, app.mxf, kLoudnessRange, range);
    case kAnalysisJob:
      break;
  }
  return kNoFault;
}

std::int32_t ResultOf(const APP_STATE_INFO& app, JobFault fault) {
  if (fault == kNoFault) return kSuccess;
  const std::uint32_t stage = JobProcessCode(app.jobKind, app.useFileIo);
  // A measurement has the numbers of the export through views.
  const std::uint32_t base = stage == kStageLoudness ? kStageExportMapped : stage;
  return static_cast<std::int32_t>(base) + fault;
}

}  // namespace

std::int32_t CheckJob(const APP_STATE_INFO& app) {
  FrameRange range{};
  const JobFault fault = CheckArgumentsOf(app, &range);
  const bool empty = fault == kNoFault && range.total == 0 && app.jobKind != kAnalysisJob;
  return ResultOf(app, empty ? kBadRange : fault);
}

std::int32_t CheckClipForJob(const APP_STATE_INFO& app) {
  return ResultOf(app, CheckClip(*app.mxf));
}

std::u16string_view ClipRefusal(const APP_STATE_INFO& app) {
  const JobFault fault = CheckClip(*app.mxf);
  if (fault == kNoFault) return {};
  return FailureText(kStageRewrapMapped, static_cast<std::int32_t>(kStageRewrapMapped) + fault);
}

bool NeedsOldIdentity(const APP_STATE_INFO& app) {
  return app.mxf->materialUmidSize == kExtendedUmidBytes ||
         app.mxf->sourceUmidSize == kExtendedUmidBytes;
}

}  // namespace quorvan
