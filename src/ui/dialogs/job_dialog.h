// The window in which a rewrite, an export or a measurement runs.

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
  // The job is the prepared one. `setStatus` writes the status bar's first field.
  JobDialog(APP_STATE_INFO* app, std::function<void(std::u16string_view)> setStatus,
            QWidget* parent);

  int exec() override;

 protected:
  void reject() override;

 private:
  void ShowProgress();
  void ShowFlush();
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
  double percent_ = 0.01;
  bool running_ = false;
  bool stopping_ = false;
};

}  // namespace quorvan::ui
