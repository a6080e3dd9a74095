// Measures how quickly the window starts, and how long its event loop stands still while a clip is
// rewritten.
//
//   bench_window                    starts the window five times, each in a process of its own, and
//                                   prints the time from the start of the process to its end, which
//                                   follows the first picture
//   bench_window CLIP WAV [WAV...]  loads the clip, puts the files on its tracks in order, rewrites
//                                   the whole clip by both methods, and prints the longest pause of
//                                   the event loop

#include <QAbstractButton>
#include <QApplication>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QMimeData>
#include <QProcess>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "state/clip_state.h"
#include "state/track_assignment.h"
#include "ui/main/main_window.h"
#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
#include "wav/wav_library.h"

namespace quorvan::bench {
namespace {

constexpr int kStarts = 5;
constexpr char kOnlyStart[] = "--only-start";

// Measures the longest time between two turns of the event loop.
class Pulse : public QObject {
 public:
  Pulse() {
    clock_.start();
    startTimer(1, Qt::PreciseTimer);
  }

  // The longest time since the last call, in milliseconds.
  double TakeLongest() { return std::exchange(longest_, 0.0); }

 protected:
  void timerEvent(QTimerEvent*) override {
    const auto passed = static_cast<double>(clock_.nsecsElapsed()) / 1e6;
    clock_.restart();
    longest_ = std::max(longest_, passed);
  }

 private:
  QElapsedTimer clock_;
  double longest_ = 0;
};

// Answers an open message box: clicks its button named "102", or else its button named "1".
void AnswerBoxes() {
  QWidget* top = QApplication::activeModalWidget();
  if (top == nullptr || !top->inherits("QMessageBox")) return;
  for (const char* name : {"102", "1"}) {
    if (auto* button = top->findChild<QAbstractButton*>(name)) return button->click();
  }
}

void Drop(ui::MainWindow* window, const QString& path) {
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(path)});
  QDragEnterEvent enter(QPoint(100, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(window, &enter);
  QDropEvent event(QPointF(100, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(window, &event);
  QApplication::processEvents();  // the window handles a drop after the drag has ended
}

bool PlaceFiles(APP_STATE_INFO* app, const QStringList& files) {
  std::int32_t track = 0;
  for (const QString& file : files) {
    if (AddWavFile(ui::FromQString(file).c_str(), app->wavList, *app->mxf) != kWavOk) return false;
    if (AssignWavFile(app, app->wavList->prev, track) != AssignResult::kAssigned) return false;
    for (const auto end = track + app->wavList->prev->channels; track < end; ++track)
      app->tracks->rewrapSwitch[static_cast<std::size_t>(track)] = kSwitchOn;
  }
  app->tracks->inFrame = FirstFramePoint(*app->mxf->timecode);
  app->tracks->outFrame = LastFramePoint(*app->mxf->timecode);
  app->rewrapPointSet = {1, 1};
  return true;
}

int Refuse(const char* reason) {
  std::fprintf(stderr, "%s\n", reason);
  return 1;
}

int MeasurePauses(const QStringList& arguments) {
  ui::MainWindow window;
  window.show();
  QTimer answers;
  QObject::connect(&answers, &QTimer::timeout, &AnswerBoxes);
  answers.start(20);
  QApplication::processEvents();
  Pulse pulse;
  QElapsedTimer clock;
  clock.start();
  Drop(&window, arguments[1]);
  if (window.State().mxfLoaded != 1) return Refuse("the clip is not loaded");
  if (!PlaceFiles(&window.State(), arguments.mid(2))) return Refuse("a file is not taken");
  std::printf("load     %6.0f ms, longest pause %5.1f ms\n", static_cast<double>(clock.elapsed()),
              pulse.TakeLongest());
  for (const Method method : {Method::kMemoryMapping, Method::kGenericFileIo}) {
    window.State().useFileIo = method;
    pulse.TakeLongest();
    clock.restart();
    window.Run(kRewriteAudio);
    std::printf("%s  %6.0f ms, longest pause %5.1f ms\n",
                method == Method::kMemoryMapping ? "mapped  " : "file I/O",
                static_cast<double>(clock.elapsed()), pulse.TakeLongest());
  }
  return 0;
}

int MeasureStarts() {
  std::vector<qint64> times;
  for (int i = 0; i < kStarts; ++i) {
    QElapsedTimer clock;
    clock.start();
    if (QProcess::execute(QApplication::applicationFilePath(), {kOnlyStart}) != 0) return 1;
    times.push_back(clock.elapsed());
  }
  std::sort(times.begin(), times.end());
  std::printf("start %lld ms, median of %d (%lld to %lld)\n",
              static_cast<long long>(times[kStarts / 2]), kStarts,
              static_cast<long long>(times.front()), static_cast<long long>(times.back()));
  return 0;
}

// Shows the window as the program does, until it has been painted.
int OnlyStart() {
  ui::MainWindow window;
  window.show();
  QTimer::singleShot(0, [] { QApplication::quit(); });
  return QApplication::exec();
}

}  // namespace
}  // namespace quorvan::bench

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  quorvan::ui::DressApplication();
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() == 1) return quorvan::bench::MeasureStarts();
  if (arguments[1] == quorvan::bench::kOnlyStart) return quorvan::bench::OnlyStart();
  return quorvan::bench::MeasurePauses(arguments);
}
