// The state of the running program: what is loaded, what the operator chose, and the way to every
// record of the loaded file.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "mxf/records.h"
#include "state/audiotrack_io_info.h"
#include "wav/wav_library.h"

namespace quorvan {

enum JobKind : std::uint32_t {
  kRewriteJob = 0,
  kExportJob = 1,
  kAnalysisJob = 2,
  kLoudnessJob = 3,
};

inline constexpr std::size_t kMxfPathChars = 2024;  // with the zero

// Flags are 0 or 1.
struct APP_STATE_INFO {
  WAV_FILE_INFO* wavList;  // head of the library; its entryCount is the library's size
  WavIndex wavIndex;       // the library in display order; built anew after every AddWavFile
  MXF_BASE_INFO* mxf;
  AUDIOTRACK_IO_INFO* tracks;
  JobKind jobKind;
  char16_t mxfPath[kMxfPathChars];  // empty when no file is loaded
  std::uint8_t libraryView;         // 0 track view, 1 library view
  std::uint8_t mxfLoaded;           // a file is loaded and accepted
  std::uint8_t useFileIo;           // the engines use plain file I/O instead of mapped views
  std::uint8_t noAutoTrackSwitch;  // the switches of one multichannel file do not follow each other
  std::uint8_t analysisOk;         // the last analysis accepted its file
  std::array<std::uint32_t, 2> rewrapPointSet;  // [0] IN is set, [1] OUT is set
  std::int32_t focusTrack;                      // target of assignments
  std::array<std::uint8_t, kMaxTracks> trackSelected;
  std::array<std::uint8_t, kMaxTracks> trackChannelMark;  // 0, or channel of its file from 1
  std::uint32_t selectedWavCount;                         // selected rows of the library view
  std::uint32_t currentWavItem;                           // row of the library view with the focus
};

// Puts a zeroed `app`, whose pointers are wired, into the state of a program that has just started:
// first track selected, no track there to be switched, standard write buffer.
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
