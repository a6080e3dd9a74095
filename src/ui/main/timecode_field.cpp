#include "ui/main/timecode_field.h"

#include <QApplication>

#include "ui/main/message_box.h"
#include "ui/main/qt_text.h"
#include "view/texts.h"

namespace quorvan::ui {
TimecodeField::TimecodeField(APP_STATE_INFO* app, const RangeFields& fields, PointSet* pointSet,
                             const Displays& displays, int digits, QWidget* host)
    : QObject(host),
      app_(*app),
      fields_(fields),
      pointSet_(*pointSet),
      displays_(displays),
      host_(host),
      edit_(new TimecodeEdit(digits, host)) {
  for (DrawnLabel* display : {displays_.in, displays_.out}) {
    QSizePolicy keepsItsPlace = display->sizePolicy();
    keepsItsPlace.setRetainSizeWhenHidden(true);
    display->setSizePolicy(keepsItsPlace);
  }
  edit_->hide();
  connect(edit_, &TimecodeEdit::Confirmed, this, &TimecodeField::Confirm);
  connect(edit_, &TimecodeEdit::Cancelled, this, &TimecodeField::Cancel);
  connect(edit_, &TimecodeEdit::FocusLost, this, [this] {
    if (!checking_ && edit_->isVisible()) Cancel();
  });
}

DrawnLabel* TimecodeField::DisplayOf(TimecodeTarget target) const {
  return target == kInTarget ? displays_.in : displays_.out;
}

void TimecodeField::Open(TimecodeTarget target) {
  checking_ = false;
  Show(target);
}

void TimecodeField::Show(TimecodeTarget target) {
  if (target_ != kNoTarget) DisplayOf(target_)->show();
  target_ = target;
  PlaceEdit();
  DisplayOf(target)->hide();
  const FramePoint& point = app_.tracks->*(target == kInTarget ? fields_.in : fields_.out);
  edit_->setText(ToQString(TimecodeDigits(*app_.mxf->timecode, point[0])));
  edit_->setEnabled(true);
  edit_->show();
  edit_->raise();
  edit_->setFocus();
  edit_->selectAll();
}

void TimecodeField::PlaceEdit() {
  if (target_ == kNoTarget) return;
  const DrawnLabel* display = DisplayOf(target_);
  QFont font = display->font();
  font.setLetterSpacing(QFont::AbsoluteSpacing, 0);
  edit_->setFont(font);
  edit_->setGeometry(display->geometry());
}

void TimecodeField::Close() {
  const TimecodeTarget open = target_;
  target_ = kNoTarget;
  if (open != kNoTarget) DisplayOf(open)->show();
  edit_->hide();
  edit_->setEnabled(false);
}

void TimecodeField::Cancel() {
  if (target_ == kNoTarget) return;
  // A control that was clicked keeps the focus that the click has given to it.
  const bool focusIsFree = edit_->hasFocus() || QApplication::focusWidget() == nullptr;
  Close();
  checking_ = false;
  Refresh();
  if (focusIsFree) host_->setFocus();
}

void TimecodeField::IgnoreEscape() {
  disconnect(edit_, &TimecodeEdit::Cancelled, nullptr, nullptr);
}

void TimecodeField::Confirm() {
  checking_ = true;
  const TimecodeTarget target = target_;
  const EntryResult result =
      ApplyTimecodeEntry(&app_, target, fields_, &pointSet_, FromQString(edit_->text()));
  if (result == EntryResult::kAccepted) {
    if (NextTarget(target) == kNoTarget) {
      Close();
      host_->setFocus();
    } else {
      Show(NextTarget(target));
    }
    Refresh();
  } else {
    Tell(host_->window(), BoxKind::kNotice, EntryRefusal(result), kEntryTitle);
    edit_->setFocus();
    edit_->selectAll();
  }
  checking_ = false;
  emit Entered();
}

void TimecodeField::OpenFirstUnset() {
  if (pointSet_[0] != 1) {
    Open(kInTarget);
  } else if (pointSet_[1] != 1) {
    Open(kOutTarget);
  }
}

void TimecodeField::Refresh() {
  const RangeTexts texts = TextsOfRange(app_, fields_, pointSet_);
  displays_.in->SetText(ToQString(texts.in));
  displays_.out->SetText(ToQString(texts.out));
  displays_.duration->SetText(ToQString(texts.duration));
}

}  // namespace quorvan::ui
