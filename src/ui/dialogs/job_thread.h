// Runs the worker for a dialog and brings its messages to the dialog's own thread.

#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
#include <string>

#include "state/app_state_info.h"

namespace quorvan::ui {

class JobThread : public QObject {
  Q_OBJECT

 public:
  JobThread(APP_STATE_INFO* app, QObject* parent);
  ~JobThread() override;

  // Starts the job that the state record describes. Where the system has no thread for it, Failed
  // comes as of any other job.
  void Start();

 signals:
  void PhaseEntered();
  void Done(qint32 result, const QString& text);
  void Failed(qint32 result, const QString& text);

 private:
  void Take(const JobReport& report);
  void Look();
  void Finish();

  APP_STATE_INFO& app_;
  QTimer look_;
  bool phaseTold_ = false;

  // The worker writes these, the flags last; the dialog's thread reads them behind the flags.
  std::atomic<bool> inSecondPhase_ = false;
  std::atomic<bool> ended_ = false;
  JobMessage message_ = JOB_MSG_DONE;
  qint32 result_ = 0;
  std::u16string text_;  // has its memory from the start
};

}  // namespace quorvan::ui
