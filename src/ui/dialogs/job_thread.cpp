#include "ui/dialogs/job_thread.h"

#include <string_view>

#include "job/job_steps.h"
#include "job/worker.h"
#include "mxf/analysis.h"
#include "platform/thread.h"
#include "ui/main/qt_text.h"

namespace quorvan::ui {
namespace {

constexpr int kLookMilliseconds = 10;

}  // namespace

JobThread::JobThread(APP_STATE_INFO* app, const QWidget* dialog) : app_(*app), dialog_(*dialog) {
  connect(&look_, &QTimer::timeout, this, &JobThread::Look);
}

JobThread::~JobThread() {
  Finish();
}

void JobThread::Start() {
  text_.reserve(kMostReportChars);
  phaseTold_ = false;
  inSecondPhase_ = false;
  ended_ = false;
  app_.ui.progressDialog = [this](const JobReport& report) { Take(report); };
  look_.start(kLookMilliseconds);
  if (platform::StartThread(&app_.workerThread, [app = &app_] { WorkerThread(app); })) return;
  const JobRefusal refusal = NoThreadRefusal();
  Take({JOB_MSG_FAILED, refusal.result, nullptr, std::u16string(refusal.text).c_str()});
}

// Takes a message of the worker, whose thread may not throw: the text goes into memory that is
// already reserved.
void JobThread::Take(const JobReport& report) {
  if (report.message == JOB_MSG_PHASE) {
    inSecondPhase_ = true;
    return;
  }
  message_ = report.message;
  result_ = report.result;
  const std::u16string_view text = report.text == nullptr ? u"" : report.text;
  text_.assign(text.substr(0, text_.capacity()));
  ended_ = true;
}

void JobThread::Look() {
  if (inSecondPhase_ && !phaseTold_) {
    phaseTold_ = true;
    emit PhaseEntered();
  }
  if (!appearance_.IsOver(&dialog_) || !ended_) return;
  const QString text = ToQString(text_);  // when memory is out, the next look tries again
  look_.stop();
  Finish();
  if (message_ == JOB_MSG_DONE) {
    emit Done(result_, text);
  } else {
    emit Failed(result_, text);
  }
}

// Joins the worker's thread. After the worker's last message this does not block, because the
// thread has nothing left to do; before that message it waits for the end of the job.
void JobThread::Finish() {
  if (app_.workerThread.joinable()) app_.workerThread.join();
}

}  // namespace quorvan::ui
