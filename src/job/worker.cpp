#include "job/worker.h"

#include <chrono>
#include <string>

#include "export/export_file_io.h"
#include "export/export_mapped.h"
#include "job/process_table.h"
#include "loudness/measure_loudness.h"
#include "mxf/analysis.h"
#include "mxf/continuity.h"
#include "rewrite/rewrap_file_io.h"
#include "rewrite/rewrap_mapped.h"

namespace quorvan {
namespace {

constexpr char16_t kDoneCaption[] = u"MXF Lattice Core";
constexpr std::int32_t kDoneWithNotice = 98;  // all but the UMIDs
constexpr std::int32_t kLastContinuityResult = 1012;
constexpr auto kStagePollInterval = std::chrono::milliseconds(2);
constexpr std::uint32_t kNoStageShown = ~std::uint32_t{0};

std::int32_t RunEngine(APP_STATE_INFO* app) {
  const bool fileIo = app->useFileIo != 0;
  switch (app->jobKind) {
    case kRewriteJob:
      return fileIo ? RewrapFileIo(app->mxfPath, app->tracks, app->mxf)
                    : RewrapMapped(app->mxfPath, app->tracks, app->mxf);
    case kExportJob:
      return fileIo ? ExportFileIo(app->mxfPath, app->tracks, app->mxf)
                    : ExportMapped(app->mxfPath, app->tracks, app->mxf);
    case kLoudnessJob:
      return MeasureLoudness(app->mxfPath, app->tracks, app->mxf, app->trackSelected.data());
    case kAnalysisJob:
      break;
  }
  return kCancelled;
}

JobReport JobReportOf(const APP_STATE_INFO& app, std::int32_t result, const std::u16string& title,
                      std::u16string* text) {
  if (result == kSuccess) {
    *text = JobDoneMessage(app.mxfPath, app.jobKind, app.useFileIo);
    return {JOB_MSG_DONE, result, kDoneCaption, text->c_str()};
  }
  if (result == kDoneWithNotice) {
    *text = JobNoticeMessage(app.mxfPath);
    return {JOB_MSG_DONE, result, title.c_str(), text->c_str()};
  }
  *text = result == kCancelled ? JobCancelledMessage(app.mxfPath, app.jobKind, app.useFileIo)
                               : JobFailureMessage(app.mxfPath, app.jobKind, app.mxf->processCode,
                                                   result, app.useFileIo);
  return {JOB_MSG_FAILED, result, title.c_str(), text->c_str()};
}

void RunJob(APP_STATE_INFO* app) {
  app->mxf->processCode = JobProcessCode(app->jobKind, app->useFileIo);
  const std::int32_t result = RunEngine(app);
  const std::u16string title(JobTitle(app->jobKind));
  std::u16string text;
  app->ui.progressDialog(JobReportOf(*app, result, title, &text));
}

// The analysis sequence and the continuity check. `text` is what the operator is told.
std::int32_t Analyse(APP_STATE_INFO* app, std::u16string* text) {
  MXF_BASE_INFO& mxf = *app->mxf;
  mxf.timecode->useFileIo = app->useFileIo;
  const std::int32_t analysed = AnalyzeMxfFile(&app->mxfFile, &mxf);
  if (analysed != kSuccess) {
    *text = LoadFailureMessage(app->mxfPath, mxf.processCode, analysed, app->useFileIo);
    return analysed;
  }
  mxf.timecode->progressTotal = mxf.timecode->frameCount;
  app->ui.progressDialog({JOB_MSG_PHASE, kSuccess, nullptr, nullptr});
  if (app->noTimecodeCheck != 0) return kSuccess;

  mxf.processCode = kStageTimecodeContinuity;
  const std::int32_t checked = CheckTimecodeContinuity(&app->mxfFile, &mxf);
  if (checked == kCancelled) {
    *text = AnalysisStoppedMessage(app->mxfPath);
  } else if (checked >= kContinuityNoFile && checked <= kLastContinuityResult) {
    *text = ContinuityFailureMessage(app->mxfPath, mxf.processCode, checked);
  }
  return checked;
}

void RunAnalysis(APP_STATE_INFO* app) {
  std::u16string text;
  const std::int32_t result = Analyse(app, &text);
  if (result == kSuccess) {
    app->ui.progressDialog({JOB_MSG_DONE, result, u"", nullptr});
  } else {
    app->ui.progressDialog({JOB_MSG_FAILED, result, nullptr, text.c_str()});
  }
}

}  // namespace

void WorkerThread(APP_STATE_INFO* app) {
  if (app->jobKind == kAnalysisJob) {
    RunAnalysis(app);
  } else {
    RunJob(app);
  }
}

void StageTextThread(APP_STATE_INFO* app) {
  std::uint32_t shown = kNoStageShown;
  while (app->stageThreadStop != 1) {
    const std::uint32_t stage = app->mxf->processCode;
    if (stage != shown) {
      app->ui.stageTextControl(StageText(stage));
      shown = stage;
    }
    std::this_thread::sleep_for(kStagePollInterval);
  }
}

}  // namespace quorvan
