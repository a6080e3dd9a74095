// The surface of the main window between menu and status bar: bands, rows, arrows and the controls
// on them. It paints what the state record says and hands on what the operator does.

#pragma once

#include <QWidget>

#include <map>

#include "ui/main/controls.h"
#include "view/track_panel.h"

namespace quorvan::ui {

class MainView : public QWidget {
  Q_OBJECT

 public:
  MainView(APP_STATE_INFO* app, QWidget* parent);

  DrawnLabel* Label(ControlId id) const { return labels_.at(id); }
  PictureButton* Button(ControlId id) const { return buttons_.at(id); }

  // Writes all displays of the information panel anew.
  void RefreshInfoPanel();

  // Lays everything out for the present size.
  void LayOut();

 signals:
  // A press, a key or the wheel has changed the state; `refresh` is a set of Refresh.
  void Changed(quint32 refresh);
  void NameDoubleClicked();
  void PressedBesideList();
  void PopupRequested(const QPoint& globalPosition);
  void Resized();

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void PaintBands(QPainter* painter);
  void PaintTitle(QPainter* painter);
  void PaintRow(QPainter* painter, std::int32_t row);
  void PaintArrows(QPainter* painter);
  void Apply(std::uint32_t refresh);
  void ReleasePress();
  bool HasTracks() const;

  APP_STATE_INFO& app_;
  std::map<ControlId, DrawnLabel*> labels_;
  std::map<ControlId, PictureButton*> buttons_;
  PressZone pressZone_ = kNoZone;
};

}  // namespace quorvan::ui
