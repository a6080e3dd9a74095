// Runs the worker for a dialog and passes its messages to the thread of the dialog.

#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
#include <string>

#include "state/app_state_info.h"
#include "ui/dialogs/dialog_place.h"

namespace quorvan::ui {

// Runs one job on the thread `workerThread` of `app`. A timer on the dialog's thread looks for
// messages of the worker and emits them as signals, the end not before the dialog may close.
class JobThread : public QObject {
  Q_OBJECT

 public:
  // `dialog` shows the job and outlives this object.
  JobThread(APP_STATE_INFO* app, const QWidget* dialog);
  // Waits for the end of the worker, if it runs.
  ~JobThread() override;

  // Starts the job that `app` describes. When the system has no thread for it, Failed is emitted
  // like the failure of any other job, with kStageRewrapMapped + kNoThread.
  void Start();

  // True when the job has ended and can no longer be stopped.
  bool HasEnded() const { return ended_; }

 signals:
  // The analysis has passed and the comparison of the timecodes begins; at most once, before Done
  // or Failed.
  void PhaseEntered();
  // The job has ended and its thread is gone: exactly one of Done and Failed is emitted, with the
  // result of the job and the text for the operator.
  void Done(qint32 result, const QString& text);
  void Failed(qint32 result, const QString& text);

 private:
  void Take(const JobReport& report);
  void Look();
  void Finish();

  APP_STATE_INFO& app_;
  const QWidget& dialog_;
  Appearance appearance_;
  QTimer look_;
  bool phaseTold_ = false;  // PhaseEntered has been emitted

  // The worker writes the fields below, and sets `ended_` after `message_`, `result_` and `text_`.
  // The dialog's thread reads these three only when `ended_` is set.
  std::atomic<bool> inSecondPhase_ = false;
  std::atomic<bool> ended_ = false;
  JobMessage message_ = JOB_MSG_DONE;
  qint32 result_ = 0;
  std::u16string text_;  // Start reserves its memory
};

}  // namespace quorvan::ui
