// What the export and the loudness dialog have in common: the range with its three displays.

#pragma once

#include <QDialog>
#include <QGridLayout>
#include <QPushButton>

#include <functional>

#include "state/app_state_info.h"
#include "ui/main/timecode_field.h"

namespace quorvan::ui {

using SetStatus = std::function<void(std::u16string_view)>;

class RangeDialog : public QDialog {
  Q_OBJECT

 protected:
  RangeDialog(APP_STATE_INFO* app, const RangeFields& fields, PointSet* pointSet,
              SetStatus setStatus, QWidget* parent);

  // The buttons IN and OUT, their displays and the one that takes over the rewrite's range.
  QWidget* MakeRangeGroup(const QString& title);

  // A drawn label of the dialog on black.
  DrawnLabel* MakeDisplay(std::uint32_t id, std::size_t font, const COLOR& color, int width,
                          int height, const QPoint& textStart,
                          HorizontalAlign align = HorizontalAlign::kLeft);

  // What is said when the rewrite's range is not complete.
  virtual std::u16string_view RewrapRangeRefusal() const = 0;
  virtual std::u16string_view RewrapRangeTitle() const = 0;

  // True when both points are set; else says so and opens the entry of the first that is not.
  bool RequireRange(std::u16string_view title);

  // True for one of the keys that confirm; `key` is a QKeyEvent.
  static bool IsEnter(const QEvent& key);

  // Runs the job `kind` in its dialog. False, told under `title`, when it cannot start.
  bool RunJob(JobKind kind, std::u16string_view title);

  // Enter in the entry is not the default button.
  void keyPressEvent(QKeyEvent* event) override;

  APP_STATE_INFO& app_;
  TimecodeField* entry_ = nullptr;
  QPushButton* inButton_ = nullptr;

 private:
  void TakeRewrapRange();

  RangeFields fields_;
  PointSet& pointSet_;
  SetStatus setStatus_;
};

}  // namespace quorvan::ui
