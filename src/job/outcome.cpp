#include "job/outcome.h"

#include "job/process_table.h"
#include "mxf/analysis.h"
#include "mxf/essence/continuity.h"

namespace quorvan {
namespace {

using platform::Language;
using platform::Text;

constexpr Text kPlainDoneText = {u"処理は完了しました。", u"The job is done."};
constexpr Text kPlainLoadFailureText = {u"メモリが確保できないため、ロードできません。",
                                        u"Out of memory: the file cannot be loaded."};
constexpr Text kPlainNoticeText = {
    u"処理は完了しましたが、UMIDの更新が正しく行われませんでした。",
    u"The job is done, but the UMIDs were not renewed as they should be."};
constexpr Text kPlainFailureText = {
    u"処理を中断しました。\nメモリが確保できないため、詳細を表示できません。\n"
    u"音声は途中まで書換えられている可能性があります。",
    u"The job has stopped.\nOut of memory: the details cannot be shown.\n"
    u"The audio may have been rewritten in part."};
constexpr std::int32_t kLastContinuityResult = 1012;

std::u16string TextOfAnalysis(const APP_STATE_INFO& app, std::int32_t result, Language language) {
  const MXF_BASE_INFO& mxf = *app.mxf;
  if (result == kSuccess) return {};
  if (mxf.processCode != kStageTimecodeContinuity) {
    if (result == kCancelled) return LoadStoppedMessage(app.mxfPath, language);
    return LoadFailureMessage(app.mxfPath, mxf.processCode, result, app.useFileIo,
                              mxf.audio->hasDescriptor == 1, language);
  }
  if (result == kCancelled) return AnalysisStoppedMessage(app.mxfPath, language);
  if (result < kContinuityNoFile || result > kLastContinuityResult) return {};
  return ContinuityFailureMessage(app.mxfPath, mxf.processCode, result, language);
}

std::u16string TextOfFailure(const APP_STATE_INFO& app, std::int32_t result, Language language) {
  const MXF_TIMECODE_INFO& timecode = *app.mxf->timecode;
  std::u16string text = result == kCancelled
                            ? JobCancelledMessage(app.mxfPath, app.jobKind, app.useFileIo, language)
                            : JobFailureMessage(app.mxfPath, app.jobKind, app.mxf->processCode,
                                                result, app.useFileIo, language) +
                                  FaultDetails(app.tracks->fault, timecode, language);
  if (app.jobKind == kRewriteJob) text += WrittenFrames(*app.tracks, timecode, result, language);
  const bool stoppedInProof = result == kCancelled && app.tracks->phase == kPhaseProving;
  if (app.jobKind == kExportJob && stoppedInProof) text += NothingExportedText(language);
  return text;
}

}  // namespace

std::u16string OutcomeMessage(const APP_STATE_INFO& app, std::int32_t result, Language language) {
  if (app.jobKind == kAnalysisJob) return TextOfAnalysis(app, result, language);
  if (result == kSuccess) {
    return JobDoneMessage(app.mxfPath, app.jobKind, app.useFileIo, language);
  }
  if (result == kDoneWithNotice) {
    return JobNoticeMessage(app.mxfPath, app.tracks->umidState, true, language);
  }
  return TextOfFailure(app, result, language);
}

std::u16string_view PlainOutcomeText(JobKind jobKind, std::int32_t result, Language language) {
  if (result == kSuccess) return kPlainDoneText.In(language);
  if (jobKind == kAnalysisJob) return kPlainLoadFailureText.In(language);
  if (result == kDoneWithNotice) return kPlainNoticeText.In(language);
  return kPlainFailureText.In(language);
}

}  // namespace quorvan
