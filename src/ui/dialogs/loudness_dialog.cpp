#include "ui/dialogs/loudness_dialog.h"

#include <QLabel>
#include <QLineEdit>

#include "ui/dialogs/dialog_place.h"
#include "ui/main/message_box.h"

namespace quorvan::ui {
namespace {

constexpr COLOR kUnitColor = {200, 200, 200};
constexpr int kValueWidth = 220;
constexpr int kUnitWidth = 70;
constexpr int kValueHeight = 60;
constexpr QPoint kValueStart(0, 5);

struct ResultRow {
  const char* caption;
  std::uint32_t valueId;
  std::uint32_t unitId;
  const char* unit;
  QPoint unitStart;
};
constexpr ResultRow kResultRows[] = {
    {"Integrated Loudness", 1055, 1060, "LKFS", {0, 13}},
    {"True Peak", 1058, 1061, "dBTP", {0, 13}},
    {"Loudness Range(LRA)", 1059, 1062, "LU", {0, 5}},
};

// The text that names the two lowest selected tracks, counted from 1.
QString SourceText(const APP_STATE_INFO& app) {
  int tracks[2] = {};
  int found = 0;
  for (std::size_t t = 0; t < kMaxTracks && found < 2; ++t) {
    if (app.trackSelected[t] == 1) tracks[found++] = static_cast<int>(t) + 1;
  }
  return QString::asprintf("MXF Track  %2d + %2d", tracks[0], tracks[1]);
}

}  // namespace

LoudnessDialog::LoudnessDialog(APP_STATE_INFO* app, SetStatus setStatus, QWidget* parent)
    : RangeDialog(app, kLoudnessRange, &app->loudnessPointSet, std::move(setStatus), parent) {
  setWindowTitle("ラウドネス値測定");
  auto* layout = new QVBoxLayout(this);
  auto* source = new QHBoxLayout;
  auto* tracks = new QLineEdit(SourceText(app_), this);
  tracks->setObjectName("1057");
  tracks->setReadOnly(true);
  source->addWidget(new QLabel("測定ソース", this));
  source->addWidget(tracks);
  layout->addLayout(source);
  auto* middle = new QHBoxLayout;
  middle->addWidget(MakeRangeGroup(QString()));
  middle->addWidget(MakeResults());
  layout->addLayout(middle);
  QPushButton* measure = MakeDialogButton("1052", "分析(&A)", this);
  QPushButton* close = MakeDialogButton("2", "閉じる", this);
  close->setDefault(true);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(measure);
  buttons->addWidget(close);
  layout->addLayout(buttons);
  connect(measure, &QPushButton::clicked, this, &LoudnessDialog::Measure);
  connect(close, &QPushButton::clicked, this, &QDialog::reject);
  ShowResults();
  CentreOnWindow(this);
  inButton_->setFocus();
}

QWidget* LoudnessDialog::MakeResults() {
  auto* box = new QWidget(this);
  auto* layout = new QGridLayout(box);
  layout->setHorizontalSpacing(0);
  int row = 0;
  for (const ResultRow& result : kResultRows) {
    layout->addWidget(new QLabel(result.caption, box), 2 * row, 0, 1, 2);
    DrawnLabel* value = MakeDisplay(result.valueId, 8, kFigureColor, kValueWidth, kValueHeight,
                                    kValueStart, HorizontalAlign::kRight);
    DrawnLabel* unit =
        MakeDisplay(result.unitId, 6, kUnitColor, kUnitWidth, kValueHeight, result.unitStart);
    unit->SetText(result.unit);
    layout->addWidget(value, 2 * row + 1, 0);
    layout->addWidget(unit, 2 * row + 1, 1);
    values_[static_cast<std::size_t>(row++)] = value;
  }
  return box;
}

void LoudnessDialog::ShowResults() {
  const MXF_AUDIO_INFO& audio = *app_.mxf->audio;
  const double results[] = {audio.integratedLoudness, audio.truePeak, audio.loudnessRange};
  for (std::size_t i = 0; i < values_.size(); ++i) {
    const double shown = static_cast<double>(static_cast<float>(results[i]));
    values_[i]->SetText(QString::asprintf("%2.1f ", shown));
  }
}

std::u16string_view LoudnessDialog::RewrapRangeRefusal() const {
  return u"ラッピング用のIN/OUT点が正しくありません。";
}

std::u16string_view LoudnessDialog::RewrapRangeTitle() const {
  return u"設定の確認";
}

void LoudnessDialog::Measure() {
  if (!RequireRange(u"確認")) return;
  if (RunJob(kLoudnessJob, u"確認")) ShowResults();
}

}  // namespace quorvan::ui
