// What the operator sees while a clip is loaded, and the decision whether it counts as loaded.

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
  // `setStatus` writes the status bar's first field. The clip is open in mxfFile.
  AnalysisDialog(APP_STATE_INFO* app, std::function<void(std::u16string_view)> setStatus,
                 QWidget* parent);

  // Runs the analysis; analysisOk of the state record tells how it went.
  int exec() override;

 protected:
  void reject() override;

 private:
  void ShowProgress();
  void Ended();
  void TellNotices(bool checked);
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
  bool checking_ = false;  // the second phase
  bool running_ = false;
  bool stopping_ = false;
  std::uint32_t shownStage_ = UINT32_MAX;  // none yet
};

}  // namespace quorvan::ui
