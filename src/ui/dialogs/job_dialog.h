// The dialog that shows a running rewrite, export or measurement.

#pragma once

#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include <functional>

#include "state/app_state_info.h"
#include "state/frame_range.h"
#include "ui/dialogs/job_thread.h"

namespace quorvan::ui {

class JobDialog : public QDialog {
  Q_OBJECT

 public:
  // Makes the dialog for the job that PrepareJob has prepared in `app`. `setStatus` writes the
  // first field of the status bar.
  JobDialog(APP_STATE_INFO* app, std::function<void(std::u16string_view)> setStatus,
            QWidget* parent);

  // Runs the job and returns when it has ended and the operator has seen its messages:
  // QDialog::Accepted for a job that is done, else the lower 16 bits of its result.
  int exec() override;

 protected:
  // Asks a running job to stop; only the end of the job closes the dialog.
  void reject() override;

 private:
  void ShowProgress();
  void ShowPhase();
  void OnDone(qint32 result, const QString& text);
  void OnFailed(qint32 result, const QString& text);
  void ReportRewrite(qint32 result);
  QString Timecode(std::int32_t frames) const;

  APP_STATE_INFO& app_;
  std::function<void(std::u16string_view)> setStatus_;
  RangeFields range_;
  JobThread job_;
  QTimer timer_;
  QLabel* progress_;
  QLabel* action_;
  QProgressBar* bar_;
  QPushButton* button_;
  std::uint32_t shownPhase_ = UINT32_MAX;  // JobPhase; UINT32_MAX before the job
  double percent_ = 0.01;                  // frames in a hundredth of the job
  bool running_ = false;
  bool stopping_ = false;  // the operator has asked the job to stop
};

}  // namespace quorvan::ui
