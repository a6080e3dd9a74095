#include "ui/main/controls.h"

#include <QKeyEvent>
#include <QPainter>
#include <QValidator>

#include <algorithm>

#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
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

// True for a key that types a character.
bool TypesText(const QKeyEvent& key) {
  if ((key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) != 0) return false;
  return !key.text().isEmpty() && key.text()[0].isPrint();
}

// Keeps the first digits of whatever an input method, the clipboard or a key puts into the field.
class DigitsOnly : public QValidator {
 public:
  DigitsOnly(int most, QObject* parent) : QValidator(parent), most_(most) {}

  State validate(QString& text, int& cursor) const override {
    cursor = static_cast<int>(DigitsOf(text.left(cursor)).size());
    text = DigitsOf(text);
    return Acceptable;
  }

 private:
  QString DigitsOf(const QString& text) const {
    return ToQString(DigitsIn(FromQString(text))).left(most_);
  }

  int most_;
};

}  // namespace

DrawnLabel::DrawnLabel(const LabelSpec& spec, QWidget* parent)
    : QWidget(parent),
      spec_(spec),
      fullHeight_(ToQRect(ControlRect(spec.id, kMinimumWidth, kMinimumHeight)).height()) {
  setObjectName(QString::number(spec.id));
  constexpr ControlId kTakingPresses[] = {kFileNameText, kInTimecodeText, kOutTimecodeText,
                                          kDurTimecodeText};
  takesPresses_ = std::ranges::count(kTakingPresses, spec.id) > 0;
  setFont(LabelFont());
}

// The font of the label at its present height: smaller letters in a smaller field. Japanese letters
// are no higher than the field, since they fill their line and higher letters would lose their
// edges.
QFont DrawnLabel::LabelFont() const {
  QFont font = FontOf(spec_.font);
  font.setLetterSpacing(QFont::AbsoluteSpacing, 1);
  if (fullHeight_ == 0 || height() == 0) return font;
  int size = font.pixelSize();
  if (height() < fullHeight_) size = size * height() / fullHeight_;
  if (kFonts[spec_.font].family == FontFamily::kJapanese) size = std::min(size, height());
  font.setPixelSize(std::max(size, 1));
  return font;
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

void DrawnLabel::resizeEvent(QResizeEvent*) {
  setFont(LabelFont());
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
  setFocusPolicy(id == kDurButton ? Qt::NoFocus : Qt::TabFocus);  // DUR runs nothing
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

QString KeysOf(Command command) {
  for (const Accelerator& accelerator : Accelerators()) {
    if (accelerator.command == command) return QString::fromLatin1(accelerator.keys.data());
  }
  return {};
}

bool AsksForPopup(const QKeyEvent& key) {
  return key.keyCombination() == QKeyCombination(Qt::ShiftModifier, Qt::Key_F10);
}

TimecodeEdit::TimecodeEdit(int digits, QWidget* parent) : QLineEdit(parent), digits_(digits) {
  setObjectName(QString::number(kTimecodeEdit));
  setAlignment(Qt::AlignRight);
  setAcceptDrops(false);  // the window takes dropped files
  setInputMethodHints(Qt::ImhDigitsOnly);
  setValidator(new DigitsOnly(digits, this));
}

bool TimecodeEdit::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride &&
      BelongsToCommand(static_cast<const QKeyEvent&>(*event))) {
    return false;
  }
  return QLineEdit::event(event);
}

// True when `typed` is a digit that does not push another digit out of the field.
bool TimecodeEdit::HasRoomFor(const QString& typed) const {
  const bool isDigit = typed[0] >= '0' && typed[0] <= '9';
  return isDigit && (hasSelectedText() || text().size() < digits_);
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
      if (!TypesText(*event) || HasRoomFor(event->text())) QLineEdit::keyPressEvent(event);
  }
}

void TimecodeEdit::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  // A menu that opens takes the focus for a while; the entry stays open behind the menu.
  if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::MenuBarFocusReason) return;
  emit FocusLost();
}

}  // namespace quorvan::ui
