// The dialog that measures the loudness of the two selected tracks (EBU R128) and shows the
// results.

#pragma once

#include "ui/dialogs/range_dialog.h"

namespace quorvan::ui {

class LoudnessDialog : public RangeDialog {
  Q_OBJECT

 public:
  // `setStatus` writes the first field of the status bar.
  LoudnessDialog(APP_STATE_INFO* app, SetStatus setStatus, QWidget* parent);

 protected:
  std::u16string_view RewrapRangeRefusal() const override;
  std::u16string_view RewrapRangeTitle() const override;

 private:
  QWidget* MakeResults();
  void Measure();
  void ShowResults();

  std::array<DrawnLabel*, 3> values_{};  // integrated loudness, true peak, loudness range
};

}  // namespace quorvan::ui
