#include "ui/dialogs/range_dialog.h"

#include <QGroupBox>
#include <QLabel>

#include "job/job_steps.h"
#include "state/clip_state.h"
#include "ui/dialogs/dialog_place.h"
#include "ui/dialogs/job_dialog.h"
#include "ui/main/message_box.h"
#include "ui/main/theme.h"

namespace quorvan::ui {
namespace {

constexpr int kDisplayWidth = 200;
constexpr int kDisplayHeight = 40;
constexpr QPoint kDisplayTextStart(4, 0);
constexpr int kDialogEntryDigits = 11;
constexpr COLOR kBlack = {0, 0, 0};

}  // namespace

RangeDialog::RangeDialog(APP_STATE_INFO* app, const RangeFields& fields, PointSet* pointSet,
                         SetStatus setStatus, QWidget* parent)
    : QDialog(parent),
      app_(*app),
      fields_(fields),
      pointSet_(*pointSet),
      setStatus_(std::move(setStatus)) {
  setModal(true);
}

DrawnLabel* RangeDialog::MakeDisplay(std::uint32_t id, std::size_t font, const COLOR& color,
                                     int width, int height, const QPoint& textStart,
                                     HorizontalAlign align) {
  auto* display = new DrawnLabel(
      {static_cast<ControlId>(id), font, color, align, VerticalAlign::kCenter, {}}, this);
  display->SetFill(ToQColor(kBlack), textStart);
  display->setFixedSize(width, height);
  return display;
}

QWidget* RangeDialog::MakeRangeGroup(const QString& title) {
  auto* group = new QGroupBox(title, this);
  inButton_ = MakeDialogButton("1040", "IN(&I)", group);
  QPushButton* outButton = MakeDialogButton("1041", "OUT(&O)", group);
  QPushButton* takeOver = MakeDialogButton("1056", "ラッピング範囲を使用(&P)", group);
  DrawnLabel* in =
      MakeDisplay(1066, 4, kFigureColor, kDisplayWidth, kDisplayHeight, kDisplayTextStart);
  DrawnLabel* out =
      MakeDisplay(1067, 4, kFigureColor, kDisplayWidth, kDisplayHeight, kDisplayTextStart);
  DrawnLabel* duration =
      MakeDisplay(1068, 4, kWhite, kDisplayWidth, kDisplayHeight, kDisplayTextStart);
  auto* layout = new QGridLayout(group);
  layout->addWidget(inButton_, 0, 0);
  layout->addWidget(in, 0, 1);
  layout->addWidget(outButton, 1, 0);
  layout->addWidget(out, 1, 1);
  layout->addWidget(new QLabel("DUR", group), 2, 0, Qt::AlignCenter);
  layout->addWidget(duration, 2, 1);
  layout->addWidget(takeOver, 3, 1);
  // The edit lies over a display; both must have the same parent.
  entry_ =
      new TimecodeField(&app_, fields_, &pointSet_, {in, out, duration}, kDialogEntryDigits, group);
  entry_->Edit()->setObjectName("1065");
  connect(inButton_, &QPushButton::clicked, this, [this] { entry_->Open(kInTarget); });
  connect(outButton, &QPushButton::clicked, this, [this] { entry_->Open(kOutTarget); });
  connect(in, &DrawnLabel::DoubleClicked, this, [this] { entry_->Open(kInTarget); });
  connect(out, &DrawnLabel::DoubleClicked, this, [this] { entry_->Open(kOutTarget); });
  connect(takeOver, &QPushButton::clicked, this, &RangeDialog::TakeRewrapRange);
  entry_->Refresh();
  return group;
}

void RangeDialog::TakeRewrapRange() {
  if (quorvan::TakeRewrapRange(&app_, fields_, &pointSet_)) return entry_->Refresh();
  Tell(this, BoxKind::kWarning, RewrapRangeRefusal(), RewrapRangeTitle());
  entry_->OpenFirstUnset();
}

bool RangeDialog::RequireRange(std::u16string_view title) {
  if (IsRangeSet(pointSet_)) return true;
  Tell(this, BoxKind::kWarning, u"書出し用IN/OUTポイントが正しく設定されていません。", title);
  entry_->OpenFirstUnset();
  return false;
}

bool RangeDialog::RunJob(JobKind kind, std::u16string_view title) {
  if (const JobRefusal refusal = PrepareJob(kind, &app_); refusal.result != 0) {
    Tell(this, BoxKind::kNotice, refusal.text, title);
    return false;
  }
  JobDialog(&app_, setStatus_, this).exec();
  inButton_->setFocus();
  return true;
}

void RangeDialog::mousePressEvent(QMouseEvent* event) {
  entry_->Cancel();
  QDialog::mousePressEvent(event);
}
}  // namespace quorvan::ui
