// The part that the export dialog and the loudness dialog have in common: a range of frames with
// its buttons and displays.

#pragma once

#include <QDialog>
#include <QGridLayout>
#include <QPushButton>

#include <functional>

#include "state/app_state_info.h"
#include "ui/main/timecode_field.h"

namespace quorvan::ui {

// Writes the first field of the status bar.
using SetStatus = std::function<void(std::u16string_view)>;

class RangeDialog : public QDialog {
  Q_OBJECT

 protected:
  // `fields` names the members of `tracks` that hold the range, and `pointSet`, which must outlive
  // the dialog, tells which of its points are set.
  RangeDialog(APP_STATE_INFO* app, const RangeFields& fields, PointSet* pointSet,
              SetStatus setStatus, QWidget* parent);

  // Makes the group `title` with the buttons IN and OUT, the displays of IN, OUT and duration, and
  // the button that takes over the range of the rewrite. Also makes `entry_` and `inButton_`.
  QWidget* MakeRangeGroup(const QString& title);

  // Makes a drawn label of `width` x `height` pixels with a black field. `id` becomes its object
  // name, `font` is an index of kFonts, and the text starts at `textStart` of the field.
  DrawnLabel* MakeDisplay(std::uint32_t id, std::size_t font, const COLOR& color, int width,
                          int height, const QPoint& textStart,
                          HorizontalAlign align = HorizontalAlign::kLeft);

  // The message when the range of the rewrite cannot be taken over, because its IN or OUT point is
  // not set.
  virtual std::u16string_view RewrapRangeRefusal() const = 0;
  // The title of the message that RewrapRangeRefusal returns.
  virtual std::u16string_view RewrapRangeTitle() const = 0;

  // True when both points of the range are set. Otherwise tells the operator, under the title
  // `title`, and opens the entry of the first point that is not set.
  bool RequireRange(std::u16string_view title);

  // Runs the job `kind` in its dialog. False when the job cannot start, which a message under the
  // title `title` tells; true whatever the outcome of a job that started.
  bool RunJob(JobKind kind, std::u16string_view title);

  // A press on the ground closes an open entry, like a press on a control.
  void mousePressEvent(QMouseEvent* event) override;

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
