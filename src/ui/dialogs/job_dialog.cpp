#include "ui/dialogs/job_dialog.h"

#include <QGridLayout>

#include <array>

#include "job/job_steps.h"
#include "job/process_table.h"
#include "report/rewrap_log.h"
#include "state/program_name.h"
#include "timecode/timecode.h"
#include "ui/dialogs/dialog_place.h"
#include "ui/main/message_box.h"
#include "ui/main/qt_text.h"

namespace quorvan::ui {
namespace {

constexpr int kJobTimerMilliseconds = 200;
constexpr std::u16string_view kFlushingStage = u"ストレージへの書込み完了を待っています...";

struct JobTexts {
  RangeFields range;
  std::u16string_view statusAtStart;
  std::u16string_view proving;
  std::u16string_view action;
  std::u16string_view statusAtEnd;
  std::u16string_view stopped;
};

// Texts and ranges, indexed by JobKind; the analysis has a dialog of its own.
constexpr std::array<JobTexts, 4> kJobTexts = {{
    {kRewrapRange, u"オーディオトラックを再ラップ中...", u"再ラップの前にMXFファイルを確認中...",
     u"オーディオトラックを再ラップ中...", u"オーディオエレメントの再ラップ完了",
     u"再ラップ処理を中断しました。"},
    {kExportRange, u"BWFファイルを書出し中...", u"書出しの前にMXFファイルを確認中...",
     u"BWFファイルを書出し中...", u"BWFファイル書出し完了", u"BWFファイル書出しを中断しました。"},
    {},
    {kLoudnessRange, u"ラウドネス情報を計測中...", u"ラウドネス情報を分析中...",
     u"ラウドネス情報を分析中...", u"ラウドネス測定完了", u"ラウドネス測定を中断しました。"},
}};

}  // namespace

JobDialog::JobDialog(APP_STATE_INFO* app, std::function<void(std::u16string_view)> setStatus,
                     QWidget* parent)
    : QDialog(parent),
      app_(*app),
      setStatus_(std::move(setStatus)),
      range_(kJobTexts[app->jobKind].range),
      job_(app, this) {
  setWindowTitle(ToQString(kCoreTitle));
  setModal(true);
  setMinimumWidth(kJobDialogWidth);
  const auto label = [this](const char* name, const QString& text, Qt::Alignment alignment) {
    auto* made = new QLabel(text, this);
    made->setObjectName(name);
    made->setAlignment(alignment);
    return made;
  };
  auto* file = MakeFileNameLabel("1009", app_.mxfPath, this);
  auto* in = label("1005", Timecode((app_.tracks->*range_.in)[0]), Qt::AlignLeft);
  auto* out = label("1006", Timecode((app_.tracks->*range_.out)[0]), Qt::AlignRight);
  progress_ = label("1007", "00:00:00,00", Qt::AlignCenter);
  action_ = label("1017", "スタティック", Qt::AlignCenter);
  bar_ = new QProgressBar(this);
  bar_->setObjectName("1004");
  bar_->setRange(0, 100);
  bar_->setTextVisible(false);
  button_ = new QPushButton("キャンセル", this);
  button_->setObjectName("2");

  auto* layout = new QGridLayout(this);
  layout->addWidget(file, 0, 0, 1, 3);
  layout->addWidget(label("", "IN", Qt::AlignLeft), 1, 0);
  layout->addWidget(label("", "OUT", Qt::AlignRight), 1, 2);
  layout->addWidget(in, 2, 0);
  layout->addWidget(progress_, 2, 1);
  layout->addWidget(out, 2, 2);
  layout->addWidget(bar_, 3, 0, 1, 3);
  layout->addWidget(action_, 4, 0, 1, 3);
  layout->addWidget(button_, 5, 0, 1, 3, Qt::AlignCenter);

  connect(button_, &QPushButton::clicked, this, &JobDialog::reject);
  connect(&timer_, &QTimer::timeout, this, &JobDialog::ShowProgress);
  connect(&job_, &JobThread::Done, this, &JobDialog::OnDone);
  connect(&job_, &JobThread::Failed, this, &JobDialog::OnFailed);
}

QString JobDialog::Timecode(std::int32_t frames) const {
  const MXF_TIMECODE_INFO& timecode = *app_.mxf->timecode;
  TimeFields f{};
  FramesToTimecode(
      FramesToLabelCount(timecode.fpsIndex, timecode.dropFrame, static_cast<std::uint32_t>(frames)),
      timecode.fpsIndex, &f);
  return QString::asprintf("%02u:%02u:%02u%c%02u", f[0], f[1], f[2],
                           timecode.dropFrame != 0 ? ',' : '.', f[3]);
}

int JobDialog::exec() {
  percent_ = app_.tracks->totalFrames * 0.01;
  running_ = true;
  stopping_ = false;
  PlaceJobDialog(this);
  setStatus_(kJobTexts[app_.jobKind].statusAtStart);
  shownPhase_ = UINT32_MAX;
  ShowProgress();
  timer_.start(kJobTimerMilliseconds);
  // The job starts only when the dialog handles events and can show its progress.
  QMetaObject::invokeMethod(&job_, &JobThread::Start, Qt::QueuedConnection);
  return QDialog::exec();
}

// Cancel, Escape and the close box only ask the job to stop; the dialog closes when the worker
// reports the end.
void JobDialog::reject() {
  if (!running_ || job_.HasEnded()) return;
  stopping_ = true;
  action_->setText("中断処理を行っています、お待ちください...");
  setStatus_(u"中断処理中...");
  button_->setEnabled(false);
  ShowProgress();
}

// Shows the progress, and repeats the request to stop: a job clears `cancel` when it starts.
void JobDialog::ShowProgress() {
  if (stopping_) app_.tracks->cancel = 1;
  ShowPhase();
  const bool proving = shownPhase_ == kPhaseProving && app_.jobKind != kLoudnessJob;
  const std::size_t slot = CountedSlot(*app_.mxf->timecode);
  const std::uint32_t done = proving ? app_.tracks->provenFrames : app_.tracks->currentFrame;
  progress_->setText(Timecode((app_.tracks->*range_.in)[slot] + static_cast<std::int32_t>(done)) +
                     (proving ? "まで確認" : "まで完了"));
  if (percent_ > 0) bar_->setValue(static_cast<int>(done / percent_));
}

// Says what the job is doing when the job has come to its next phase. The time that the medium
// takes is unknown: the bar then shows activity without an end.
void JobDialog::ShowPhase() {
  const std::uint32_t phase = app_.tracks->phase;
  if (phase == shownPhase_) return;
  shownPhase_ = phase;
  bar_->setRange(0, phase == kPhaseFlushing ? 0 : 100);
  if (stopping_) return;
  const JobTexts& texts = kJobTexts[app_.jobKind];
  const std::u16string_view actions[] = {texts.proving, texts.action, kFlushingStage};
  action_->setText(ToQString(actions[phase]));
}

void JobDialog::OnFailed(qint32 result, const QString& text) {
  timer_.stop();
  bar_->setRange(0, 100);
  running_ = false;
  setStatus_(kJobTexts[app_.jobKind].stopped);
  action_->setText(ToQString(kJobTexts[app_.jobKind].stopped));
  button_->setText("閉じる");
  button_->setEnabled(false);
  Tell(this, BoxKind::kWarning, FromQString(text), kCoreName);
  CloseBehindBox(this, result & 0xFFFF);
}

void JobDialog::OnDone(qint32 result, const QString&) {
  bar_->setRange(0, 100);
  bar_->setValue(100);
  timer_.stop();
  running_ = false;
  setStatus_(kJobTexts[app_.jobKind].statusAtEnd);
  hide();
  if (app_.jobKind == kRewriteJob) {
    ReportRewrite(result);
  } else if (app_.jobKind == kExportJob) {
    setStatus_(u"BWFファイルの書出し完了");
    Tell(parentWidget(), BoxKind::kNotice,
         std::u16string(u"BWFファイルの書出し処理が完了しました。\n\n書出し場所\r\n") +
             app_.tracks->exportFolder);
  }
  accept();
}

void JobDialog::ReportRewrite(qint32 result) {
  setStatus_(u"再ラップ詳細ログを作成中...");
  const RewriteEnd end = EndRewrite(result, true, &app_);
  setStatus_(u"再ラップ処理完了");
  if (!end.logged) {
    Tell(parentWidget(), BoxKind::kError, end.logFailure, u"再ラップ処理詳細ログの保存");
  }
  if (result == kDoneWithNotice) return Tell(parentWidget(), BoxKind::kWarning, end.text);
  Tell(parentWidget(), BoxKind::kNotice,
       end.logged ? RewrapCompletionMessage(app_.mxfPath, RewrapLogPath(app_.mxfPath)) : end.text);
}

}  // namespace quorvan::ui
