// The dialog that shows the analysis of a clip and decides whether the clip counts as loaded.

#pragma once

#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include <functional>

#include "state/app_state_info.h"
#include "ui/dialogs/job_thread.h"

namespace quorvan::ui {

class AnalysisDialog : public QDialog {
  Q_OBJECT

 public:
  // Makes the dialog for the clip that is open in `mxfFile` of `app`. `setStatus` writes the first
  // field of the status bar.
  AnalysisDialog(APP_STATE_INFO* app, std::function<void(std::u16string_view)> setStatus,
                 QWidget* parent);

  // Runs the analysis and returns when it has ended and the operator has seen its messages.
  // `analysisOk` of `app` is then 1 when the clip counts as loaded: it was accepted, or the
  // operator stopped the comparison of the timecodes and wants to load the clip anyway. Returns the
  // result of an analysis that failed or was stopped, else QDialog::Accepted.
  int exec() override;

  // True when the clip was refused, for whatever reason, and its index does not lead to the audio
  // of every frame. Such an index also makes timecodes look broken.
  bool RefusedWrongIndex() const { return refusedWrongIndex_; }

 protected:
  // Asks a running analysis to stop; only the end of the analysis closes the dialog.
  void reject() override;

 private:
  void ShowProgress();
  void Ended();
  bool TellNotices(bool checked);
  void OnDone();
  void OnFailed(qint32 result, const QString& text);
  void OnStopped(const QString& text);
  void OnError(const QString& text);
  void SaveTimecodeLog();

  APP_STATE_INFO& app_;
  std::function<void(std::u16string_view)> setStatus_;
  JobThread job_;
  QTimer timer_;
  QLabel* stage_;
  QLabel* framesLeft_;
  QLabel* framesTotal_;
  QProgressBar* bar_;
  QPushButton* button_;
  bool checking_ = false;  // the comparison of the timecodes has begun
  bool running_ = false;
  bool refusedWrongIndex_ = false;
  bool stopping_ = false;                  // the operator has asked the analysis to stop
  std::uint32_t shownStage_ = UINT32_MAX;  // process code of the shown stage; UINT32_MAX for none
};

}  // namespace quorvan::ui
