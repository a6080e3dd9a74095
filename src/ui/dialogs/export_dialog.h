// The dialog in which the operator chooses the tracks and the range to export into BWF files.

#pragma once

#include <QLineEdit>

#include <array>

#include "ui/dialogs/range_dialog.h"

namespace quorvan::ui {

// What the dialog remembers from one opening to the next.
struct ExportDialogMemory {
  int page = 0;        // page of track switches that shows, 0 to 2
  bool allOn = false;  // the last press on "all" has set the switches ON
};

class ExportDialog : public RangeDialog {
  Q_OBJECT

 public:
  // `memory` must outlive the dialog. `setStatus` writes the first field of the status bar.
  ExportDialog(APP_STATE_INFO* app, ExportDialogMemory* memory, SetStatus setStatus,
               QWidget* parent);

 protected:
  std::u16string_view RewrapRangeRefusal() const override;
  std::u16string_view RewrapRangeTitle() const override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  static constexpr int kButtonsOfPage = 8;

  QWidget* MakeTrackGroup();
  QWidget* MakeTargetRow();
  void TurnPage(int step);
  void ToggleAll();
  void TakePrefix();
  void RefreshPage();
  void ChooseFolder();
  void Start();

  ExportDialogMemory& memory_;
  std::array<QAbstractButton*, kButtonsOfPage> trackButtons_{};
  QPushButton* back_ = nullptr;
  QPushButton* forward_ = nullptr;
  QLineEdit* folder_ = nullptr;
  QLineEdit* prefix_ = nullptr;
};

}  // namespace quorvan::ui
