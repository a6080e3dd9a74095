#include "ui/dialogs/wav_reading.h"

#include <QProgressDialog>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <memory>
#include <new>

#include "platform/path.h"
#include "platform/thread.h"
#include "ui/dialogs/dialog_place.h"
#include "ui/main/qt_text.h"
#include "wav/wav_library.h"

namespace quorvan::ui {
namespace {

constexpr auto kPatience = std::chrono::milliseconds(300);
constexpr int kPollMilliseconds = 30;

// A running search for the header of a file.
struct Search {
  std::atomic<std::uint32_t> stop = 0;  // 1 gives the search up
  platform::WatchedThread thread;
};

void ShowDialogUntilEnded(Search* search, const std::u16string& path, QWidget* parent) {
  QProgressDialog dialog(
      ToQString(platform::LastComponent(path)) + "\n\nWAVファイルの情報を取得中...", "キャンセル",
      0, 0, parent);
  dialog.setWindowTitle("BWFファイルを追加");
  dialog.setObjectName("wavReading");
  dialog.setWindowModality(Qt::WindowModal);
  Appearance appearance;
  QTimer poll;
  QObject::connect(&poll, &QTimer::timeout, &dialog, [&] {
    const bool ended = search->thread.EndsWithin(std::chrono::milliseconds(0));
    if (appearance.IsOver(&dialog) && ended) dialog.accept();
  });
  poll.start(kPollMilliseconds);
  dialog.exec();
}

// Shows the dialog until the search ends or the operator gives it up, and stops the search. A
// search whose dialog finds no memory is stopped, since the operator could not give it up.
void ShowUntilEnded(Search* search, const std::u16string& path, QWidget* parent) {
  try {
    ShowDialogUntilEnded(search, path, parent);
  } catch (const std::bad_alloc&) {
  }
  search->stop = 1;
}

}  // namespace

WavResult AddWavFileWatched(const std::u16string& path, APP_STATE_INFO* app, QWidget* parent) {
  if (FindWavFile(*app->wavList, path) != nullptr) return kWavAlreadyAdded;
  // The thread fills a list of its own; meanwhile the window shows the library.
  const auto found = std::make_unique<WAV_FILE_INFO>();
  WavResult result = kWavNoMemory;
  {
    Search search;
    const bool started = search.thread.Start(
        [&] { result = AddWavFile(path.c_str(), found.get(), *app->mxf, &search.stop); });
    if (!started) return kWavNoMemory;
    if (!search.thread.EndsWithin(kPatience)) ShowUntilEnded(&search, path, parent);
  }
  MoveLastWavEntry(found.get(), app->wavList);
  return result;
}

}  // namespace quorvan::ui
