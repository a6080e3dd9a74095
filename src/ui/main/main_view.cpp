#include "ui/main/main_view.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include "state/program_name.h"
#include "state/window_state_info.h"
#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
#include "ui/main/tool_tip.h"
#include "view/texts.h"

namespace quorvan::ui {
namespace {

constexpr ControlId kButtons[] = {kLoadButton, kViewButton, kRewrapButton, kExportButton,
                                  kInButton,   kOutButton,  kDurButton};
constexpr int kTrackBandExcess = 5;  // pixels of the bottom band that the track band's fill covers
constexpr COLOR kTitleColor = {255, 105, 0};
constexpr COLOR kSubtitleColor = {255, 225, 255};
constexpr COLOR kRowStateColor = {180, 180, 180};

SelectMode ModeOf(Qt::KeyboardModifiers modifiers) {
  modifiers &= Qt::ShiftModifier | Qt::ControlModifier;
  if (modifiers == Qt::ShiftModifier) return SelectMode::kExtend;
  return modifiers == Qt::ControlModifier ? SelectMode::kToggle : SelectMode::kReplace;
}

}  // namespace

MainView::MainView(APP_STATE_INFO* app, QWidget* parent) : QWidget(parent), app_(*app) {
  setFocusPolicy(Qt::TabFocus);  // not ClickFocus: mousePressEvent decides which press focuses
  for (const LabelSpec& spec : Labels()) {
    auto* label = new DrawnLabel(spec, this);
    label->SetText(ToQString(spec.caption));
    if (spec.caption.empty()) label->SetFill(ToQColor(kPanelColor));
    labels_[spec.id] = label;
  }
  for (const ControlId id : kButtons)
    buttons_[id] = new PictureButton(id, this);
}

void MainView::RefreshInfoPanel() {
  for (std::uint32_t id = kFileNameText; id <= kSizeText; ++id) {
    const auto label = labels_.find(static_cast<ControlId>(id));
    if (label != labels_.end()) {
      label->second->SetText(ToQString(InfoText(app_, static_cast<ControlId>(id))));
    }
  }
}

void MainView::LayOut() {
  ReleasePress();
  for (const auto& [id, label] : labels_)
    label->setGeometry(ToQRect(ControlRect(id, width(), height())));
  for (const auto& [id, button] : buttons_)
    button->setGeometry(ToQRect(ControlRect(id, width(), height())));
  LayoutTrackArea(&app_, width(), height());
  UpdateArrowStates(&app_);
  app_.window->listRect = ListReference(width(), height());
  update();
}

void MainView::resizeEvent(QResizeEvent*) {
  LayOut();
  emit Resized();
}

bool MainView::HasTracks() const {
  return app_.mxfLoaded == 1 && app_.mxf->audio->trackCount > 0;
}

void MainView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  PaintBands(&painter);
  if (!HasTracks()) return PaintTitle(&painter);
  if (app_.libraryView == 1) return;  // the table lies over the rows
  painter.setClipRect(ToQRect(RowArea(app_)));
  for (std::int32_t row = 0; row < app_.window->visibleRows; ++row)
    PaintRow(&painter, row);
  PaintArrows(&painter);
}

void MainView::PaintBands(QPainter* painter) {
  const auto top = static_cast<int>(app_.window->topBandHeight);
  const auto track = static_cast<int>(app_.window->trackBandHeight);
  painter->fillRect(rect(), ToQColor(kPanelColor));
  painter->fillRect(0, top, width(), track + kTrackBandExcess, ToQColor(kTrackBandColor));
}

void MainView::PaintTitle(QPainter* painter) {
  const int middle =
      static_cast<int>(app_.window->topBandHeight + app_.window->trackBandHeight / 2);
  painter->setFont(FontOf(7));
  painter->setPen(ToQColor(kTitleColor));
  painter->drawText(QRect(0, middle - 20, width(), 20), Qt::AlignCenter | Qt::TextDontClip,
                    ToQString(kProgramName));
  painter->setFont(FontOf(6));
  painter->setPen(ToQColor(kSubtitleColor));
  painter->drawText(QRect(0, middle + 20, width(), 10), Qt::AlignCenter | Qt::TextDontClip,
                    ToQString(kProgramSubtitle));
}

void MainView::PaintRow(QPainter* painter, std::int32_t row) {
  const std::int32_t track = app_.window->scrollTop + row;
  const auto place = static_cast<std::size_t>(row);
  const auto t = static_cast<std::size_t>(track);
  const QRect name = ToQRect(app_.window->nameRect[place]);
  const TrackRowText text = TextOfTrack(app_, track);
  if (text.channelMark != 0) {
    painter->setFont(FontOf(5));
    painter->setPen(ToQColor(kFigureColor));
    painter->drawText(ToQRect(app_.window->channelMarkRect[place]),
                      Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip,
                      QString(QChar(text.channelMark)));
  }
  PaintLamp(painter, ToQRect(app_.window->lampRect[place]), track + 1,
            app_.tracks->rewrapSwitch[t]);

  if (app_.trackSelected[t] == 1) painter->fillRect(name, ToQColor(kSelectedVeil));
  painter->setFont(FontOf(1));
  if (!text.name.empty()) {
    painter->setPen(ToQColor(text.nameColor));
    painter->drawText(
        name, Qt::AlignLeft | Qt::AlignVCenter,
        painter->fontMetrics().elidedText(ToQString(text.name), Qt::ElideRight, name.width()));
  }
  if (!text.state.empty()) {
    QRect field = name;
    if (!text.name.empty()) {
      field.setLeft(name.left() + name.width() / 2);
      painter->fillRect(field, ToQColor(kOffVeil));
    }
    painter->setPen(text.name.empty() ? ToQColor(kRowStateColor) : QColor(Qt::white));
    painter->drawText(field, Qt::AlignCenter, ToQString(text.state));
  }
  if (track != app_.focusTrack || !hasFocus()) return;
  painter->setPen(QPen(QColor(Qt::white), 1, Qt::DotLine));
  painter->drawRect(name.adjusted(0, 0, -1, -1));
}

