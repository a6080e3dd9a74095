#include "ui/dialogs/job_thread.h"

#include "job/process_table.h"
#include "job/worker.h"
#include "mxf/analysis.h"
#include "platform/thread.h"
#include "ui/main/qt_text.h"

namespace quorvan::ui {

JobThread::JobThread(APP_STATE_INFO* app, QObject* parent) : QObject(parent), app_(*app) {
  connect(this, &JobThread::PhaseReported, this, &JobThread::PhaseEntered, Qt::QueuedConnection);
  connect(this, &JobThread::EndReported, this, &JobThread::TakeEnd, Qt::QueuedConnection);
}

JobThread::~JobThread() {
  Finish();
}

void JobThread::Start() {
  app_.ui.progressDialog = [this](const JobReport& report) {
    if (report.message == JOB_MSG_PHASE) return emit PhaseReported();
    message_ = report.message;
    result_ = report.result;
    text_ = report.text == nullptr ? QString() : ToQString(report.text);
    emit EndReported();
  };
  app_.jobStartTime = platform::LocalTimeNow();
  if (platform::StartThread(&app_.workerThread, [app = &app_] { WorkerThread(app); })) return;
  message_ = JOB_MSG_FAILED;
  result_ = static_cast<qint32>(kStageRewrapMapped) + kNoThread;
  text_ = ToQString(FailureText(kStageRewrapMapped, result_));
  emit EndReported();
}

// The last message was the thread's last act: this does not wait for work.
void JobThread::Finish() {
  if (app_.workerThread.joinable()) app_.workerThread.join();
}

void JobThread::TakeEnd() {
  Finish();
  if (message_ == JOB_MSG_DONE) return emit Done(result_, text_);
  emit Failed(result_, text_);
}

}  // namespace quorvan::ui
