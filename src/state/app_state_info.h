// The state of the running program: what is loaded, what the operator chose, and the way to
// every record of the loaded file and of the window.

#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <thread>

#include "mxf/records.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "state/audiotrack_io_info.h"
#include "state/ui_handles.h"
#include "wav/wav_library.h"

namespace quorvan {

enum JobKind : std::uint32_t {
  kRewriteJob = 0,
  kExportJob = 1,
  kAnalysisJob = 2,
  kLoudnessJob = 3,
};

inline constexpr std::size_t kMxfPathChars = 2024;       // with the zero
inline constexpr std::size_t kDefaultPrefixChars = 256;  // with the zero

// Texts of a track row without a file, by its TrackSwitch.
inline constexpr std::array<std::u16string_view, 3> kTrackStateText = {
    u"書換えは実行されません",
    u"このトラックには無音が書込まれます。",
    u"トラックがありません",
};

// Which of IN and OUT are set: [0] IN, [1] OUT, each 0 or 1.
using PointSet = std::array<std::uint32_t, 2>;

// True for a path that `mxfPath` can hold.
inline bool FitsMxfPath(std::u16string_view path) {
  return path.size() < kMxfPathChars;
}

struct WINDOW_STATE_INFO;

// One instance in the process. Tracks count from 0; flags are 0 or 1. The thread of the front end
// writes all fields but `jobStartTime`, which the worker writes. While a job runs, the records
// behind `mxf` and `tracks` belong to the worker; only their atomic words may be used by both
// threads.
struct APP_STATE_INFO {
  UI_HANDLES ui;
  WAV_FILE_INFO* wavList;  // head of the library; its entryCount is the library's size
  WavIndex wavIndex;       // the library in display order; built anew after every AddWavFile
  MXF_BASE_INFO* mxf;
  AUDIOTRACK_IO_INFO* tracks;
  WINDOW_STATE_INFO* window;  // what the window alone shows
  std::u16string statusText;  // last text of the status bar's first field

  std::thread workerThread;
  std::thread stageThread;
  std::atomic<std::uint32_t> stageThreadStop;  // 1 ends the stage-text thread
  JobKind jobKind;                             // of the job that was started last

  platform::File mxfFile;                       // the clip while it is open for analysis
  char16_t mxfPath[kMxfPathChars];              // empty when no file is loaded
  char16_t defaultExportFolder[kMxfPathChars];  // the user's desktop
  char16_t defaultExportPrefix[kDefaultPrefixChars];

  std::uint8_t libraryView;        // 0 track view, 1 library view; 1 only while a file is loaded
  std::uint8_t mxfLoaded;          // a file is loaded and accepted
  Method useFileIo;                // of rewrites, exports and the continuity check
  std::uint8_t noAutoTrackSwitch;  // the switches of one multichannel file do not follow each other
  std::uint8_t noTimecodeCheck;    // an analysis leaves out the continuity check
  std::uint8_t analysisOk;         // the last analysis accepted its file
  std::array<std::uint32_t, 2> enteredTimecode;  // both slots of the last accepted entry
  PointSet rewrapPointSet;
  PointSet exportPointSet;
  PointSet loudnessPointSet;

  std::uint32_t selectedTracks;                        // number of selected tracks
  std::int32_t focusTrack;                             // target of assignments
  std::array<std::uint8_t, kMaxTracks> trackSelected;  // an argument of the measurement, too
  std::uint32_t selectedWavCount;                      // selected rows of the library view
  std::uint32_t currentWavItem;                        // row of the library view with the focus

  platform::CalendarTime jobStartTime;  // local time; the worker writes it
  platform::CalendarTime jobEndTime;    // local time, behind the log of a rewrite
};

// Puts a zeroed `app`, whose pointers are wired, into the state of a program that has just started.
void InitializeAppState(APP_STATE_INFO* app);

// The state record with everything that it points to, wired and initialized. Frees the library.
struct AppState {
  AppState();
  ~AppState();
  AppState(const AppState&) = delete;
  AppState& operator=(const AppState&) = delete;

  MxfRecords mxf;
  AUDIOTRACK_IO_INFO tracks{};
  WAV_FILE_INFO wavHead{};
  APP_STATE_INFO info{};

 private:
  const std::unique_ptr<WINDOW_STATE_INFO> window_;
};

}  // namespace quorvan
