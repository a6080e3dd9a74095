// Adds a WAV file to the library while the window goes on working.

#pragma once

#include <QWidget>

#include <string>

#include "state/app_state_info.h"
#include "wav/wav_header.h"

namespace quorvan::ui {

// Adds the file at `path` to the library of `app` as AddWavFile does, on a thread of its own, and
// returns its result. When the search for the header takes longer than 300 milliseconds, a dialog
// over `parent` shows the name of the file and a button that gives the search up. kWavNoMemory also
// when the system has no thread.
WavResult AddWavFileWatched(const std::u16string& path, APP_STATE_INFO* app, QWidget* parent);

}  // namespace quorvan::ui
