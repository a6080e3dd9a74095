#include "job/worker.h"

#include <chrono>
#include <new>
#include <string>

#include "export/export_file_io.h"
#include "export/export_mapped.h"
#include "job/outcome.h"
#include "job/process_table.h"
#include "loudness/measure_loudness.h"
#include "mxf/analysis.h"
#include "mxf/essence/continuity.h"
#include "rewrite/rewrap_file_io.h"
#include "rewrite/rewrap_mapped.h"
#include "state/program_name.h"

namespace quorvan {
namespace {

constexpr auto kStagePollInterval = std::chrono::milliseconds(2);
constexpr std::uint32_t kNoStageShown = ~std::uint32_t{0};

std::int32_t RunEngine(APP_STATE_INFO* app) {
  const bool mapped = app->useFileIo == Method::kMemoryMapping;
  switch (app->jobKind) {
    case kRewriteJob:
      return mapped ? RewrapMapped(app->mxfPath, app->tracks, app->mxf)
                    : RewrapFileIo(app->mxfPath, app->tracks, app->mxf);
    case kExportJob:
      return mapped ? ExportMapped(app->mxfPath, app->tracks, app->mxf)
                    : ExportFileIo(app->mxfPath, app->tracks, app->mxf);
    case kLoudnessJob:
      return MeasureLoudness(app->mxfPath, app->tracks, app->mxf, app->trackSelected.data());
    case kAnalysisJob:
      break;
  }
  return kCancelled;
}

// Sends the job's last message, with OutcomeMessage as its text, or, when memory is out, with
// PlainOutcomeText.
void SendEnd(APP_STATE_INFO* app, JobReport report) {
  std::u16string text;
  // PlainOutcomeText and JobTitle return views of whole literals, which end with a zero.
  report.text = PlainOutcomeText(app->jobKind, report.result).data();
  try {
    text = OutcomeMessage(*app, report.result);
    report.text = text.c_str();
  } catch (const std::bad_alloc&) {
    text.clear();
  }
  app->ui.progressDialog(report);
}

void RunJob(APP_STATE_INFO* app) {
  app->mxf->processCode = JobProcessCode(app->jobKind, app->useFileIo);
  const std::int32_t result = RunEngine(app);
  const bool done = result == kSuccess || result == kDoneWithNotice;
  const char16_t* caption = result == kSuccess ? kCoreName.data() : JobTitle(app->jobKind).data();
  SendEnd(app, {done ? JOB_MSG_DONE : JOB_MSG_FAILED, result, caption, nullptr});
}

// Runs the analysis sequence and then the continuity check, unless noTimecodeCheck leaves it out.
// Returns the result of the first of the two that does not succeed, else kSuccess.
std::int32_t Analyse(APP_STATE_INFO* app) {
  MXF_BASE_INFO& mxf = *app->mxf;
  mxf.timecode->useFileIo = app->useFileIo;
  app->mxfFile.StopOn(&mxf.timecode->stopRequest);
  if (const std::int32_t refused = AnalyzeMxfFile(&app->mxfFile, &mxf)) return refused;
  mxf.timecode->progressTotal = mxf.timecode->frameCount;
  app->ui.progressDialog({JOB_MSG_PHASE, kSuccess, nullptr, nullptr});
  if (app->noTimecodeCheck != 0) return kSuccess;
  mxf.processCode = kStageTimecodeContinuity;
  return CheckTimecodeContinuity(&app->mxfFile, &mxf);
}

void RunAnalysis(APP_STATE_INFO* app) {
  const std::int32_t result = Analyse(app);
  if (result == kSuccess) return app->ui.progressDialog({JOB_MSG_DONE, result, u"", nullptr});
  SendEnd(app, {JOB_MSG_FAILED, result, nullptr, nullptr});
}

}  // namespace

void WorkerThread(APP_STATE_INFO* app) {
  app->jobStartTime = platform::LocalTimeNow();
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
