#include "ui/dialogs/job_thread.h"

#include "job/worker.h"
#include "ui/main/qt_text.h"

namespace quorvan::ui {

JobThread::~JobThread() {
  Finish();
}

void JobThread::Start() {
  app_.ui.progressDialog = [this](const JobReport& report) {
    const JobMessage message = report.message;
    const std::int32_t result = report.result;
    const QString text = report.text == nullptr ? QString() : ToQString(report.text);
    QMetaObject::invokeMethod(
        this,
        [this, message, result, text] {
          switch (message) {
            case JOB_MSG_PHASE:
              return emit PhaseEntered();
            case JOB_MSG_DONE:
              Finish();
              return emit Done();
            case JOB_MSG_FAILED:
              Finish();
              return emit Failed(result, text);
          }
        },
        Qt::QueuedConnection);
  };
  app_.jobStartTime = platform::LocalTimeNow();
  app_.workerThread = std::thread(WorkerThread, &app_);
}

// The last message was the thread's last act: this does not wait for work.
void JobThread::Finish() {
  if (app_.workerThread.joinable()) app_.workerThread.join();
}

}  // namespace quorvan::ui
