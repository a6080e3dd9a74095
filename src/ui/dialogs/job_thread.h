// Runs the worker for a dialog and brings its messages to the dialog's own thread.

#pragma once

#include <QObject>
#include <QString>

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

  // Sent by the worker, on its own thread.
  void PhaseReported();
  void EndReported();

 private:
  void Finish();
  void TakeEnd();

  APP_STATE_INFO& app_;

  // How the job has ended: written by the worker as its last act, read when it has gone.
  JobMessage message_ = JOB_MSG_DONE;
  qint32 result_ = 0;
  QString text_;
};

}  // namespace quorvan::ui
