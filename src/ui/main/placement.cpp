#include "ui/main/placement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <algorithm>

#include "platform/kept_place.h"
#include "view/main_layout.h"

namespace quorvan::ui {
namespace {

constexpr int kVisiblePixels = 100;  // of the title bar, enough to move the window by

int Distance(const QRect& a, const QRect& b) {
  return (a.center() - b.center()).manhattanLength();
}

// What the system draws around the window, which must have been created.
QMargins FrameOf(const QWidget& window) {
  const QWindow* created = window.windowHandle();
  return created != nullptr ? created->frameMargins() : QMargins();
}

// What the stored size has beyond the size of the contents.
QSize StoredFrame(const QWidget& window) {
  const QMargins frame = platform::KeptPlaceHasFrame() ? FrameOf(window) : QMargins();
  return QSize(frame.left() + frame.right(), frame.top() + frame.bottom());
}

// The place to which a minimized, maximized or full-screen window returns: the corner of its frame,
// and its size without the frame.
QRect NormalPlace(const QWidget& window) {
  const QMargins frame = FrameOf(window);
  return window.normalGeometry().translated(-frame.left(), -frame.top());
}

// True for a place within limits that no desktop reaches. Beyond them, sums of coordinates could
// overflow.
bool IsPlace(const platform::KeptPlace& place) {
  constexpr int most = 1 << 20;
  const auto fits = [](int value) { return value >= -most && value <= most; };
  return fits(place.left) && fits(place.top) && fits(place.width) && fits(place.height);
}

}  // namespace

void SavePlacement(const QWidget& window) {
  const bool normal = !window.isMaximized() && !window.isMinimized() && !window.isFullScreen();
  const QRect place = normal ? QRect(window.pos(), window.size()) : NormalPlace(window);
  const QSize size = place.size() + StoredFrame(window);
  platform::WriteKeptPlace({place.left(), place.top(), size.width(), size.height()});
}

void RestorePlacement(QWidget* window) {
  const auto kept = platform::ReadKeptPlace();
  if (!kept || !IsPlace(*kept)) return;
  QList<QRect> screens;
  for (const QScreen* screen : QGuiApplication::screens())
    screens.push_back(screen->availableGeometry());
  // A window that was created before its first move would be put beside its place on X11.
  if (platform::KeptPlaceHasFrame()) window->winId();  // creates the window with its frame
  const QSize size = QSize(kept->width, kept->height) - StoredFrame(*window);
  const QRect place = OntoScreen(QRect(QPoint(kept->left, kept->top), size), screens);
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
