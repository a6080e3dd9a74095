// The state of the running program: what is loaded, what the operator chose, and pointers to every
// record of the loaded file and of the window.

#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <thread>

#include "mxf/records.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "state/audiotrack_io_info.h"
#include "wav/wav_library.h"

namespace quorvan {

enum JobMessage : std::uint32_t {
  JOB_MSG_DONE = 0x8006,    // the job has ended well
  JOB_MSG_FAILED = 0x8007,  // the job failed or was cancelled
  // The analysis sequence has ended well; the continuity check follows, unless it is switched off.
  JOB_MSG_PHASE = 0x800C,
};

// A message of a running job to its front end. Texts are zero terminated and live only during the
// call.
struct JobReport {
  JobMessage message;
  std::int32_t result;  // of the engine or the analysis
  // A fixed text when the job is done; the job's title when the job failed, was cancelled, or is
  // done with a notice. Empty or null for an analysis.
  const char16_t* caption;
  const char16_t* text;  // for the operator; empty or null where there is nothing to say
};

// The functions that a front end sets before it starts a job. They must not throw. The job's
// threads call them and wait until they return; a front end that shows messages on its own thread
// hands them over to that thread itself.
struct UI_HANDLES {
  // Takes the messages of a job.
  std::function<void(const JobReport&)> progressDialog;
  // Takes the text for the stage of a running analysis. The text lives as long as the program.
  std::function<void(std::u16string_view)> stageTextControl;
};

enum JobKind : std::uint32_t {
  kRewriteJob = 0,
  kExportJob = 1,
  kAnalysisJob = 2,
  kLoudnessJob = 3,
};

inline constexpr std::size_t kMxfPathChars = 2024;       // with the terminating zero
inline constexpr std::size_t kDefaultPrefixChars = 256;  // with the terminating zero

// What the window shows in the row of a track without a source file, by the track's TrackSwitch.
inline constexpr std::array<std::u16string_view, 3> kTrackStateText = {
    u"書換えは実行されません",
    u"このトラックには無音が書込まれます。",
    u"トラックがありません",
};

// Which of IN and OUT are set: [0] IN, [1] OUT, each 0 or 1.
using PointSet = std::array<std::uint32_t, 2>;

// True when `mxfPath` has room for `path` and its terminating zero.
inline bool FitsMxfPath(std::u16string_view path) {
  return path.size() < kMxfPathChars;
}

struct WINDOW_STATE_INFO;

// The process has one instance. Tracks count from 0; flags are 0 or 1. The front end's thread
// writes the fields, with one exception: while a job runs, the worker writes `jobStartTime`,
// `mxfFile` and the records behind `mxf` and `tracks`. The front end then reads of these only the
// atomic words and the choices that were made before the job.
struct APP_STATE_INFO {
  UI_HANDLES ui;
  WAV_FILE_INFO* wavList;  // head of the library; its entryCount is the number of files
  // The library's entries in display order. After AddWavFile, the caller must build a new index.
  WavIndex wavIndex;
  MXF_BASE_INFO* mxf;
  AUDIOTRACK_IO_INFO* tracks;
  WINDOW_STATE_INFO* window;  // what only the window needs
  std::u16string statusText;  // last text of the status bar's first field

  std::thread workerThread;
  std::thread stageThread;
  std::atomic<std::uint32_t> stageThreadStop;  // 1 ends StageTextThread
  JobKind jobKind;                             // of the job that was prepared last

  platform::File mxfFile;                       // the clip while it is open for analysis
  char16_t mxfPath[kMxfPathChars];              // path of the clip; empty without a clip
  char16_t defaultExportFolder[kMxfPathChars];  // the user's desktop
  char16_t defaultExportPrefix[kDefaultPrefixChars];

  std::uint8_t libraryView;        // 0 track view, 1 library view; 1 only while a file is loaded
  std::uint8_t mxfLoaded;          // 1: a file is loaded and accepted
  Method useFileIo;                // how rewrites, exports and the continuity check access the clip
  std::uint8_t noAutoTrackSwitch;  // 1: a switch turns alone, without the other tracks of its file
  std::uint8_t noTimecodeCheck;    // 1: an analysis leaves out the continuity check
  std::uint8_t analysisOk;         // 1: the last analysis accepted its file
  // Both counts of the timecode that was entered last, in the order of a FramePoint.
  std::array<std::uint32_t, 2> enteredTimecode;
  PointSet rewrapPointSet;
  PointSet exportPointSet;
  PointSet loudnessPointSet;

  std::uint32_t selectedTracks;  // number of selected tracks
  std::int32_t focusTrack;       // track with the focus; files are assigned to it
  std::array<std::uint8_t, kMaxTracks> trackSelected;  // the measurement takes the selected tracks
  std::uint32_t selectedWavCount;                      // selected rows of the library view
  std::uint32_t currentWavItem;                        // row of the library view with the focus

  platform::CalendarTime jobStartTime;  // local time; the worker writes it
  platform::CalendarTime jobEndTime;    // local time; WriteRewrapLog writes it
};

// Puts `app`, which must be zeroed and have its pointers set, into the state of a program that has
// just started. Throws std::bad_alloc when memory is out.
void InitializeAppState(APP_STATE_INFO* app);

// The state record with all records that it points to, connected and initialized. Its destructor
// frees the library. The constructor throws std::bad_alloc when memory is out.
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
