// Where the loudness of the two selected tracks is measured and shown.

#pragma once

#include "ui/dialogs/range_dialog.h"

namespace quorvan::ui {

class LoudnessDialog : public RangeDialog {
  Q_OBJECT

 public:
  LoudnessDialog(APP_STATE_INFO* app, SetStatus setStatus, QWidget* parent);

 protected:
  std::u16string_view RewrapRangeRefusal() const override;
  std::u16string_view RewrapRangeTitle() const override;

 private:
  QWidget* MakeResults();
  void Measure();
  void ShowResults();

  std::array<DrawnLabel*, 3> values_{};
};

}  // namespace quorvan::ui
