// Runs the worker for a dialog and brings its messages to the dialog's own thread.

#pragma once

#include <QObject>
#include <QString>

#include "state/app_state_info.h"

namespace quorvan::ui {

class JobThread : public QObject {
  Q_OBJECT

 public:
  JobThread(APP_STATE_INFO* app, QObject* parent) : QObject(parent), app_(*app) {}
  ~JobThread() override;

  // Starts the job that the state record describes.
  void Start();

 signals:
  void PhaseEntered();
  void Done();
  void Failed(qint32 result, const QString& text);

 private:
  void Finish();

  APP_STATE_INFO& app_;
};

}  // namespace quorvan::ui
