#include "ui/main/controls.h"

#include <QKeyEvent>
#include <QPainter>
#include <QValidator>

#include <algorithm>

#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
#include "view/commands.h"
#include "view/timecode_entry.h"

namespace quorvan::ui {
namespace {

Qt::Alignment AlignmentOf(const LabelSpec& spec) {
  const Qt::Alignment vertical =
      spec.vertical == VerticalAlign::kCenter ? Qt::AlignVCenter : Qt::AlignTop;
  switch (spec.horizontal) {
    case HorizontalAlign::kCenter:
      return vertical | Qt::AlignHCenter;
    case HorizontalAlign::kRight:
      return vertical | Qt::AlignRight;
    case HorizontalAlign::kLeft:
      break;
  }
  return vertical | Qt::AlignLeft;
}

// True for a key that runs a command. These keys run their commands while a timecode is typed, too.
bool BelongsToCommand(const QKeyEvent& key) {
  const QKeySequence pressed(key.keyCombination());
  return std::ranges::any_of(Accelerators(), [&](const Accelerator& accelerator) {
    return pressed == QKeySequence(accelerator.keys.data());
  });
}

// True for a key that would type a printable character other than a digit.
bool IsForeignText(const QKeyEvent& key) {
  if ((key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) != 0) return false;
  return !key.text().isEmpty() && key.text()[0].isPrint() &&
         (key.text()[0] < '0' || key.text()[0] > '9');
}

// Accepts the characters of a timecode and no others from an input method and from the clipboard.
// Typed characters other than digits do not come here: keyPressEvent drops them.
class TimecodeCharacters : public QValidator {
 public:
  using QValidator::QValidator;

  State validate(QString& text, int&) const override {
    const auto plain = PlainTimecodeText(FromQString(text));
    if (plain) text = ToQString(*plain);
    return plain ? Acceptable : Invalid;
  }
};

}  // namespace

DrawnLabel::DrawnLabel(const LabelSpec& spec, QWidget* parent) : QWidget(parent), spec_(spec) {
  setObjectName(QString::number(spec.id));
  constexpr ControlId kTakingPresses[] = {kFileNameText, kInTimecodeText, kOutTimecodeText,
                                          kDurTimecodeText};
  takesPresses_ = std::ranges::count(kTakingPresses, spec.id) > 0;
  QFont font = FontOf(spec.font);
  font.setLetterSpacing(QFont::AbsoluteSpacing, 1);
  setFont(font);
}

void DrawnLabel::SetText(const QString& text) {
  if (text == text_) return;
  text_ = text;
  update();
}

void DrawnLabel::SetFill(const QColor& fill, const QPoint& textStart) {
  fill_ = fill;
  textStart_ = textStart;
}

void DrawnLabel::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  if (fill_.isValid()) painter.fillRect(rect(), fill_);
  const int alignment = static_cast<int>(AlignmentOf(spec_));
  painter.setPen(ToQColor(spec_.color));
  const QRect field = rect().adjusted(textStart_.x(), textStart_.y(), 0, 0);
  const QString line = fontMetrics().elidedText(text_, Qt::ElideRight, field.width());
  painter.drawText(field, alignment | Qt::TextDontClip, line);
}

// Makes Japanese letters no higher than the field, since they fill their line and higher letters
// would lose their edges.
void DrawnLabel::resizeEvent(QResizeEvent*) {
  QFont fitting = font();
  const bool tooHigh = kFonts[spec_.font].family == FontFamily::kJapanese && height() > 0 &&
                       fitting.pixelSize() > height();
  if (!tooHigh) return;
  fitting.setPixelSize(height());
  setFont(fitting);
}

void DrawnLabel::mousePressEvent(QMouseEvent* event) {
  event->setAccepted(takesPresses_);
}

void DrawnLabel::mouseReleaseEvent(QMouseEvent* event) {
  event->setAccepted(takesPresses_);
}

void DrawnLabel::mouseDoubleClickEvent(QMouseEvent* event) {
  event->setAccepted(takesPresses_);
  emit DoubleClicked();
}

PictureButton::PictureButton(ControlId id, QWidget* parent) : QAbstractButton(parent), id_(id) {
  setObjectName(QString::number(id));
  setFocusPolicy(Qt::TabFocus);
}

void PictureButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const ButtonLook look = !isEnabled() ? ButtonLook::kDisabled
                          : isDown()   ? ButtonLook::kPressed
                                       : ButtonLook::kNormal;
  PaintButton(&painter, rect(), id_, look);
  if (!hasFocus()) return;
  painter.setPen(QPen(Qt::white, 1, Qt::DotLine));
  painter.drawRect(rect().adjusted(3, 3, -4, -4));
}

TimecodeEdit::TimecodeEdit(QWidget* parent) : QLineEdit(parent) {
  setObjectName(QString::number(kTimecodeEdit));
  setAlignment(Qt::AlignRight);
  setFont(FontOf(3));
  setAcceptDrops(false);  // the window takes dropped files
  setInputMethodHints(Qt::ImhDigitsOnly);
  setValidator(new TimecodeCharacters(this));
}

bool TimecodeEdit::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride &&
      BelongsToCommand(static_cast<const QKeyEvent&>(*event))) {
    return false;
  }
  return QLineEdit::event(event);
}

void TimecodeEdit::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      emit Confirmed();
      return;
    case Qt::Key_Escape:
      emit Cancelled();
      return;
    default:
      if (!IsForeignText(*event)) QLineEdit::keyPressEvent(event);
  }
}

void TimecodeEdit::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  // A menu that opens takes the focus for a while; the entry stays open behind the menu.
  if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::MenuBarFocusReason) return;
  emit FocusLost();
}

}  // namespace quorvan::ui
