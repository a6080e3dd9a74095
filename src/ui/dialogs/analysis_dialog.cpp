#include "ui/dialogs/analysis_dialog.h"

#include <QGridLayout>
#include <QHBoxLayout>

#include "job/job_steps.h"
#include "job/process_table.h"
#include "mxf/analysis.h"
#include "platform/path.h"
#include "report/timecode_log.h"
#include "state/clip_state.h"
#include "state/program_name.h"
#include "ui/dialogs/dialog_place.h"
#include "ui/main/file_chooser.h"
#include "ui/main/message_box.h"
#include "ui/main/qt_text.h"

namespace quorvan::ui {
namespace {

constexpr int kAnalysisTimerMilliseconds = 30;
constexpr std::u16string_view kAnalysisTitle = u"MXF File Analysis";
constexpr std::u16string_view kErrorStatus = u"MXFファイル解析エラー";
constexpr std::u16string_view kLogTitle = u"エラーログの保存";

QString FrameText(std::uint32_t frames) {
  return QString("%1").arg(frames, 7);
}

}  // namespace

AnalysisDialog::AnalysisDialog(APP_STATE_INFO* app,
                               std::function<void(std::u16string_view)> setStatus, QWidget* parent)
    : QDialog(parent), app_(*app), setStatus_(std::move(setStatus)), job_(app, this) {
  setWindowTitle(ToQString(kCoreTitle));
  setModal(true);
  setMinimumWidth(kJobDialogWidth);
  auto* name = MakeFileNameLabel("1032", app_.mxfPath, this);
  framesLeft_ = new QLabel("0", this);
  framesLeft_->setObjectName("1033");
  framesLeft_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  framesTotal_ = new QLabel("0", this);
  framesTotal_->setObjectName("1046");
  framesTotal_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  bar_ = new QProgressBar(this);
  bar_->setObjectName("1004");
  bar_->setRange(0, 100);
  bar_->setTextVisible(false);
  stage_ = new QLabel(this);
  stage_->setObjectName("1031");
  stage_->setAlignment(Qt::AlignCenter);
  button_ = new QPushButton("スキップまたは中断する", this);
  button_->setObjectName("2");

  auto* counts = new QHBoxLayout;
  counts->addStretch();
  counts->addWidget(new QLabel("残りフレーム", this));
  counts->addWidget(framesLeft_);
  counts->addWidget(new QLabel("/", this));
  counts->addWidget(framesTotal_);
  counts->addStretch();
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(name);
  layout->addLayout(counts);
  layout->addWidget(bar_);
  layout->addWidget(stage_);
  layout->addWidget(button_, 0, Qt::AlignCenter);

  connect(button_, &QPushButton::clicked, this, &AnalysisDialog::reject);
  connect(&timer_, &QTimer::timeout, this, &AnalysisDialog::ShowProgress);
  connect(&job_, &JobThread::PhaseEntered, this, [this] {
    checking_ = true;
    framesTotal_->setText(FrameText(app_.mxf->timecode->progressTotal));
  });
  connect(&job_, &JobThread::Done, this, &AnalysisDialog::OnDone);
  connect(&job_, &JobThread::Failed, this, &AnalysisDialog::OnFailed);
}

int AnalysisDialog::exec() {
  PrepareAnalysis(&app_);
  running_ = true;
  stopping_ = false;
  PlaceJobDialog(this);
  setStatus_(u"MXFファイルを解析中...");
  ShowProgress();
  timer_.start(kAnalysisTimerMilliseconds);
  QMetaObject::invokeMethod(&job_, &JobThread::Start, Qt::QueuedConnection);
  return QDialog::exec();
}

// The button, Escape and the close box only ask the analysis to stop; the dialog closes when the
// worker reports the end.
void AnalysisDialog::reject() {
  if (!running_ || job_.HasEnded()) return;
  stopping_ = true;
  stage_->setText("中断処理を行っています。しばらくお待ちください...");
  setStatus_(u"中断処理中...");
  ShowProgress();
}

// Shows the progress, and repeats the request to stop, since the continuity check clears
// `stopRequest` when it starts.
void AnalysisDialog::ShowProgress() {
  if (stopping_) app_.mxf->timecode->stopRequest = 1;
  const MXF_TIMECODE_INFO& timecode = *app_.mxf->timecode;
  const std::uint32_t total = timecode.progressTotal;
  const std::uint32_t done = timecode.progressFrame;
  framesLeft_->setText(FrameText(total - std::min(done, total)));
  if (checking_ && total > 0) bar_->setValue(static_cast<int>(done / (total * 0.01)));
  const std::uint32_t code = app_.mxf->processCode;
  if (code != shownStage_) {
    shownStage_ = code;
    stage_->setText(ToQString(StageText(code)));
  }
  button_->setFocus();
}

void AnalysisDialog::Ended() {
  timer_.stop();
  running_ = false;
}

// Tells why no job can work on the clip, which is loaded all the same so that the operator can look
// at it, and how many tracks cannot be used. `checked` is true when all timecodes have been
// compared. True when there was something to tell.
bool AnalysisDialog::TellNotices(bool checked) {
  const std::u16string notices[] = {std::u16string(ClipRefusal(app_)),
                                    HiddenTracksMessage(*app_.mxf->audio, checked),
                                    IndexNoticeMessage(*app_.mxf)};
  bool told = false;
  for (const std::u16string& notice : notices) {
    if (notice.empty()) continue;
    Tell(this, BoxKind::kWarning, notice);
    told = true;
  }
  return told;
}

void AnalysisDialog::OnDone() {
  bar_->setValue(100);
  Ended();
  const bool told = TellNotices(true);
  setStatus_(u"ロード完了");
  app_.analysisOk = 1;
  told ? CloseBehindBox(this, QDialog::Accepted) : accept();
}

void AnalysisDialog::OnFailed(qint32 result, const QString& text) {
  Ended();
  button_->setText("閉じる");
  button_->setEnabled(false);
  if (result == kCancelled) {
    OnStopped(text);
  } else {
    OnError(text);
  }
  CloseBehindBox(this, result);
}

void AnalysisDialog::OnStopped(const QString& text) {
  setStatus_(u"解析をキャンセル");
  stage_->setText("解析をキャンセルしました。");
  app_.analysisOk = 0;
  if (!checking_) {
    Tell(this, BoxKind::kWarning, FromQString(text), kCoreName);
    ClearMxfState(&app_);
    return;
  }
  if (Ask(this, BoxKind::kWarning, FromQString(text), kCoreName)) {
    app_.analysisOk = 1;
    TellNotices(false);
  } else {
    ClearMxfState(&app_);
  }
}

void AnalysisDialog::OnError(const QString& text) {
  refusedWrongIndex_ = app_.mxf->indexContradicted != 0;
  setStatus_(kErrorStatus);
  stage_->setText("エラーが報告されたため解析を中断しました。");
  if (app_.mxf->timecode->errorCount == 0) {
    Tell(this, BoxKind::kWarning, FromQString(text), kAnalysisTitle);
  } else if (Ask(this, BoxKind::kNotice, FromQString(text), kAnalysisTitle)) {
    SaveTimecodeLog();
  }
  ClearMxfState(&app_);
}

void AnalysisDialog::SaveTimecodeLog() {
  hide();
  for (;;) {
    const QString folder = ToQString(platform::FolderOf(app_.mxfPath));
    FileChooser chooser(parentWidget(), ToQString(kLogTitle), folder, "テキスト(*.txt) (*.txt)");
    const std::u16string path = chooser.ChoosePath("txt");
    if (path.empty()) return;
    setStatus_(u"ログテキストを書き出し中...");
    std::uint32_t error = 0;
    if (WriteTimecodeLog(path, app_, &error)) break;
    setStatus_(kErrorStatus);
    Tell(parentWidget(), BoxKind::kError, TimecodeLogFailureMessage(app_.mxfPath, error),
         kLogTitle);
  }
  setStatus_(u"ログテキスト書出し完了");
  Tell(parentWidget(), BoxKind::kNotice, TimecodeLogDoneMessage(app_.mxfPath), kAnalysisTitle);
}

}  // namespace quorvan::ui
