#include "ui/main/message_box.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QStyle>
#include <QTextDocument>

#include <cmath>

#include "ui/dialogs/dialog_place.h"
#include "ui/main/qt_text.h"

namespace quorvan::ui {
namespace {

// The question before a rewrite: its letters are larger than those of a dialog by
// kInstructionScale.
constexpr double kInstructionScale = 1.4;
constexpr QRgb kInstructionColor = qRgb(0, 51, 153);
constexpr int kInstructionMargin = 18;  // pixels
constexpr int kInstructionWidth = 400;  // pixels

QMessageBox::Icon IconOf(BoxKind kind) {
  switch (kind) {
    case BoxKind::kError:
      return QMessageBox::Critical;
    case BoxKind::kWarning:
      return QMessageBox::Warning;
    case BoxKind::kPlain:
      return QMessageBox::NoIcon;
    case BoxKind::kNotice:
      break;
  }
  return QMessageBox::Information;
}

// The object name of the button: the number that Windows gives its answer (IDOK, IDYES, IDNO).
QString NameOf(QMessageBox::StandardButton button) {
  if (button == QMessageBox::Yes) return "6";
  return button == QMessageBox::No ? "7" : "1";
}

// The height of a text that is broken inside words where a word is longer than the line.
int HeightOf(const QLabel& label) {
  QTextDocument text;
  text.setDefaultFont(label.font());
  text.setDocumentMargin(0);
  text.setPlainText(label.text());
  text.setTextWidth(label.width());
  return static_cast<int>(std::ceil(text.size().height()));
}

// A message box. Escape and the close box do not close a question: neither is an answer.
class Box : public QMessageBox {
 public:
  using QMessageBox::QMessageBox;

 protected:
  // The toolkit leaves no room for lines that begin inside a word, such as the long name of a file.
  void showEvent(QShowEvent* event) override {
    QMessageBox::showEvent(event);
    layout()->activate();
    auto* label = findChild<QLabel*>("qt_msgbox_label");
    if (label != nullptr) label->setMinimumHeight(HeightOf(*label));
  }
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() != Qt::Key_Escape || !IsQuestion()) QMessageBox::keyPressEvent(event);
  }
  void closeEvent(QCloseEvent* event) override {
    if (IsQuestion()) return event->ignore();
    QMessageBox::closeEvent(event);
  }

 private:
  bool IsQuestion() const { return buttons().size() > 1; }
};

int Show(QWidget* parent, BoxKind kind, std::u16string_view text, std::u16string_view title,
         QMessageBox::StandardButtons buttons) {
  Box box(IconOf(kind), ToQString(title), ToQString(text).replace("\r\n", "\n"), buttons, parent);
  box.setTextFormat(Qt::PlainText);
  box.setTextInteractionFlags(Qt::TextSelectableByMouse);
  box.setWindowFlag(Qt::WindowStaysOnTopHint);
  for (QAbstractButton* button : box.buttons())
    button->setObjectName(NameOf(box.standardButton(button)));
  return box.exec();
}

}  // namespace

void Tell(QWidget* parent, BoxKind kind, std::u16string_view text, std::u16string_view title) {
  Show(parent, kind, text, title, QMessageBox::Ok);
}

bool Ask(QWidget* parent, BoxKind kind, std::u16string_view text, std::u16string_view title) {
  return Show(parent, kind, text, title, QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

bool AskFirst(QWidget* parent, std::u16string_view question, std::u16string_view title) {
  QDialog dialog(parent);
  dialog.setWindowTitle(ToQString(title));
  auto* icon = new QLabel(&dialog);
  const int size = dialog.style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
  icon->setPixmap(dialog.style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size));
  auto* instruction = new QLabel(ToQString(question), &dialog);
  instruction->setObjectName("instruction");
  instruction->setTextFormat(Qt::PlainText);
  QFont large = instruction->font();
  large.setPointSizeF(large.pointSizeF() * kInstructionScale);
  instruction->setFont(large);
  QPalette palette = instruction->palette();
  palette.setColor(QPalette::WindowText, kInstructionColor);
  instruction->setPalette(palette);
  QPushButton* no = MakeDialogButton("101", "いいえ(&N)", &dialog);
  QPushButton* yes = MakeDialogButton("102", "はい(&Y)", &dialog);
  no->setDefault(true);
  QObject::connect(no, &QPushButton::clicked, &dialog, &QDialog::reject);
  QObject::connect(yes, &QPushButton::clicked, &dialog, &QDialog::accept);
  auto* layout = new QGridLayout(&dialog);
  layout->setContentsMargins(kInstructionMargin, kInstructionMargin, kInstructionMargin,
                             kInstructionMargin);
  layout->setSpacing(kInstructionMargin);
  layout->setColumnMinimumWidth(1, kInstructionWidth);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  layout->addWidget(icon, 0, 0, Qt::AlignTop);
  layout->addWidget(instruction, 0, 1);
  auto* answers = new QHBoxLayout;
  answers->addStretch();
  answers->addWidget(no);
  answers->addWidget(yes);
  layout->addLayout(answers, 1, 0, 1, 2);
  no->setFocus();
  return dialog.exec() == QDialog::Accepted;
}

}  // namespace quorvan::ui
