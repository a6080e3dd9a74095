#include "ui/main/placement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QWindow>

#include <algorithm>

#include "view/main_layout.h"

namespace quorvan::ui {
namespace {

constexpr char kGroup[] = "Window";
constexpr char kValue[] = "position";
constexpr int kVisiblePixels = 100;  // of the title bar, enough to move the window by

int Distance(const QRect& a, const QRect& b) {
  return (a.center() - b.center()).manhattanLength();
}

// The place to which a minimized, maximized or full-screen window returns: the corner of its frame,
// and its size without the frame.
QRect NormalPlace(const QWidget& window) {
  const QRect inner = window.normalGeometry();
  const QWindow* shown = window.windowHandle();
  const QMargins frame = shown != nullptr ? shown->frameMargins() : QMargins();
  return inner.translated(-frame.left(), -frame.top());
}

// True for a place within limits that no desktop reaches. Beyond them, sums of coordinates could
// overflow.
bool IsPlace(const QRect& rect) {
  constexpr int most = 1 << 20;
  const auto fits = [](int value) { return value >= -most && value <= most; };
  return fits(rect.left()) && fits(rect.top()) && fits(rect.right()) && fits(rect.bottom());
}

}  // namespace

void SavePlacement(const QWidget& window) {
  QSettings settings;
  settings.beginGroup(kGroup);
  const bool normal = !window.isMaximized() && !window.isMinimized() && !window.isFullScreen();
  settings.setValue(kValue, normal ? QRect(window.pos(), window.size()) : NormalPlace(window));
}

void RestorePlacement(QWidget* window) {
  QSettings settings;
  settings.beginGroup(kGroup);
  if (!settings.contains(kValue)) return;
  QList<QRect> screens;
  for (const QScreen* screen : QGuiApplication::screens())
    screens.push_back(screen->availableGeometry());
  const QRect kept = settings.value(kValue).toRect();
  if (!kept.isValid() || !IsPlace(kept)) return;
  const QRect place = OntoScreen(kept, screens);
  window->resize(place.size());
  window->move(place.topLeft());
}

QSize SmallestSize(const QSize& room, const QSize& frame) {
  return QSize(kMinimumWidth, kMinimumHeight).boundedTo(room - frame);
}

QRect OntoScreen(const QRect& kept, const QList<QRect>& screens) {
  if (screens.empty()) return kept;
  QRect all;
  for (const QRect& screen : screens)
    all = all.united(screen);
  const QRect wanted(
      kept.topLeft(),
      kept.size().boundedTo(all.size()).expandedTo(SmallestSize(all.size(), QSize(0, 0))));
  for (const QRect& screen : screens) {
    const QRect shown = screen.intersected(wanted);
    if (shown.width() >= kVisiblePixels && shown.top() == wanted.top()) return wanted;
  }
  const QRect nearest = *std::min_element(
      screens.begin(), screens.end(),
      [&](const QRect& a, const QRect& b) { return Distance(a, wanted) < Distance(b, wanted); });
  QRect place(wanted.topLeft(), wanted.size().boundedTo(nearest.size()));
  place.moveLeft(std::clamp(place.left(), nearest.left(),
                            std::max(nearest.left(), nearest.right() - place.width() + 1)));
  place.moveTop(std::clamp(place.top(), nearest.top(),
                           std::max(nearest.top(), nearest.bottom() - place.height() + 1)));
  return place;
}

}  // namespace quorvan::ui