void MainView::PaintArrows(QPainter* painter) {
  const auto tracks = static_cast<std::int32_t>(UsableTracks(*app_.mxf->audio));
  const bool allFit = app_.window->scrollTop == 0 && app_.window->rowRemainder == 0 &&
                      app_.window->lastVisibleTrack == tracks - 1;
  if (allFit) return;
  if (app_.window->upArrowState != kArrowHidden) {
    PaintArrow(painter, ToQRect(app_.window->upArrowRect), true,
               app_.window->upArrowState == kArrowPressed);
  }
  if (app_.window->downArrowState != kArrowHidden) {
    PaintArrow(painter, ToQRect(app_.window->downArrowRect), false,
               app_.window->downArrowState == kArrowPressed);
  }
}

void MainView::Apply(std::uint32_t refresh) {
  if ((refresh & kRepaint) != 0) {
    UpdateArrowStates(&app_);
    update();
  }
  emit Changed(refresh);
}

void MainView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  if (app_.mxfLoaded == 1 && app_.libraryView == 1) return emit PressedBesideList();
  setFocus();
  if (app_.mxfLoaded != 1) return;
  const QPoint at = event->position().toPoint();
  const PressTarget target = HitTest(app_, at.x(), at.y());
  pressZone_ = target.zone;
  switch (target.zone) {
    case kNameZone:
      return Apply(PressName(&app_, target.track, ModeOf(event->modifiers())));
    case kLampZone:
      return Apply(ToggleTrackSwitch(&app_, target.track));
    case kUpArrowZone:
    case kDownArrowZone:
      return Apply(PressArrow(&app_, target.zone));
    case kNoZone:
      break;
  }
}

void MainView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton && app_.libraryView == 0) {
    ReleasePress();  // the popup menu will receive the release of the left button
    emit PopupRequested(event->globalPosition().toPoint());
    setFocus();
    return;
  }
  ReleasePress();
}

void MainView::ReleasePress() {
  if (pressZone_ == kNoZone) return;
  const PressZone zone = pressZone_;
  pressZone_ = kNoZone;
  Apply(ReleaseArrow(&app_, zone));
}

// A double click on a name opens the library; anywhere else the second press counts as a further
// press.
void MainView::mouseDoubleClickEvent(QMouseEvent* event) {
  const QPoint at = event->position().toPoint();
  const bool onName = app_.mxfLoaded == 1 && app_.libraryView == 0 &&
                      HitTest(app_, at.x(), at.y()).zone == kNameZone;
  if (onName && event->button() == Qt::LeftButton) {
    emit NameDoubleClicked();
  } else {
    mousePressEvent(event);
  }
}

void MainView::wheelEvent(QWheelEvent* event) {
  if (app_.mxfLoaded != 1 || app_.libraryView == 1) return;
  Apply(TurnWheel(&app_, event->angleDelta().y()));
}

void MainView::keyPressEvent(QKeyEvent* event) {
  const bool extend = (event->modifiers() & Qt::ShiftModifier) != 0;
  const bool inRows = app_.mxfLoaded == 1 && app_.libraryView == 0;
  if (inRows && event->key() == Qt::Key_Up) return Apply(MoveUp(&app_, extend));
  if (inRows && event->key() == Qt::Key_Down) return Apply(MoveDown(&app_, extend));
  if (AsksForPopup(*event)) return AskForPopup();
  QWidget::keyPressEvent(event);
}

// The pointer's request comes with the release of its button.
void MainView::contextMenuEvent(QContextMenuEvent* event) {
  if (event->reason() == QContextMenuEvent::Keyboard) AskForPopup();
}

void MainView::AskForPopup() {
  if (app_.libraryView == 1) return;
  const std::int32_t row = app_.focusTrack - app_.window->scrollTop;
  QRect place = rect();
  if (HasTracks() && row >= 0 && row < app_.window->visibleRows) {
    place = ToQRect(app_.window->nameRect[static_cast<std::size_t>(row)]);
    place = place.intersected(ToQRect(RowArea(app_)));
  }
  emit PopupRequested(mapToGlobal(place.center()));
}

bool MainView::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const QPoint at = help->pos();
  const QRect fileName = labels_[kFileNameText]->geometry();
  if (fileName.contains(at)) {
    ShowToolTip(help->globalPos(), FileToolTip(app_), kFileToolTipTitle, this, fileName);
    return true;
  }
  const PressTarget target = HitTest(app_, at.x(), at.y());
  if (target.zone == kNameZone && app_.libraryView == 0) {
    const auto row = static_cast<std::size_t>(target.track - app_.window->scrollTop);
    ShowToolTip(help->globalPos(), TrackToolTip(app_, target.track), {}, this,
                ToQRect(app_.window->nameRect[row]).intersected(ToQRect(RowArea(app_))));
  } else {
    QToolTip::hideText();
  }
  return true;
}

}  // namespace quorvan::ui
