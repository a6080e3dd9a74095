#include "ui/dialogs/export_dialog.h"

#include <QDir>
#include <QEvent>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>

#include <iterator>

#include "platform/text.h"
#include "ui/dialogs/dialog_place.h"
#include "ui/main/file_chooser.h"
#include "ui/main/message_box.h"
#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
#include "view/track_panel.h"

namespace quorvan::ui {
namespace {

constexpr int kLastPage = 2;
constexpr int kLampSize = 52;
constexpr int kMostPrefixChars = 32;

bool IsEnter(const QKeyEvent& event) {
  return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

// The switch of one track of the shown page; `number`, 0 to 7, is its place on the page.
class LampButton : public QAbstractButton {
 public:
  LampButton(const APP_STATE_INFO& app, const ExportDialogMemory& memory, int number,
             QWidget* parent)
      : QAbstractButton(parent), app_(app), memory_(memory), number_(number) {
    setObjectName(QString::number(1016 + number));
    setFixedSize(kLampSize, kLampSize);
    setShortcut(QKeySequence(QString("Alt+%1").arg(number + 1)));
  }

 protected:
  // Enter presses the switch that has the focus, as it does any button.
  void keyPressEvent(QKeyEvent* event) override {
    if (!IsEnter(*event)) return QAbstractButton::keyPressEvent(event);
    if (!event->isAutoRepeat()) click();
  }

  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    const int track = memory_.page * 8 + number_;
    const std::uint8_t state = app_.tracks->exportSwitch[static_cast<std::size_t>(track)];
    PaintLamp(&painter, rect(), track + 1, isEnabled() ? state : std::uint8_t{kNoSuchTrack});
    if (!hasFocus()) return;
    painter.setPen(QPen(QColor(Qt::white), 1, Qt::DotLine));
    painter.drawRect(rect().adjusted(3, 3, -4, -4));
  }

 private:
  const APP_STATE_INFO& app_;
  const ExportDialogMemory& memory_;
  int number_;
};

}  // namespace

ExportDialog::ExportDialog(APP_STATE_INFO* app, ExportDialogMemory* memory, SetStatus setStatus,
                           QWidget* parent)
    : RangeDialog(app, kExportRange, &app->exportPointSet, std::move(setStatus), parent),
      memory_(*memory) {
  setWindowTitle("WAV(BWF)ファイルの書出し");
  auto* layout = new QVBoxLayout(this);
  auto* upper = new QHBoxLayout;
  upper->addWidget(MakeRangeGroup("書出し範囲"));
  upper->addWidget(MakeTrackGroup());
  layout->addLayout(upper);
  layout->addWidget(MakeTargetRow());
  QPushButton* start = MakeDialogButton("1", "書出し(&E)", this);
  start->setDefault(true);
  QPushButton* close = MakeDialogButton("2", "閉じる", this);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(start);
  buttons->addWidget(close);
  layout->addLayout(buttons);
  connect(start, &QPushButton::clicked, this, &ExportDialog::Start);
  connect(close, &QPushButton::clicked, this, &QDialog::reject);
  entry_->IgnoreEscape();
  RefreshPage();
  CentreOnWindow(this);
  inButton_->setFocus();
  prefix_->selectAll();
}

QWidget* ExportDialog::MakeTrackGroup() {
  auto* group = new QGroupBox("書出しトラック", this);
  auto* layout = new QVBoxLayout(group);
  auto* lamps = new QGridLayout;
  layout->addLayout(lamps);
  for (int k = 0; k < kButtonsOfPage; ++k) {
    auto* button = new LampButton(app_, memory_, k, group);
    connect(button, &QAbstractButton::clicked, this, [this, k] {
      ToggleExportSwitch(&app_, static_cast<std::size_t>(memory_.page * kButtonsOfPage + k));
      RefreshPage();
    });
    lamps->addWidget(button, k / 4, k % 4);
    trackButtons_[static_cast<std::size_t>(k)] = button;
  }
  back_ = MakeDialogButton("1034", "<(&-)", group);
  forward_ = MakeDialogButton("1035", ">(&+)", group);
  QPushButton* all = MakeDialogButton("1036", "全て選択/解除(&G)", group);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(back_);
  buttons->addWidget(forward_);
  buttons->addWidget(all);
  layout->addLayout(buttons);
  connect(back_, &QPushButton::clicked, this, [this] { TurnPage(-1); });
  connect(forward_, &QPushButton::clicked, this, [this] { TurnPage(1); });
  connect(all, &QPushButton::clicked, this, &ExportDialog::ToggleAll);
  return group;
}

QWidget* ExportDialog::MakeTargetRow() {
  auto* row = new QWidget(this);
  auto* layout = new QGridLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  QPushButton* choose = MakeDialogButton("1014", "保存先(&D)", row);
  folder_ = new QLineEdit(row);
  folder_->setObjectName("1015");
  folder_->setReadOnly(true);
  const AUDIOTRACK_IO_INFO& tracks = *app_.tracks;
  folder_->setText(
      ToQString(tracks.exportFolder[0] != 0 ? tracks.exportFolder : app_.defaultExportFolder));
  prefix_ = new QLineEdit(row);
  prefix_->setObjectName("1013");
  prefix_->setAcceptDrops(false);
  prefix_->setMaxLength(kMostPrefixChars);
  prefix_->setText(
      ToQString(tracks.exportName[0] != 0 ? tracks.exportName : app_.defaultExportPrefix));
  layout->addWidget(choose, 0, 0);
  layout->addWidget(folder_, 0, 1);
  layout->addWidget(new QLabel("プレフィックス名", row), 1, 0);
  layout->addWidget(prefix_, 1, 1);
  connect(choose, &QPushButton::clicked, this, &ExportDialog::ChooseFolder);
  prefix_->installEventFilter(this);
  connect(prefix_, &QLineEdit::editingFinished, this, &ExportDialog::TakePrefix);
  return row;
}

void ExportDialog::TakePrefix() {
  platform::CopyText(app_.tracks->exportName, std::size(app_.tracks->exportName),
                     FromQString(prefix_->text()));
}

// Enter in the field of the prefix takes the prefix over instead of starting the export.
bool ExportDialog::eventFilter(QObject* object, QEvent* event) {
  if (object != prefix_ || event->type() != QEvent::KeyPress ||
      !IsEnter(static_cast<const QKeyEvent&>(*event))) {
    return RangeDialog::eventFilter(object, event);
  }
  TakePrefix();
  trackButtons_[1]->setFocus();
  return true;
}

void ExportDialog::RefreshPage() {
  back_->setEnabled(memory_.page != 0);
  forward_->setEnabled(memory_.page != kLastPage);
  for (std::size_t k = 0; k < trackButtons_.size(); ++k) {
    const std::size_t track = static_cast<std::size_t>(memory_.page * kButtonsOfPage) + k;
    trackButtons_[k]->setEnabled(app_.tracks->exportSwitch[track] != kNoSuchTrack);
    trackButtons_[k]->update();
  }
}

void ExportDialog::TurnPage(int step) {
  memory_.page = std::clamp(memory_.page + step, 0, kLastPage);
  RefreshPage();
  setFocus();
}

void ExportDialog::ToggleAll() {
  memory_.allOn = !memory_.allOn;
  SetExportSwitches(&app_, memory_.allOn);
  RefreshPage();
}

void ExportDialog::ChooseFolder() {
  FileChooser chooser(this, "BWF(WAV)ファイルの保存先を選択してください。", folder_->text());
  chooser.setFileMode(QFileDialog::Directory);
  chooser.setOption(QFileDialog::ShowDirsOnly);
  if (chooser.exec() != QDialog::Accepted) return;
  folder_->setText(QDir::toNativeSeparators(chooser.selectedFiles().value(0)));
  platform::CopyText(app_.tracks->exportFolder, std::size(app_.tracks->exportFolder),
                     FromQString(folder_->text()));
}

std::u16string_view ExportDialog::RewrapRangeRefusal() const {
  return u"再ラップ用のIN/OUT点が正しくありません。";
}

std::u16string_view ExportDialog::RewrapRangeTitle() const {
  return u"タイムコード入力";
}

void ExportDialog::Start() {
  if (!RequireRange(u"タイムコード入力")) return;
  TakePrefix();
  platform::CopyText(app_.tracks->exportFolder, std::size(app_.tracks->exportFolder),
                     FromQString(folder_->text()));
  RunJob(kExportJob, u"書出しトラック");
}

}  // namespace quorvan::ui
