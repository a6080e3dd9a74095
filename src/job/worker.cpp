#include "job/worker.h"

#include <chrono>
#include <new>
#include <string>

#include "export/export_file_io.h"
#include "export/export_mapped.h"
#include "job/process_table.h"
#include "loudness/measure_loudness.h"
#include "mxf/analysis.h"
#include "mxf/essence/continuity.h"
#include "rewrite/rewrap_file_io.h"
#include "rewrite/rewrap_mapped.h"
#include "state/program_name.h"

namespace quorvan {
namespace {

// The texts that are sent when there is no memory to compose a message.
constexpr char16_t kPlainDoneText[] = u"処理は完了しました。";
constexpr char16_t kPlainLoadFailureText[] = u"メモリが確保できないため、ロードできません。";
constexpr char16_t kPlainNoticeText[] =
    u"処理は完了しましたが、UMIDの更新が正しく行われませんでした。";
constexpr char16_t kPlainFailureText[] =
    u"処理を中断しました。\nメモリが確保できないため、詳細を表示できません。\n"
    u"音声は途中まで書換えられている可能性があります。";
constexpr std::int32_t kLastContinuityResult = 1012;
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

// Sends the job's last message with the text that `compose` returns, or, when memory is out, with
// the text that `report` holds.
template <typename Compose>
void SendEnd(APP_STATE_INFO* app, JobReport report, Compose compose) {
  std::u16string text;
  try {
    text = compose();
    report.text = text.c_str();
  } catch (const std::bad_alloc&) {
    text.clear();
  }
  app->ui.progressDialog(report);
}

std::u16string TextOfFailure(const APP_STATE_INFO& app, std::int32_t result) {
  const MXF_TIMECODE_INFO& timecode = *app.mxf->timecode;
  std::u16string text = result == kCancelled
                            ? JobCancelledMessage(app.mxfPath, app.jobKind, app.useFileIo)
                            : JobFailureMessage(app.mxfPath, app.jobKind, app.mxf->processCode,
                                                result, app.useFileIo) +
                                  FaultDetails(app.tracks->fault, timecode);
  if (app.jobKind == kRewriteJob) text += WrittenFrames(*app.tracks, timecode, result);
  return text;
}

void RunJob(APP_STATE_INFO* app) {
  app->mxf->processCode = JobProcessCode(app->jobKind, app->useFileIo);
  const std::int32_t result = RunEngine(app);
  // JobTitle returns views of whole literals, which end with a zero.
  const char16_t* title = JobTitle(app->jobKind).data();
  if (result == kSuccess) {
    return SendEnd(app, {JOB_MSG_DONE, result, kCoreName.data(), kPlainDoneText},
                   [app] { return JobDoneMessage(app->mxfPath, app->jobKind, app->useFileIo); });
  }
  if (result == kDoneWithNotice) {
    return SendEnd(app, {JOB_MSG_DONE, result, title, kPlainNoticeText},
                   [app] { return JobNoticeMessage(app->mxfPath, app->tracks->umidState, true); });
  }
  SendEnd(app, {JOB_MSG_FAILED, result, title, kPlainFailureText},
          [app, result] { return TextOfFailure(*app, result); });
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

// The text that tells the operator that an analysis has ended with `result`, which is not kSuccess;
// empty for a result that the continuity check does not have.
std::u16string TextOfAnalysis(const APP_STATE_INFO& app, std::int32_t result) {
  const MXF_BASE_INFO& mxf = *app.mxf;
  if (mxf.processCode != kStageTimecodeContinuity) {
    if (result == kCancelled) return LoadStoppedMessage(app.mxfPath);
    return LoadFailureMessage(app.mxfPath, mxf.processCode, result, app.useFileIo,
                              mxf.audio->hasDescriptor == 1);
  }
  if (result == kCancelled) return AnalysisStoppedMessage(app.mxfPath);
  if (result < kContinuityNoFile || result > kLastContinuityResult) return {};
  return ContinuityFailureMessage(app.mxfPath, mxf.processCode, result);
}

void RunAnalysis(APP_STATE_INFO* app) {
  const std::int32_t result = Analyse(app);
  if (result == kSuccess) return app->ui.progressDialog({JOB_MSG_DONE, result, u"", nullptr});
  SendEnd(app, {JOB_MSG_FAILED, result, nullptr, kPlainLoadFailureText},
          [app, result] { return TextOfAnalysis(*app, result); });
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
