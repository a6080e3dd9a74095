// The part of the main window between menu bar and status bar: the bands, the rows of the tracks,
// the arrows and the controls. It paints what the state record says and passes on what the operator
// does.

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

  // The label, or the button, with the number `id`. Throws std::out_of_range when there is none.
  DrawnLabel* Label(ControlId id) const { return labels_.at(id); }
  PictureButton* Button(ControlId id) const { return buttons_.at(id); }

  // Shows the present texts of all displays of the information panel.
  void RefreshInfoPanel();

  // Places all controls, rows and arrows for the present size of the view.
  void LayOut();

 signals:
  // A press, a key or the wheel has changed the state record; `refresh` is a set of Refresh.
  void Changed(quint32 refresh);
  // The name of a track was double-clicked.
  void NameDoubleClicked();
  // The left button went down on the view while the library's table shows over it.
  void PressedBesideList();
  // The right button was released on the track view, at `globalPosition` of the screen, or a key
  // asks for the popup menu, which is to open at the row of the focus track.
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
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  void PaintBands(QPainter* painter);
  void PaintTitle(QPainter* painter);
  void PaintRow(QPainter* painter, std::int32_t row);
  void PaintArrows(QPainter* painter);
  void Apply(std::uint32_t refresh);
  void ReleasePress();
  void AskForPopup();
  bool HasTracks() const;

  APP_STATE_INFO& app_;
  std::map<ControlId, DrawnLabel*> labels_;
  std::map<ControlId, PictureButton*> buttons_;
  PressZone pressZone_ = kNoZone;
};

}  // namespace quorvan::ui
