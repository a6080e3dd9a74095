// The entry of a range's two points: an edit that comes up in the place of a display.

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
  struct Displays {
    DrawnLabel* in;
    DrawnLabel* out;
    DrawnLabel* duration;
  };

  // All widgets are children of `host`, which gets the focus back. `digits` is the text limit.
  TimecodeField(APP_STATE_INFO* app, const RangeFields& fields, PointSet* pointSet,
                const Displays& displays, int digits, QWidget* host);

  // Opens the entry of a point.
  void Open(TimecodeTarget target);

  // Closes it, if one is open, without taking its text.
  void Cancel();

  // From now on the Escape key leaves an open entry as it is.
  void IgnoreEscape();

  // Lays an open entry over its display, which has been moved.
  void PlaceEdit();

  // Opens the entry of the first point that is not set, if there is one.
  void OpenFirstUnset();

  // Writes the three displays anew.
  void Refresh();

  TimecodeEdit* Edit() const { return edit_; }
  TimecodeTarget Target() const { return target_; }

 signals:
  // A point was entered, taken or not: whatever follows the range has to be looked at again.
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
  bool checking_ = false;  // a loss of focus comes from the check itself
};

}  // namespace quorvan::ui
