// The state of the running program: what is loaded, what the operator chose, what the window shows,
// and the way to every record of the loaded file.

#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
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

enum ScrollArrowState : std::uint32_t { kArrowShown = 0, kArrowPressed = 1, kArrowHidden = 2 };

enum RowAlign : std::uint8_t {
  kWholeRows = 0,    // no row is cut
  kFlushBottom = 1,  // the last row ends with the area, the first one is cut
  kFlushTop = 2,     // the first row starts with the area, the last one is cut
};

// In pixels of the window's client area; right and bottom lie outside.
struct RECTANGLE {
  std::int32_t left;
  std::int32_t top;
  std::int32_t right;
  std::int32_t bottom;
};

inline constexpr std::uint32_t kBandHeight = 160;  // of the top and the bottom band, in pixels

// One instance in the process. Tracks count from 0; flags are 0 or 1. The thread of the face writes
// everything but the words that running jobs exchange in `mxf` and `tracks`.
struct APP_STATE_INFO {
  UI_HANDLES ui;
  WAV_FILE_INFO* wavList;  // head of the library; its entryCount is the library's size
  WavIndex wavIndex;       // the library in display order; built anew after every AddWavFile
  MXF_BASE_INFO* mxf;
  AUDIOTRACK_IO_INFO* tracks;
  std::u16string statusText;  // last text of the status bar's first field

  std::thread workerThread;
  std::thread stageThread;
  std::atomic<std::uint32_t> stageThreadStop;  // 1 ends the stage-text thread
  JobKind jobKind;                             // set before the job's dialog opens

  platform::File mxfFile;                       // the clip while it is open for analysis
  char16_t mxfPath[kMxfPathChars];              // empty when no file is loaded
  char16_t defaultExportFolder[kMxfPathChars];  // the user's desktop
  char16_t defaultExportPrefix[kDefaultPrefixChars];

  std::uint8_t libraryView;        // 0 track view, 1 library view; 1 only while a file is loaded
  std::uint8_t mxfLoaded;          // a file is loaded and accepted
  std::uint8_t useFileIo;          // the engines use plain file I/O instead of mapped views
  std::uint8_t noAutoTrackSwitch;  // the switches of one multichannel file do not follow each other
  std::uint8_t noTimecodeCheck;    // an analysis leaves out the continuity check
  std::uint8_t analysisOk;         // the last analysis accepted its file
  std::array<std::uint32_t, 2> enteredTimecode;  // both slots of the last accepted entry
  PointSet rewrapPointSet;
  PointSet exportPointSet;
  PointSet loudnessPointSet;

  std::uint32_t repaintMask;  // parts that the next paint redraws
  ScrollArrowState upArrowState;
  ScrollArrowState downArrowState;
  std::uint32_t selectedTracks;  // number of selected tracks
  std::int32_t focusTrack;       // target of assignments
  std::uint32_t rowRemainder;    // pixels of the partly visible row, 0 when all are whole
  std::int32_t firstVisibleTrack;
  std::int32_t lastVisibleTrack;
  std::int32_t visibleRows;     // rows laid out, at most kMaxTracks
  std::uint32_t topBandHeight;  // pixels
  std::uint32_t trackBandHeight;
  std::uint32_t bottomBandHeight;
  RowAlign rowAlign;
  std::uint8_t scrollTop;  // track of the first row
  std::array<std::uint8_t, kMaxTracks> trackSelected;
  std::array<std::uint8_t, kMaxTracks> trackChannelMark;  // 0, or channel of its file from 1
  std::array<RECTANGLE, kMaxTracks> lampRect;
  RECTANGLE viewRect;  // client area without the status bar
  std::array<RECTANGLE, kMaxTracks> channelMarkRect;
  std::array<RECTANGLE, kMaxTracks> nameRect;
  RECTANGLE trackAreaRect;
  RECTANGLE upArrowRect;
  RECTANGLE downArrowRect;
  std::uint32_t viewScrolled;      // 1 after the rows moved without the focus
  RECTANGLE listRect;              // of the library's list; base of its column widths
  std::uint32_t selectedWavCount;  // selected rows of the library view
  std::uint32_t currentWavItem;    // row of the library view with the focus

  platform::CalendarTime jobStartTime;  // local time
  platform::CalendarTime jobEndTime;
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
};

}  // namespace quorvan
