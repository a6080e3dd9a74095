// The entry of the two points of a range: a field that opens in the place of a display.

#pragma once

#include <QObject>

#include "state/app_state_info.h"
#include "state/frame_range.h"
#include "ui/main/controls.h"
#include "view/timecode_entry.h"

namespace quorvan::ui {

class TimecodeField : public QObject {
  Q_OBJECT

 public:
  // The displays of the range.
  struct Displays {
    DrawnLabel* in;
    DrawnLabel* out;
    DrawnLabel* duration;
  };

  // Makes the entry for the range in the members `fields` of `tracks`; `pointSet` tells which of
  // its points are set and must outlive this object. `host` is the parent of the field and of the
  // displays, and gets the focus when an entry closes and nothing else has taken the focus.
  // `digits` is the largest number of digits of the field.
  TimecodeField(APP_STATE_INFO* app, const RangeFields& fields, PointSet* pointSet,
                const Displays& displays, int digits, QWidget* host);

  // Opens the entry of the point `target` with the present timecode of the point.
  void Open(TimecodeTarget target);

  // Closes the open entry, if there is one, and ignores its text.
  void Cancel();

  // From now on the Escape key does not close an open entry.
  void IgnoreEscape();

  // Places an open entry over its display after the display was moved.
  void PlaceEdit();

  // Opens the entry of the first point that is not set. Does nothing when both points are set.
  void OpenFirstUnset();

  // Shows the present texts of the three displays.
  void Refresh();

  TimecodeEdit* Edit() const { return edit_; }
  // The point whose entry is open, or kNoTarget.
  TimecodeTarget Target() const { return target_; }

 signals:
  // A timecode was confirmed, accepted or not, which may have changed which points are set.
  void Entered();

 private:
  void Confirm();
  void Show(TimecodeTarget target);
  void Close();
  DrawnLabel* DisplayOf(TimecodeTarget target) const;

  APP_STATE_INFO& app_;
  RangeFields fields_;
  PointSet& pointSet_;
  Displays displays_;
  QWidget* host_;
  TimecodeEdit* edit_;
  TimecodeTarget target_ = kNoTarget;
  bool checking_ = false;  // Confirm is running, whose message box takes the focus of the field
};

}  // namespace quorvan::ui
